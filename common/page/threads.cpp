#include "common/page/threads.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace page {
namespace {

using formats::MessageParty;
using formats::TextMessage;

// In front of a person's place; no key of an address begins with it.
constexpr char kPersonMark = '\n';

using Parties = std::map<std::string, MessageParty>;  // by their keys

class Threads {
 public:
  Threads(const calendar::Zone& zone, const Directory& directory)
      : zone_(zone), directory_(directory) {}

  void Add(const TextMessage& message) {
    Parties parties;
    const auto add = [&](const MessageParty& party) { parties.emplace(KeyOf(party), party); };
    if (message.flags.fromMe) {
      std::ranges::for_each(message.to, add);
    } else {
      add(message.from);
    }
    std::string key;
    for (const auto& [each, party] : parties) key += each + '\n';
    const auto [place, isNew] = places_.emplace(key, threads_.size());
    if (isNew) {
      threads_.emplace_back();
      parties_.emplace_back();
    }
    for (const auto& [each, party] : parties) {
      MessageParty& known = parties_[place->second].emplace(each, party).first->second;
      if (known.name.empty()) known.name = party.name;
    }
    threads_[place->second].messages.push_back({LocalSeconds(message.time, zone_), &message});
  }

  std::vector<Thread> Take() {
    for (std::size_t i = 0; i < threads_.size(); ++i) {
      std::ranges::stable_sort(threads_[i].messages, {}, &ThreadMessage::time);
      for (auto& [key, party] : parties_[i]) {
        if (key.starts_with(kPersonMark))
          threads_[i].people.push_back(std::stoi(key.substr(1)));
        else
          threads_[i].parties.push_back(std::move(party));
      }
    }
    std::ranges::stable_sort(threads_, std::ranges::greater(),
                             [](const Thread& thread) { return thread.messages.back().time; });
    return std::move(threads_);
  }

 private:
  // All of a person's numbers are the person.
  [[nodiscard]] std::string KeyOf(const MessageParty& party) const {
    std::string key = directory_.KeyOf(party.address);
    if (const int person = directory_.Find(key); person >= 0)
      return kPersonMark + std::to_string(person);
    if (!key.empty()) return key;
    return party.address.empty() ? party.name : party.address;
  }

  const calendar::Zone& zone_;
  const Directory& directory_;
  std::unordered_map<std::string, std::size_t> places_;
  std::vector<Thread> threads_;
  std::vector<Parties> parties_;  // of each thread
};

}  // namespace

Seconds LocalSeconds(const std::optional<formats::MessageTime>& time, const calendar::Zone& zone) {
  if (!time) return std::nullopt;
  const auto utc = std::chrono::floor<std::chrono::seconds>(*time);
  return zone.ToLocal(utc).time_since_epoch().count();
}

std::vector<Thread> ThreadsOf(std::span<const TextMessage> messages, const calendar::Zone& zone,
                              const Directory& directory) {
  Threads threads(zone, directory);
  for (const TextMessage& message : messages) threads.Add(message);
  return threads.Take();
}

}  // namespace page
