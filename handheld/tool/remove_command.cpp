#include "handheld/tool/remove_command.h"

#include <fmt/core.h>

#include <charconv>
#include <cstdint>

#include "handheld/tool/chosen_records.h"
#include "handheld/tool/remove_records.h"
#include "handheld/tool/session.h"

namespace tool {
namespace {

bool IsOfBox(const std::string& kind) {
  return kind == "messages" || kind == "calls";
}

template <typename Number>
std::vector<Number> ParseNumbers(std::vector<std::string>::const_iterator word,
                                 std::vector<std::string>::const_iterator end) {
  std::vector<Number> numbers;
  for (; word != end; ++word) {
    Number number = 0;
    const char* const last = word->data() + word->size();
    const auto [stop, error] = std::from_chars(word->data(), last, number);
    if (error != std::errc() || stop != last)
      throw UsageError(fmt::format("\"{}\" is no identifier", *word));
    numbers.push_back(number);
  }
  return numbers;
}

// Items by their numbers and UIDs; one that is not known is named as one that is gone.
Outcome RemoveNamed(const std::filesystem::path& directory, const RemoveCommand& command,
                    const Report& report) {
  auto oids = ParseNumbers<std::uint32_t>(command.what.begin(), command.what.end());
  Session session(directory);
  bool all = true;
  for (const std::string& uid : command.uids) {
    const std::uint32_t oid = OidOfUid(session, uid);
    if (oid != 0) {
      oids.push_back(oid);
    } else {
      Tell(report.err, "corvane-device: {}: no such item\n", uid);
      all = false;
    }
  }
  if (oids.empty()) return Outcome::kFailed;
  const Outcome removed = RemoveItems(session, oids, report);
  return all || removed != Outcome::kDone ? removed : Outcome::kPartlyDone;
}

}  // namespace

Outcome RunRemove(const std::filesystem::path& directory, const RemoveCommand& command,
                  const Report& report) {
  const std::string kind = command.what.empty() ? std::string() : command.what.front();
  if (!IsOfBox(kind)) {
    if (command.all || command.folder)
      throw UsageError("--all and --folder are of messages and calls only");
    return RemoveNamed(directory, command, report);
  }
  if (!command.uids.empty()) throw UsageError("--uid: messages and calls have none");
  if (command.folder && kind == "calls") throw UsageError("--folder: calls have no folders");
  const auto ids = ParseNumbers<std::int64_t>(command.what.begin() + 1, command.what.end());
  if (command.all + command.folder.has_value() + !ids.empty() != 1)
    throw UsageError("name the " + kind + ", or --all" + (kind == "calls" ? "" : ", or --folder"));
  Session session(directory);
  if (command.folder) return RemoveMessagesOfFolder(session, *command.folder, report);
  if (kind == "messages")
    return command.all ? RemoveAllMessages(session, report) : RemoveMessages(session, ids, report);
  return command.all ? RemoveAllCalls(session, report) : RemoveCalls(session, ids, report);
}

}  // namespace tool
