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
    std::vector<Record> records = ParseRecords(document);
    std::set<Oid> failed;
    for (const Record& record : records) {
      if (record.element.name == kErrorElement && record.oid) failed.insert(*record.oid);
    }
    for (Record& record : records) {
      if (KindOfElement(record.element.name) == words_.name && !IsAmong(failed, record)) {
        TakeRecord(record);
      }
    }
    for (const Oid oid : failed) Add({oid, true, {}, {}, {}});
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

  void TakeRecord(Record& record) {
    if (!record.oid) {
      throw Error(fmt::format("the answer makes no sense: {} without an OID", words_.withArticle));
    }
    HandheldItem item{*record.oid, false, std::move(record.bytes), {}, {}};
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
