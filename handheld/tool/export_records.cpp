#include "handheld/tool/export_records.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/csv/csv.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/items/item_json.h"
#include "common/formats/json/message_json.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/tool/birthdays.h"
#include "handheld/tool/imported_items.h"
#include "handheld/tool/output.h"
#include "handheld/tool/records.h"
#include "handheld/tool/result.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Appointment;
using formats::Call;
using formats::Contact;
using formats::Task;
using formats::TextMessage;

// The items of one kind, each with a UID.
template <typename Record>
class Items {
 public:
  explicit Items(Session& session) : session_(session), imported_(session, kItemType) {}

  template <typename Visit>
  void ForEach(Visit visit) {
    ForEachRecord<Record>(session_, [&](std::int64_t oid, Record record) {
      const auto item = static_cast<std::uint32_t>(oid);
      record.uid = imported_.UidOf(item);
      if (record.uid.empty()) {
        record.uid = formats::NewUid();
        strangers_.emplace_back(item, IdentityOf(record));
      }
      ++count_;
      visit(std::move(record));
    });
  }
  // Of those that were visited.
  std::size_t count() const { return count_; }

  // The UIDs that were made, once the file is there.
  void Remember() {
    ce::host::StoreBatch batch;
    Check(batch.Begin(session_.Outlook().get()), "the store");
    for (const auto& [oid, identity] : strangers_) imported_.Remember(identity, oid);
    Check(batch.Commit(), "the memory of imports");
  }

 private:
  static constexpr ce::INT kItemType = KindOf<Record>::kItemType;
  Session& session_;
  ImportedItems imported_;
  std::size_t count_ = 0;
  std::vector<std::pair<std::uint32_t, RecordIdentity>> strangers_;
};

template <typename Record>
void Finish(const ExportOptions& options, std::size_t count, Output& output, const Report& report) {
  output.Finish();
  if (!options.file) return;
  TellResult(report,
             {{"file", options.file->string()}, {"kind", kRecordName<Record>}, {"count", count}},
             "{}: {}\n", options.file->string(), Counted(count, kRecordName<Record>));
}

// `write` writes every item, and answers how many it left out.
template <typename Record, typename Write>
Outcome ExportItems(Session& session, const ExportOptions& options, const Report& report,
                    Write write) {
  Items<Record> items(session);
  Output output(options.file, report);
  const std::size_t leftOut = write(items, output);
  Finish<Record>(options, items.count() - leftOut, output, report);
  items.Remember();
  return leftOut == 0 ? Outcome::kDone : Outcome::kPartlyDone;
}

formats::CalendarText ToICalendar(const std::vector<Appointment>& appointments,
                                  const calendar::Zone& zone) {
  return formats::WriteICalendar(appointments, {}, zone);
}
formats::CalendarText ToICalendar(const std::vector<Task>& tasks, const calendar::Zone& zone) {
  return formats::WriteICalendar({}, tasks, zone);
}

// What WriteICalendar leaves out.
bool IsLeftOut(const Appointment& appointment) {
  return !appointment.start;
}
bool IsLeftOut(const Task&) {
  return false;
}

template <typename Record>
Outcome ExportCalendar(Session& session, const ExportOptions& options, const Report& report) {
  const calendar::Zone zone = session.Zone();
  return ExportItems<Record>(session, options, report, [&](Items<Record>& items, Output& output) {
    std::vector<Record> records;
    items.ForEach([&](Record record) { records.push_back(std::move(record)); });
    const formats::CalendarText text = ToICalendar(records, zone);
    for (const std::string& loss : text.losses) Tell(report.err, "corvane-device: {}\n", loss);
    output << text.bytes;
    return static_cast<std::size_t>(
        std::ranges::count_if(records, [](const Record& record) { return IsLeftOut(record); }));
  });
}

std::string ToJson(const TextMessage& message) {
  return formats::MessageToJson(message);
}
std::string ToJson(const Call& call) {
  return formats::CallToJson(call);
}

std::string JsonWithNumber(const Contact& contact, std::int64_t oid) {
  return formats::ContactToJson(contact, static_cast<std::uint32_t>(oid));
}
std::string JsonWithNumber(const Call& call, std::int64_t id) {
  return formats::CallToJson(call, std::to_string(id));
}

template <typename Record>
Outcome ExportCsv(Session& session, formats::CsvKind kind, const ExportOptions& options,
                  const Report& report) {
  std::size_t count = 0;
  Output output(options.file, report);
  output << formats::CsvHeader(kind);
  ForEachRecord<Record>(session, [&](std::int64_t number, const Record& record) {
    output << formats::CsvRow(kind, JsonWithNumber(record, number));
    ++count;
  });
  Finish<Record>(options, count, output, report);
  return Outcome::kDone;
}

template <typename Record, typename BackupWriter>
Outcome ExportPhone(Session& session, const ExportOptions& options, const Report& report) {
  const std::size_t count = CountRecords<Record>(session);
  Output output(options.file, report);
  std::optional<BackupWriter> backup;
  if (!options.jsonLines) backup.emplace(output, count);
  ForEachRecord<Record>(session, [&](std::int64_t, const Record& record) {
    if (backup)
      backup->Write(record);
    else
      output << ToJson(record) << '\n';
  });
  if (backup) backup->Finish();
  Finish<Record>(options, count, output, report);
  return Outcome::kDone;
}

}  // namespace

template <>
Outcome ExportRecords<Contact>(Session& session, const ExportOptions& options,
                               const Report& report) {
  if (options.csv) return ExportCsv<Contact>(session, formats::CsvKind::kContacts, options, report);
  const auto write = [&](Items<Contact>& items, Output& output) {
    items.ForEach([&](const Contact& contact) {
      output << formats::WriteVCard(contact, options.vcardVersion, options.overflow);
    });
    return std::size_t{0};
  };
  return ExportItems<Contact>(session, options, report, write);
}

template <>
Outcome ExportRecords<Appointment>(Session& session, const ExportOptions& options,
                                   const Report& report) {
  return ExportCalendar<Appointment>(session, options, report);
}

template <>
Outcome ExportRecords<Task>(Session& session, const ExportOptions& options, const Report& report) {
  return ExportCalendar<Task>(session, options, report);
}

template <>
Outcome ExportRecords<TextMessage>(Session& session, const ExportOptions& options,
                                   const Report& report) {
  return ExportPhone<TextMessage, formats::MessageBackupWriter>(session, options, report);
}

template <>
Outcome ExportRecords<Call>(Session& session, const ExportOptions& options, const Report& report) {
  if (options.csv) return ExportCsv<Call>(session, formats::CsvKind::kCalls, options, report);
  return ExportPhone<Call, formats::CallBackupWriter>(session, options, report);
}

Outcome ExportBirthdays(Session& session, const ExportOptions& options, const Report& report) {
  Items<Contact> people(session);
  std::vector<Appointment> days;
  people.ForEach([&](const Contact& contact) {
    std::ranges::move(BirthdaysOf(contact), std::back_inserter(days));
  });
  Output output(options.file, report);
  output << formats::WriteICalendar(days, {}, session.Zone()).bytes;
  output.Finish();
  if (options.file)
    TellResult(report,
               {{"file", options.file->string()}, {"kind", "birthday"}, {"count", days.size()}},
               "{}: {}\n", options.file->string(), Counted(days.size(), "day"));
  people.Remember();
  return Outcome::kDone;
}

}  // namespace tool
