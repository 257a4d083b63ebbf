#include "handheld/tool/export_items.h"

#include <fmt/core.h>

#include <string>
#include <utility>
#include <vector>

#include "common/formats/icalendar/icalendar.h"
#include "handheld/outlook/store_batch.h"
#include "handheld/tool/imported_items.h"
#include "handheld/tool/item_walk.h"
#include "handheld/tool/output.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// Visits every item as a record with a UID. Answers how many there are; `strangers` are those that
// had no UID, to be remembered once the file is there.
using Strangers = std::vector<std::pair<std::uint32_t, RecordIdentity>>;

template <typename Record, typename Visit>
std::size_t ForEachWithUid(Session& session, const ImportedItems& imported, Strangers& strangers,
                           Visit visit) {
  std::size_t count = 0;
  ForEachItem<Record>(session, [&](std::uint32_t oid, Record record) {
    record.uid = imported.UidOf(oid);
    if (record.uid.empty()) {
      record.uid = formats::NewUid();
      strangers.emplace_back(oid, IdentityOf(record));
    }
    visit(std::move(record));
    ++count;
  });
  return count;
}

void RememberAll(Session& session, ImportedItems& imported, const Strangers& strangers) {
  ce::host::StoreBatch batch;
  Check(batch.Begin(session.Outlook().get()), "the store");
  for (const auto& [oid, identity] : strangers) imported.Remember(identity, oid);
  Check(batch.Commit(), "the memory of imports");
}

formats::CalendarText Write(const std::vector<formats::Appointment>& appointments,
                            const calendar::Zone& zone) {
  return formats::WriteICalendar(appointments, {}, zone);
}
formats::CalendarText Write(const std::vector<formats::Task>& tasks, const calendar::Zone& zone) {
  return formats::WriteICalendar({}, tasks, zone);
}

// What became of an export's items.
struct Written {
  std::size_t items = 0, leftOut = 0;
};

// `writeAll` writes every item, with ForEachWithUid.
template <typename Record, typename WriteAll>
Outcome Export(Session& session, const std::optional<fs::path>& file, const Report& report,
               WriteAll writeAll) {
  ImportedItems imported(session, KindOf<Record>::kItemType);
  Output output(file, report);
  Strangers strangers;
  const Written written = writeAll(imported, strangers, output);
  output.Finish();
  if (file)
    fmt::print(report.out, "{}: {}\n", file->string(),
               Counted(written.items, KindOf<Record>::kName));
  RememberAll(session, imported, strangers);
  return written.leftOut == 0 ? Outcome::kDone : Outcome::kPartlyDone;
}

// What WriteICalendar leaves out.
bool IsLeftOut(const formats::Appointment& appointment) {
  return !appointment.start;
}
bool IsLeftOut(const formats::Task&) {
  return false;
}

template <typename Record>
Outcome ExportICalendar(Session& session, const std::optional<fs::path>& file,
                        const Report& report) {
  const calendar::Zone zone = session.Zone();
  const auto writeAll = [&](const ImportedItems& imported, Strangers& strangers, Output& output) {
    std::vector<Record> records;
    Written written;
    written.items = ForEachWithUid<Record>(session, imported, strangers, [&](Record record) {
      written.leftOut += IsLeftOut(record);
      records.push_back(std::move(record));
    });
    written.items -= written.leftOut;
    const formats::CalendarText text = Write(records, zone);
    for (const std::string& loss : text.losses)
      fmt::print(report.err, "corvane-device: {}\n", loss);
    output.Write(text.bytes);
    return written;
  };
  return Export<Record>(session, file, report, writeAll);
}

}  // namespace

Outcome ExportContacts(Session& session, const std::optional<fs::path>& file,
                       formats::VCardVersion version, const Report& report) {
  using formats::Contact;
  const auto writeAll = [&](const ImportedItems& imported, Strangers& strangers, Output& output) {
    const auto write = [&](const Contact& contact) {
      output.Write(formats::WriteVCard(contact, version));
    };
    return Written{ForEachWithUid<Contact>(session, imported, strangers, write), 0};
  };
  return Export<Contact>(session, file, report, writeAll);
}

Outcome ExportCalendar(Session& session, const std::optional<fs::path>& file,
                       const Report& report) {
  return ExportICalendar<formats::Appointment>(session, file, report);
}

Outcome ExportTasks(Session& session, const std::optional<fs::path>& file, const Report& report) {
  return ExportICalendar<formats::Task>(session, file, report);
}

}  // namespace tool
