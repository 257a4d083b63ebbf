#include "handheld/tool/remove_messages.h"

#include <fmt/core.h>

#include "common/text/utf.h"
#include "handheld/tool/message_walk.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

template <typename Box>
Outcome Remove(Box& box, const std::vector<std::int64_t>& ids, std::string_view name,
               const Report& report) {
  std::size_t removed = 0;
  for (const std::int64_t id : ids) {
    bool found = false;
    const ce::HRESULT status = box.Delete(id, found);
    if (ce::Failed(status) || !found) {
      fmt::print(report.err, "corvane-device: {}: {}\n", id,
                 ce::Failed(status) ? StatusText(status) : fmt::format("no such {}", name));
      continue;
    }
    fmt::print(report.out, "removed {:>10}\n", id);
    ++removed;
  }
  if (removed == ids.size()) return Outcome::kDone;
  return removed == 0 ? Outcome::kFailed : Outcome::kPartlyDone;
}

void Say(std::size_t count, std::string_view name, const Report& report) {
  fmt::print(report.out, "removed {}\n", Counted(count, name));
}

std::size_t Count(ce::host::MessageBox& box, std::int64_t folder) {
  std::int64_t count = 0;
  Check(box.Count(folder, count), "the messages");
  return static_cast<std::size_t>(count);
}

}  // namespace

Outcome RemoveMessages(Session& session, const std::vector<std::int64_t>& ids,
                       const Report& report) {
  return Remove(session.Messages(), ids, kRecordName<formats::TextMessage>, report);
}

Outcome RemoveCalls(Session& session, const std::vector<std::int64_t>& ids, const Report& report) {
  return Remove(session.Calls(), ids, kRecordName<formats::Call>, report);
}

Outcome RemoveMessagesOfFolder(Session& session, const std::string& path, const Report& report) {
  for (const ce::host::MessageFolderInfo& folder : SmsFolders(session)) {
    if (ce::host::ToUtf8Lossy(folder.path) != path) continue;
    const std::size_t count = Count(session.Messages(), folder.id);
    Check(session.Messages().Clear(folder.id), "removing");
    Say(count, kRecordName<formats::TextMessage>, report);
    return Outcome::kDone;
  }
  fmt::print(report.err, "corvane-device: {}: no such folder\n", path);
  return Outcome::kFailed;
}

Outcome RemoveAllMessages(Session& session, const Report& report) {
  ce::host::MessageBox& box = session.Messages();
  std::size_t count = 0;
  box.Begin();
  for (const ce::host::MessageFolderInfo& folder : SmsFolders(session)) {
    count += Count(box, folder.id);
    Check(box.Clear(folder.id), "removing");
  }
  Check(box.Commit(), "removing");
  Say(count, kRecordName<formats::TextMessage>, report);
  return Outcome::kDone;
}

Outcome RemoveAllCalls(Session& session, const Report& report) {
  const std::size_t count = CountRecords<formats::Call>(session);
  Check(session.Calls().Clear(), "removing");
  Say(count, kRecordName<formats::Call>, report);
  return Outcome::kDone;
}

}  // namespace tool
