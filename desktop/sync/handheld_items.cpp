#include "desktop/sync/handheld_items.h"

#include <fmt/format.h>

#include <set>
#include <utility>

#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/records/task_xml.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/oid_set.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

using formats::SeriesEnd;

Item ItemOfElement(const XmlElement& element, const calendar::Zone& zone) {
  const std::string_view kind = KindOfElement(element.name);
  if (kind == kContactKind) return ContactFromXml(element);
  if (kind == kTaskKind) return Normalized(TaskFromXml(element, zone), SeriesEnd::kCount);
  return Normalized(AppointmentFromXml(element, zone), SeriesEnd::kCount);
}

class HandheldReader {
 public:
  HandheldReader(ItemKind kind, const calendar::Zone& zone, const KnownRecords& known)
      : words_(WordsOf(RecordKindOf(kind))), zone_(zone), known_(known) {}

  void Take(const std::string& document) {
    if (TakeKnown(document)) return;
    std::vector<Record> records = ParseRecords(document);
    std::set<Oid> failed;
    for (const Record& record : records) {
      if (record.element.name == kErrorElement && record.oid) failed.insert(*record.oid);
    }
    for (const Record& record : records) {
      if (KindOfElement(record.element.name) == words_.name && !IsAmong(failed, record)) {
        TakeRecord(record);
      }
    }
    for (const Oid oid : failed) Add({oid, true, {}, {}, {}});
    LearnFrame(document, records);
  }

  std::vector<HandheldItem> Finish(std::int32_t status) {
    if (status != 0) {
      throw Error(
          fmt::format("the handheld broke off with its {}: {}", words_.plural, StatusText(status)));
    }
    return std::move(items_);
  }

 private:
  static bool IsAmong(const std::set<Oid>& failed, const Record& record) {
    return record.oid && failed.contains(*record.oid);
  }

  // What stands around the records of a document.
  struct Frame {
    std::string before;
    std::string recordEnd;  // the end tag of each
    std::string after;
  };

  // Of one that was well-formed, with nothing in it but records of the kind.
  void LearnFrame(std::string_view document, const std::vector<Record>& records) {
    if (frame_ || known_.empty() || records.empty()) return;
    const std::string& element = records.front().element.name;
    if (KindOfElement(element) != words_.name) return;
    std::string all;
    for (const Record& record : records) {
      if (record.element.name != element) return;
      all += record.bytes;
    }
    const std::size_t begin = document.find(all);
    if (begin == std::string_view::npos) return;
    frame_ = {std::string(document.substr(0, begin)), fmt::format("</{}>", element),
              std::string(document.substr(begin + all.size()))};
  }

  // A document in which every byte is known needs no parsing: the same frame, and records that are
  // what was remembered when they had been parsed. False, with nothing taken, for any other.
  bool TakeKnown(std::string_view document) {
    if (!frame_ || document.size() < frame_->before.size() + frame_->after.size() ||
        !document.starts_with(frame_->before) || !document.ends_with(frame_->after)) {
      return false;
    }
    document.remove_prefix(frame_->before.size());
    document.remove_suffix(frame_->after.size());
    std::vector<HandheldItem> items;
    while (!document.empty()) {
      const std::size_t end = document.find(frame_->recordEnd);
      if (end == std::string_view::npos) return false;
      const std::string_view record = document.substr(0, end + frame_->recordEnd.size());
      const auto known = known_.find(OidOf(record));
      if (known == known_.end()) return false;
      std::string hash = formats::ContentHash(record);
      if (known->second != hash) return false;
      items.push_back({known->first, false, std::string(record), std::move(hash), {}});
      document.remove_prefix(record.size());
    }
    for (HandheldItem& item : items) Add(std::move(item));
    return true;
  }

  // As the agent writes it; 0 for another spelling.
  static Oid OidOf(std::string_view record) {
    constexpr std::string_view kAttribute = " Oid=\"";
    const std::size_t begin = record.find(kAttribute);
    if (begin == std::string_view::npos) return 0;
    const std::string_view value = record.substr(begin + kAttribute.size());
    return ParseOid(value.substr(0, value.find('"'))).value_or(0);
  }

  void TakeRecord(const Record& record) {
    if (!record.oid) {
      throw Error(fmt::format("the answer makes no sense: {} without an OID", words_.withArticle));
    }
    HandheldItem item{*record.oid, false, record.bytes, {}, {}};
    item.hash = formats::ContentHash(item.record);
    const auto known = known_.find(item.oid);
    if (known == known_.end() || known->second != item.hash) {
      item.item = ItemOfElement(record.element, zone_);
    }
    Add(std::move(item));
  }

  void Add(HandheldItem item) {
    if (!seen_.Insert(item.oid)) {
      throw Error(fmt::format("the answer makes no sense: OID {} twice", item.oid));
    }
    items_.push_back(std::move(item));
  }

  const KindWords& words_;
  const calendar::Zone& zone_;
  const KnownRecords& known_;
  std::optional<Frame> frame_;
  OidSet seen_;
  std::vector<HandheldItem> items_;
};

}  // namespace

RecordKind RecordKindOf(ItemKind kind) {
  switch (kind) {
    case ItemKind::kAppointment:
      return RecordKind::kAppointments;
    case ItemKind::kTask:
      return RecordKind::kTasks;
    case ItemKind::kContact:
      break;
  }
  return RecordKind::kContacts;
}

std::vector<HandheldItem> ReadHandheld(const ConnectionOptions& connection, ItemKind kind,
                                       const calendar::Zone& zone, const KnownRecords& known) {
  HandheldReader reader(kind, zone, known);
  return reader.Finish(DownloadAll(connection, RecordKindOf(kind),
                                   [&](const std::string& document) { reader.Take(document); }));
}

std::vector<HandheldItem> ReadHandheld(const ConnectionOptions& connection, ItemKind kind,
                                       const calendar::Zone& zone, std::span<const Oid> oids) {
  const KnownRecords none;
  HandheldReader reader(kind, zone, none);
  if (oids.empty()) return {};
  return reader.Finish(
      DownloadSpecific(connection, RecordKindOf(kind), oids,
                       [&](const std::string& document) { reader.Take(document); }));
}

Item ItemOfRecord(std::string_view record, const calendar::Zone& zone) {
  const std::vector<Record> records = ParseRecords(fmt::format("<root>{}</root>", record));
  if (records.size() != 1 || !IsTakenByAgent(records[0].element.name)) {
    throw Error("a record that is remembered cannot be understood");
  }
  return ItemOfElement(records[0].element, zone);
}

PushRecord RecordFor(const Item& item, const std::string& key, const calendar::Zone& zone) {
  struct {
    PushRecord operator()(const formats::Contact& contact) const { return RecordOf({}, contact); }
    PushRecord operator()(const formats::Appointment& appointment) const {
      return RecordOf({}, appointment, zone);
    }
    PushRecord operator()(const formats::Task& task) const { return RecordOf({}, task); }
    const calendar::Zone& zone;
  } const make{zone};
  PushRecord record = std::visit(make, item);
  record.place = record.title;
  record.uid = key;
  record.content.clear();
  return record;
}

}  // namespace desktop
