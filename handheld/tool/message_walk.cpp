#include "handheld/tool/message_walk.h"

#include "handheld/tool/message_records.h"

namespace tool {
namespace {

using ce::host::MessageFolderInfo;

constexpr std::size_t kAtOnce = 500;
constexpr char kMessages[] = "the messages";
constexpr char kCalls[] = "the call log";

}  // namespace

std::optional<std::int64_t> SmsStore(Session& session) {
  std::optional<std::int64_t> store;
  Check(session.Messages().FindStore(ce::host::kSmsStoreName, store), kMessages);
  return store;
}

std::vector<MessageFolderInfo> SmsFolders(Session& session) {
  std::vector<MessageFolderInfo> folders;
  if (const auto store = SmsStore(session))
    Check(session.Messages().ListFolders(*store, folders), kMessages);
  return folders;
}

template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::TextMessage>& visit) {
  std::vector<ce::host::NumberedMessage> messages;
  for (const MessageFolderInfo& folder : SmsFolders(session)) {
    std::int64_t last = 0;
    do {
      Check(session.Messages().Read(folder.id, last, kAtOnce, messages), kMessages);
      for (const auto& [id, message] : messages) {
        visit(id, ToRecord(message, folder.path));
        last = id;
      }
    } while (!messages.empty());
  }
}

template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::Call>& visit) {
  std::vector<ce::host::NumberedCall> calls;
  ce::host::CallPosition last;
  do {
    Check(session.Calls().Read(last, kAtOnce, calls), kCalls);
    for (const ce::host::NumberedCall& call : calls) {
      visit(call.id, ToRecord(call.call));
      last = call.position();
    }
  } while (!calls.empty());
}

template <>
std::size_t CountRecords<formats::TextMessage>(Session& session) {
  std::size_t all = 0;
  for (const MessageFolderInfo& folder : SmsFolders(session)) {
    std::int64_t count = 0;
    Check(session.Messages().Count(folder.id, count), kMessages);
    all += static_cast<std::size_t>(count);
  }
  return all;
}

template <>
std::size_t CountRecords<formats::Call>(Session& session) {
  std::int64_t count = 0;
  Check(session.Calls().Count(count), kCalls);
  return static_cast<std::size_t>(count);
}

}  // namespace tool
