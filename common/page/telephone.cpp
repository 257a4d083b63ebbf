#include "common/page/telephone.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "common/formats/items/message_places.h"
#include "common/page/threads.h"

namespace page {
namespace {

using formats::Call;
using formats::MessageParty;
using formats::TextMessage;

Json JsonOf(const Seconds& seconds) {
  return seconds ? Json(*seconds) : Json();
}

Json JsonOf(const Thread& thread) {
  Json messages = Json::array();
  for (const ThreadMessage& each : thread.messages) {
    const TextMessage& message = *each.message;
    const int bits = (message.flags.fromMe || message.flags.read ? 0 : 1) |
                     (message.flags.hasAttachment ? 2 : 0);
    messages.push_back({JsonOf(each.time), static_cast<int>(TypeOf(message.folder, message.flags)),
                        Clean(message.text), bits, Clean(message.folder)});
  }
  std::vector<std::string> names;
  for (const MessageParty& party : thread.parties) {
    const std::string& name = party.name.empty() ? party.address : party.name;
    if (!name.empty()) names.push_back(name);
  }
  Json json = Json::object();
  AddList(json, "people", thread.people);
  AddTexts(json, "names", names);
  json["messages"] = std::move(messages);
  return json;
}

}  // namespace

Json ThreadsOf(const Contents& contents, const Directory& directory) {
  Json list = Json::array();
  for (const Thread& thread : ThreadsOf(contents.messages, contents.zone, directory))
    list.push_back(JsonOf(thread));
  return list;
}

Json CallsOf(const Contents& contents, const Directory& directory) {
  struct TimedCall {
    Seconds time;
    const Call* call;
  };
  std::vector<TimedCall> calls;
  calls.reserve(contents.calls.size());
  for (const Call& call : contents.calls)
    calls.push_back({LocalSeconds(call.start, contents.zone), &call});
  std::ranges::stable_sort(calls, std::ranges::greater(), &TimedCall::time);
  Json list = Json::array();
  for (const auto& [time, call] : calls) {
    Seconds length;
    if (call->start && call->end && *call->end >= *call->start)
      length = std::chrono::floor<std::chrono::seconds>(*call->end - *call->start).count();
    list.push_back({JsonOf(time), JsonOf(length), static_cast<int>(KindOf(*call)),
                    Clean(call->number), Clean(call->name),
                    directory.Find(directory.KeyOf(call->number)), Clean(call->note)});
  }
  return list;
}

}  // namespace page
