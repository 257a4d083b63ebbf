#include "handheld/tool/show_records.h"

#include <fmt/core.h>

#include <chrono>
#include <string>

#include "common/calendar/pattern_words.h"
#include "common/calendar/wall_time.h"
#include "common/text/text.h"
#include "handheld/tool/record_json.h"
#include "handheld/tool/records.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Appointment;
using formats::Call;
using formats::Contact;
using formats::ContactField;
using formats::MessageParty;
using formats::MessageTime;
using formats::Task;
using formats::TextMessage;

const std::string& FirstOf(const Contact& contact, std::initializer_list<ContactField> fields) {
  for (const ContactField field : fields)
    if (!contact[field].empty()) return contact[field];
  return contact[*fields.begin()];
}

// A kind's header, and a row as its cells behind the identifier.
std::string Header(const Contact&) {
  return fmt::format("{} {} {} E-mail", Column("Name", 28), Column("Company", 20),
                     Column("Phone", 20));
}

std::string Row(const Contact& contact) {
  const std::string& phone =
      FirstOf(contact, {ContactField::kMobileTelephoneNumber, ContactField::kHomeTelephoneNumber,
                        ContactField::kBusinessTelephoneNumber});
  const std::string& email = FirstOf(
      contact,
      {ContactField::kEmail1Address, ContactField::kEmail2Address, ContactField::kEmail3Address});
  return fmt::format("{} {} {} {}", Column(formats::DisplayName(contact), 28),
                     Column(contact[ContactField::kCompanyName], 20), Column(phone, 20),
                     text::OnOneLine(email));
}

std::string TimeOfDay(formats::local_seconds time) {
  return formats::IsoDateTime(time).substr(11, 5);
}

// "09:00-10:30", "22:00-02:00 +1" when it ends a day later, "all day", "3 days".
std::string Times(const formats::Occurrence& occurrence) {
  if (!occurrence.start) return "-";
  if (!occurrence.end) return TimeOfDay(*occurrence.start);
  const auto later = (formats::DayOf(*occurrence.end) - formats::DayOf(*occurrence.start)).count();
  if (occurrence.allDay) return later > 1 ? fmt::format("{} days", later) : "all day";
  std::string times = TimeOfDay(*occurrence.start);
  if (*occurrence.end != *occurrence.start) times += "-" + TimeOfDay(*occurrence.end);
  return later > 0 ? fmt::format("{} +{}", times, later) : times;
}

std::string SeriesWords(const formats::Series& series) {
  std::string words = PatternWords(series.pattern);
  if (const std::size_t count = series.deleted.size() + series.changed.size())
    words += "; " + Counted(count, "exception");
  return words;
}

std::string Header(const Appointment&) {
  return fmt::format("{} {} {} {} Repeats", Column("Date", 10), Column("Time", 14),
                     Column("Subject", 32), Column("Place", 20));
}

std::string Row(const Appointment& appointment) {
  const std::string date =
      appointment.start ? formats::IsoDate(formats::DayOf(*appointment.start)) : "-";
  return fmt::format("{} {} {} {} {}", Column(date, 10), Column(Times(appointment), 14),
                     Column(formats::DisplayName(appointment), 32),
                     Column(appointment.location, 20),
                     appointment.series ? SeriesWords(*appointment.series) : "");
}

std::string Header(const Task&) {
  return fmt::format("Done {} {} {} Repeats", Column("Due", 10), Column("Priority", 8),
                     Column("Subject", 40));
}

const char* PriorityWord(formats::Importance importance) {
  if (importance == formats::Importance::kHigh) return "high";
  return importance == formats::Importance::kLow ? "low" : "normal";
}

std::string Row(const Task& task) {
  return fmt::format("{} {} {} {} {}", task.complete ? "[x] " : "[ ] ",
                     Column(task.due ? formats::IsoDate(*task.due) : "-", 10),
                     Column(PriorityWord(task.importance), 8),
                     Column(formats::DisplayName(task), 40),
                     task.pattern ? PatternWords(*task.pattern) : "");
}

