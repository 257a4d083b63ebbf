#include "desktop/merge/joins.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include "common/calendar/wall_time.h"
#include "common/formats/vcard/contact_slots.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::Task;

// Each begins with what kind of key it is, so that no two kinds meet.
using Keys = std::vector<std::string>;

// Words in one case, with one blank between two.
std::string Folded(std::string_view text) {
  std::string words;
  bool blank = false;
  for (const char c : text::ToUtf8Lossy(text::Fold(text::FromUtf8Lossy(text)))) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      blank = !words.empty();
      continue;
    }
    if (blank) words += ' ';
    blank = false;
    words += c;
  }
  return words;
}

std::string Joined(const Contact& contact, std::initializer_list<ContactField> fields) {
  std::string all;
  for (const ContactField field : fields) all += contact[field] + " ";
  return Folded(all);
}

// A person's name, in any parts, or else the company's or what the contact is filed as.
std::string NameOf(const Contact& contact) {
  std::string name = Joined(contact, {ContactField::kFirstName, ContactField::kMiddleName,
                                      ContactField::kLastName, ContactField::kSuffix});
  if (!name.empty()) return "n" + name;
  for (const ContactField field : {ContactField::kCompanyName, ContactField::kFileAs}) {
    if (name = Folded(contact[field]); !name.empty()) return "c" + name;
  }
  return {};
}

std::string ShortNameOf(const Contact& contact) {
  const std::string name = Joined(contact, {ContactField::kFirstName, ContactField::kLastName});
  return name.empty() ? NameOf(contact) : "n" + name;
}

// Of its numbers and e-mail addresses.
Keys ReachesOf(const Contact& contact, const phone::PhoneNumbers& numbers) {
  Keys keys;
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) {
    for (const ContactField field : kind.slots) {
      if (std::string key = numbers.KeyOf(contact[field]); !key.empty()) keys.push_back("t" + key);
    }
  }
  for (const ContactField field : formats::kEmailSlots) {
    if (std::string key = Folded(contact[field]); !key.empty()) keys.push_back("e" + key);
  }
  return keys;
}

Keys SureKeys(const Contact& contact, const phone::PhoneNumbers& numbers) {
  const std::string name = NameOf(contact);
  if (name.empty()) return {};
  Keys keys = ReachesOf(contact, numbers);
  for (std::string& key : keys) key += "\n" + name;
  return keys;
}

Keys UnsureKeys(const Contact& contact, const phone::PhoneNumbers& numbers) {
  const std::string name = ShortNameOf(contact);
  return name.empty() ? ReachesOf(contact, numbers) : Keys{name};
}

Keys SureKeys(const Appointment& appointment, const phone::PhoneNumbers& /*numbers*/) {
  const std::string subject = Folded(appointment.subject);
  if (subject.empty() || !appointment.start) return {};
  return {(appointment.allDay ? "d" : "t") + formats::IsoDateTime(*appointment.start) + subject};
}

Keys UnsureKeys(const Appointment& appointment, const phone::PhoneNumbers& /*numbers*/) {
  const std::string subject = Folded(appointment.subject);
  if (subject.empty() || !appointment.start) return {};
  return {formats::IsoDate(formats::DayOf(*appointment.start)) + subject};
}

Keys SureKeys(const Task& task, const phone::PhoneNumbers& /*numbers*/) {
  const std::string subject = Folded(task.subject);
  if (subject.empty()) return {};
  if (task.due) return {"d" + formats::IsoDate(*task.due) + subject};
  return {(task.complete ? "c" : "o") + (task.start ? formats::IsoDate(*task.start) : "-") +
          subject};
}

Keys UnsureKeys(const Task& task, const phone::PhoneNumbers& /*numbers*/) {
  std::string subject = Folded(task.subject);
  return subject.empty() ? Keys() : Keys{std::move(subject)};
}

class JoinFinder {
 public:
  JoinFinder(std::span<const Item> desk, std::span<const Item> handheld)
      : desk_(desk), handheld_(handheld), deskTaken_(desk.size()), taken_(handheld.size()) {}

  // Joins what has one of its keys in common and is in no join yet, in the order of the desk.
  template <typename KeysOf>
  void JoinBy(const KeysOf& keysOf, std::vector<Join>& joins) {
    std::unordered_map<std::string, Queue> byKey;
    for (std::size_t i = 0; i < handheld_.size(); ++i) {
      if (taken_[i]) continue;
      for (std::string& key : keysOf(handheld_[i])) byKey[std::move(key)].items.push_back(i);
    }
    for (std::size_t i = 0; i < desk_.size(); ++i) {
      if (deskTaken_[i]) continue;
      for (const std::string& key : keysOf(desk_[i])) {
        ++looks_;
        const auto found = byKey.find(key);
        if (found == byKey.end()) continue;
        if (const std::size_t* free = NextFree(found->second)) {
          Take(i, *free, joins);
          break;
        }
      }
    }
  }

  [[nodiscard]] std::size_t looks() const { return looks_; }

 private:
  struct Queue {
    std::vector<std::size_t> items;
    std::size_t next = 0;
  };

  // One that is taken is passed once, and never looked at again.
  const std::size_t* NextFree(Queue& queue) {
    for (; queue.next < queue.items.size(); ++queue.next) {
      ++looks_;
      if (!taken_[queue.items[queue.next]]) return &queue.items[queue.next];
    }
    return nullptr;
  }

  void Take(std::size_t desk, std::size_t handheld, std::vector<Join>& joins) {
    deskTaken_[desk] = true;
    taken_[handheld] = true;
    joins.push_back({desk, handheld});
  }

  std::span<const Item> desk_;
  std::span<const Item> handheld_;
  std::vector<bool> deskTaken_;
  std::vector<bool> taken_;
  std::size_t looks_ = 0;
};

}  // namespace

Joins FindJoins(std::span<const Item> desk, std::span<const Item> handheld,
                const phone::PhoneNumbers& numbers) {
  Joins joins;
  JoinFinder finder(desk, handheld);
  finder.JoinBy([](const Item& item) { return UidOf(item).empty() ? Keys() : Keys{UidOf(item)}; },
                joins.sure);
  finder.JoinBy([](const Item& item) { return Keys{CommonHash(item)}; }, joins.sure);
  finder.JoinBy(
      [&](const Item& item) {
        return std::visit([&](const auto& each) { return SureKeys(each, numbers); }, item);
      },
      joins.sure);
  finder.JoinBy(
      [&](const Item& item) {
        return std::visit([&](const auto& each) { return UnsureKeys(each, numbers); }, item);
      },
      joins.unsure);
  joins.looks = finder.looks();
  return joins;
}

}  // namespace desktop
