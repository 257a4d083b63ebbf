#include "handheld/tool/show_messages.h"

#include <fmt/core.h>

#include <chrono>
#include <string>

#include "common/calendar/wall_time.h"
#include "common/formats/json/message_json.h"
#include "handheld/tool/message_walk.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Call;
using formats::MessageParty;
using formats::MessageTime;
using formats::TextMessage;

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

std::string ToJson(const TextMessage& message, std::string_view id) {
  return formats::MessageToJson(message, id);
}
std::string ToJson(const Call& call, std::string_view id) {
  return formats::CallToJson(call, id);
}

std::string_view WithoutEnd(std::string_view line) {
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

template <typename Record>
void PrintJson(Session& session, const Report& report) {
  const char* before = "";
  fmt::print(report.out, "[");
  ForEachRecord<Record>(session, [&](std::int64_t id, const Record& record) {
    fmt::print(report.out, "{}\n{}", before, ToJson(record, std::to_string(id)));
    before = ",";
  });
  fmt::print(report.out, "{}]\n", *before ? "\n" : "");
}

template <typename Record>
void PrintTable(Session& session, const Report& report) {
  const calendar::Zone zone = session.Zone();
  std::size_t count = 0;
  ForEachRecord<Record>(session, [&](std::int64_t id, const Record& record) {
    if (count++ == 0) fmt::print(report.out, "{:>10}  {}\n", "ID", Header(record));
    fmt::print(report.out, "{:>10}  {}\n", id, WithoutEnd(Row(record, zone)));
  });
  fmt::print(report.out, "{}\n", Counted(count, kRecordName<Record>));
}

template <typename Record>
Outcome Show(Session& session, bool json, const Report& report) {
  json ? PrintJson<Record>(session, report) : PrintTable<Record>(session, report);
  return Outcome::kDone;
}

}  // namespace

Outcome ShowMessages(Session& session, bool json, const Report& report) {
  return Show<TextMessage>(session, json, report);
}

Outcome ShowCalls(Session& session, bool json, const Report& report) {
  return Show<Call>(session, json, report);
}

}  // namespace tool