std::string LocalTime(const std::optional<MessageTime>& time, const calendar::Zone& zone) {
  if (!time) return "-";
  const auto seconds = std::chrono::floor<std::chrono::seconds>(*time);
  std::string text = formats::IsoDateTime(zone.ToLocal(seconds)).substr(0, 16);
  text[10] = ' ';
  return text;
}

const std::string& NameOf(const MessageParty& party) {
  return party.name.empty() ? party.address : party.name;
}

// Whom it is from, or whom it is to.
std::string OtherSide(const TextMessage& message) {
  if (!message.flags.fromMe) return NameOf(message.from);
  std::string names;
  for (const MessageParty& party : message.to) names += (names.empty() ? "" : ", ") + NameOf(party);
  return names;
}

std::string Header(const TextMessage&) {
  return fmt::format("{} {} {} Text", Column("Folder", 14), Column("Time", 16),
                     Column("From or to", 20));
}

std::string Row(const TextMessage& message, const calendar::Zone& zone) {
  return fmt::format("{} {} {} {}", Column(message.folder, 14),
                     Column(LocalTime(message.time, zone), 16), Column(OtherSide(message), 20),
                     Column(message.text, 60));
}

const char* KindWord(const Call& call) {
  if (call.missed) return "missed";
  return call.outgoing ? "outgoing" : "incoming";
}

// "0:12:05"; empty where a time is not known.
std::string Duration(const Call& call) {
  if (!call.start || !call.end || *call.end < *call.start) return {};
  const std::chrono::hh_mm_ss time(
      std::chrono::floor<std::chrono::seconds>(*call.end - *call.start));
  return fmt::format("{}:{:02}:{:02}", time.hours().count(), time.minutes().count(),
                     time.seconds().count());
}

std::string Header(const Call&) {
  return fmt::format("{} Kind     {} {} Name", Column("Time", 16), Column("Duration", 9),
                     Column("Number", 20));
}

std::string Row(const Call& call, const calendar::Zone& zone) {
  return fmt::format("{} {} {} {} {}", Column(LocalTime(call.start, zone), 16),
                     Column(KindWord(call), 8), Column(Duration(call), 9), Column(call.number, 20),
                     Column(call.name, 30));
}

template <typename Record>
void PrintJson(Session& session, const Report& report) {
  ForEachRecord<Record>(session, [&](std::int64_t id, const Record& record) {
    fmt::print(report.out, "{}\n", ToJson(record, id));
  });
}

// `rowOf` makes the cells behind the number.
template <typename Record, typename RowOf>
void PrintTable(Session& session, const char* number, RowOf rowOf, const Report& report) {
  std::size_t count = 0;
  ForEachRecord<Record>(session, [&](std::int64_t id, const Record& record) {
    if (count++ == 0)
      fmt::print(report.out, "{}\n",
                 Heading(fmt::format("{:>10}  {}", number, Header(record)), report));
    fmt::print(report.out, "{:>10}  {}\n", id, rowOf(record));
  });
  fmt::print(report.out, "{}\n", Counted(count, kRecordName<Record>));
}

}  // namespace

template <typename Record>
Outcome ShowRecords(Session& session, bool json, const Report& report) {
  if (json) {
    PrintJson<Record>(session, report);
  } else if constexpr (kIsItem<Record>) {
    PrintTable<Record>(
        session, "OID", [](const Record& record) { return Row(record); }, report);
  } else {
    const calendar::Zone zone = session.Zone();
    const auto rowOf = [&](const Record& record) {
      const std::string row = Row(record, zone);
      return row.substr(0, row.find_last_not_of(' ') + 1);
    };
    PrintTable<Record>(session, "ID", rowOf, report);
  }
  return Outcome::kDone;
}

template Outcome ShowRecords<Contact>(Session&, bool, const Report&);
template Outcome ShowRecords<Appointment>(Session&, bool, const Report&);
template Outcome ShowRecords<Task>(Session&, bool, const Report&);
template Outcome ShowRecords<TextMessage>(Session&, bool, const Report&);
template Outcome ShowRecords<Call>(Session&, bool, const Report&);

}  // namespace tool
