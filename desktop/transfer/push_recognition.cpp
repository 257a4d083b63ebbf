#include "desktop/transfer/push_recognition.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/merge/joins.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/records/task_xml.h"
#include "desktop/transfer/push_check.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

// Times as the wire has them are compared, so any zone would do.
Item ItemOf(const XmlElement& element) {
  static const calendar::Zone utc = *calendar::Zone::Find("UTC");
  const std::string_view kind = KindOfElement(element.name);
  if (kind == kContactKind) return ContactFromXml(element);
  if (kind == kTaskKind) return TaskFromXml(element, utc);
  return AppointmentFromXml(element, utc);
}

struct Stranger {
  Oid oid;
  std::string state;
  Item item;
};

std::vector<Stranger> StrangersOf(const ConnectionOptions& connection, const Mapping& mapping,
                                  RecordKind kind) {
  std::vector<Stranger> strangers;
  const std::int32_t status = DownloadAll(connection, kind, [&](const std::string& document) {
    for (const Record& record : ParseRecords(document)) {
      if (!record.oid || !IsTakenByAgent(record.element.name)) continue;
      if (mapping.FindOid(*record.oid) != nullptr) continue;
      strangers.push_back({*record.oid, StateHash(record.element), ItemOf(record.element)});
    }
  });
  if (status != 0) throw Error("the handheld broke off: " + StatusText(status));
  return strangers;
}

// What was sent and not answered for, by the key that a record has.
class Expectations {
 public:
  explicit Expectations(const Mapping& mapping) {
    for (const auto& [key, item] : mapping.expected()) {
      items_.emplace(item.kind + (item.uid.empty() ? "c" + item.content : "u" + item.uid), &item);
    }
  }
  [[nodiscard]] const MappedItem* Find(const PushRecord& record) const {
    const auto found =
        items_.find(record.kind + (record.uid.empty() ? "c" + record.content : "u" + record.uid));
    return found == items_.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<std::string, const MappedItem*> items_;
};

class KindRecognition {
 public:
  KindRecognition(std::vector<Stranger> strangers, RecognisedItems& recognised)
      : strangers_(std::move(strangers)), recognised_(recognised), taken_(strangers_.size()) {
    for (std::size_t i = strangers_.size(); i-- > 0;) byState_[strangers_[i].state].push_back(i);
  }

  void Find(const std::vector<const PushRecord*>& records, const Expectations& expectations,
            const phone::PhoneNumbers& numbers) {
    if (strangers_.empty()) return;
    std::vector<const PushRecord*> others;
    for (const PushRecord* record : records) {
      const MappedItem* expected = expectations.Find(*record);
      const bool found = expected != nullptr && !expected->state.empty()
                             ? TakeByState(record, expected->state, expected->hash)
                             : TakeByState(record, StateOf(*record), record->hash);
      if (!found) others.push_back(record);
    }
    Join(others, numbers);
  }

 private:
  bool TakeByState(const PushRecord* record, const std::string& state, const std::string& hash) {
    const auto found = byState_.find(state);
    if (found == byState_.end() || found->second.empty()) return false;
    const std::size_t i = found->second.back();
    found->second.pop_back();
    taken_[i] = true;
    recognised_[record] = {strangers_[i].oid, state, hash};
    return true;
  }

  void Join(const std::vector<const PushRecord*>& records, const phone::PhoneNumbers& numbers) {
    std::vector<Item> desk;
    desk.reserve(records.size());
    for (const PushRecord* record : records) desk.push_back(ItemOf(ElementOf(*record)));
    std::vector<Item> handheld;
    std::vector<const Stranger*> left;
    for (std::size_t i = 0; i < strangers_.size(); ++i) {
      if (taken_[i]) continue;
      left.push_back(&strangers_[i]);
      handheld.push_back(std::move(strangers_[i].item));
    }
    for (const auto& [record, stranger] : FindJoins(desk, handheld, numbers).sure) {
      recognised_[records[record]] = {left[stranger]->oid, left[stranger]->state, {}};
    }
  }

  std::vector<Stranger> strangers_;
  RecognisedItems& recognised_;
  std::vector<bool> taken_;
  std::unordered_map<std::string, std::vector<std::size_t>> byState_;  // the first one last
};

}  // namespace

RecognisedItems Recognise(const ConnectionOptions& connection, const Mapping& mapping,
                          std::span<const PushRecord> records, const phone::PhoneNumbers& numbers) {
  std::map<RecordKind, std::vector<const PushRecord*>> unknown;
  for (const PushRecord& record : records) {
    if (record.ownOid || record.deletes || FindMapped(mapping, record) != nullptr) continue;
    unknown[*KindNamed(record.kind)].push_back(&record);
  }
  RecognisedItems recognised;
  const Expectations expectations(mapping);
  for (const auto& [kind, ofKind] : unknown) {
    KindRecognition(StrangersOf(connection, mapping, kind), recognised)
        .Find(ofKind, expectations, numbers);
  }
  return recognised;
}

}  // namespace desktop
