#include "common/page/telephone.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "common/formats/items/message_places.h"

namespace page {
namespace {

using formats::Call;
using formats::MessageParty;
using formats::MessageTime;
using formats::TextMessage;

// In front of a person's place; no key of an address begins with it.
constexpr char kPersonMark = '\n';

// Nothing sorts first.
using Seconds = std::optional<std::int64_t>;

Seconds LocalSeconds(const std::optional<MessageTime>& time, const calendar::Zone& zone) {
  if (!time) return std::nullopt;
  const auto utc = std::chrono::floor<std::chrono::seconds>(*time);
  return zone.ToLocal(utc).time_since_epoch().count();
}

Json JsonOf(const Seconds& seconds) {
  return seconds ? Json(*seconds) : Json();
}

struct ThreadMessage {
  Seconds time;
  const TextMessage* message;
};

struct Thread {
  std::map<std::string, MessageParty> parties;  // by their keys
  std::vector<ThreadMessage> messages;
};

class Threads {
 public:
  Threads(const Contents& contents, const Directory& directory)
      : contents_(contents), directory_(directory) {
    for (const TextMessage& message : contents.messages) Add(message);
  }

  Json Take() {
    for (Thread& thread : threads_)
      std::ranges::stable_sort(thread.messages, {}, &ThreadMessage::time);
    std::ranges::stable_sort(threads_, std::ranges::greater(),
                             [](const Thread& thread) { return thread.messages.back().time; });
    Json list = Json::array();
    for (const Thread& thread : threads_) list.push_back(JsonOf(thread));
    return list;
  }

 private:
  void Add(const TextMessage& message) {
    std::map<std::string, MessageParty> parties;
    const auto add = [&](const MessageParty& party) { parties.emplace(KeyOf(party), party); };
    if (message.flags.fromMe) {
      std::ranges::for_each(message.to, add);
    } else {
      add(message.from);
    }
    std::string key;
    for (const auto& [each, party] : parties) key += each + '\n';
    const auto [place, isNew] = places_.emplace(key, threads_.size());
    if (isNew) threads_.emplace_back();
    Thread& thread = threads_[place->second];
    for (const auto& [each, party] : parties) {
      MessageParty& known = thread.parties.emplace(each, party).first->second;
      if (known.name.empty()) known.name = party.name;
    }
    thread.messages.push_back({LocalSeconds(message.time, contents_.zone), &message});
  }

  // All of a person's numbers are the person.
  [[nodiscard]] std::string KeyOf(const MessageParty& party) const {
    std::string key = directory_.KeyOf(party.address);
    if (const int person = directory_.Find(key); person >= 0)
      return kPersonMark + std::to_string(person);
    if (!key.empty()) return key;
    return party.address.empty() ? party.name : party.address;
  }

  Json JsonOf(const Thread& thread) const {
    Json messages = Json::array();
    for (const ThreadMessage& each : thread.messages) {
      const TextMessage& message = *each.message;
      const int bits = (message.flags.fromMe || message.flags.read ? 0 : 1) |
                       (message.flags.hasAttachment ? 2 : 0);
      messages.push_back({page::JsonOf(each.time),
                          static_cast<int>(TypeOf(message.folder, message.flags)),
                          Clean(message.text), bits, Clean(message.folder)});
    }
    Json people = Json::array();
    std::vector<std::string> names;
    for (const auto& [key, party] : thread.parties) {
      const std::string& name = party.name.empty() ? party.address : party.name;
      if (key.starts_with(kPersonMark)) {
        people.push_back(std::stoi(key.substr(1)));
      } else if (!name.empty()) {
        names.push_back(name);
      }
    }
    Json json = Json::object();
    AddList(json, "people", std::move(people));
    AddTexts(json, "names", names);
    json["messages"] = std::move(messages);
    return json;
  }

  const Contents& contents_;
  const Directory& directory_;
  std::unordered_map<std::string, std::size_t> places_;
  std::vector<Thread> threads_;
};

}  // namespace

Json ThreadsOf(const Contents& contents, const Directory& directory) {
  return Threads(contents, directory).Take();
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
