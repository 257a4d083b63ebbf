// Calls of a backup.
#include <algorithm>

#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/backup/sms_backup_values.h"
#include "common/formats/json/message_json_fields.h"
#include "common/text/text.h"

namespace formats {
namespace {

// The types of <call>, and what a handheld makes of them.
struct TypeRow {
  std::int64_t type;
  bool outgoing;
  bool missed;
  const char* lost;  // null when nothing is
};
constexpr TypeRow kTypes[] = {
    {1, false, false, nullptr},
    {2, true, false, nullptr},
    {3, false, true, nullptr},
    {4, false, true, "calls that went to voicemail are kept as missed ones"},
    {5, false, true, "rejected calls are kept as missed ones"},
    {6, false, true, "refused calls are kept as missed ones"},
    {7, false, true, "calls answered on another telephone are kept as missed ones"},
};

struct PresentationRow {
  std::int64_t presentation;
  CallerId callerId;
  const char* lost;
};
constexpr PresentationRow kPresentations[] = {
    {1, kCallerIdAvailable, nullptr},
    {2, kCallerIdBlocked, nullptr},
    {3, kCallerIdUnavailable, nullptr},
    {4, kCallerIdUnavailable, "a call from a payphone is kept as one from an unknown number"},
};

constexpr std::int64_t kLongestSeconds = 365 * 24 * 3600;

void TakeType(const BackupElement& element, Call& call, NoticeTally& tally) {
  const std::string_view text = element.attributes["type"];
  const std::int64_t type = BackupNumber(text).value_or(0);
  const auto* const row = std::ranges::find(kTypes, type, &TypeRow::type);
  if (row == std::end(kTypes)) {
    tally.Add(element.line,
              "type: not a known kind of call, taken as an incoming one: " + text::Excerpt(text));
    return;
  }
  call.outgoing = row->outgoing;
  call.missed = row->missed;
  if (row->lost != nullptr) tally.Add(element.line, std::string("type: ") + row->lost);
}

// Old telephones have numbers below zero instead of a presentation.
void TakeNumber(const BackupElement& element, Call& call, NoticeTally& tally) {
  const std::string_view number = element.attributes["number"];
  std::int64_t presentation = number.empty() ? 3 : 1;
  if (number == "-1") presentation = 3;
  if (number == "-2") presentation = 2;
  if (number == "-3") presentation = 4;
  if (number != "-1" && number != "-2" && number != "-3") call.number = number;

  const std::string_view text = element.attributes["presentation"];
  if (!text.empty()) presentation = BackupNumber(text).value_or(0);
  const auto* const row =
      std::ranges::find(kPresentations, presentation, &PresentationRow::presentation);
  if (row == std::end(kPresentations)) {
    tally.Add(element.line, "presentation: not a known kind: " + text::Excerpt(text));
    return;
  }
  call.callerId = row->callerId;
  if (row->lost != nullptr) tally.Add(element.line, std::string("presentation: ") + row->lost);
}

void TakeTimes(const BackupElement& element, Call& call, NoticeTally& tally) {
  call.start = BackupTime(element, tally);
  const std::string_view text = element.attributes["duration"];
  std::int64_t seconds = BackupNumber(text).value_or(-1);
  if (seconds < 0 || seconds > kLongestSeconds) {
    tally.Add(element.line, "duration: not a number of seconds: " + text::Excerpt(text));
    seconds = 0;
  }
  // A call that came in and is not missed was answered, be it for less than a second.
  call.connected = !call.missed && (seconds > 0 || !call.outgoing);
  if (!call.start) return;
  const MessageTime end = *call.start + std::chrono::seconds(seconds);
  if (IsKeepableTime(end)) call.end = end;
}

std::string DurationText(const Call& call) {
  if (!call.start || !call.end) return "0";
  const auto length = std::chrono::floor<std::chrono::seconds>(*call.end - *call.start).count();
  return std::to_string(length < 0 || length > kLongestSeconds ? 0 : length);
}

const char* TypeText(const Call& call) {
  if (call.missed) return "3";
  return call.outgoing ? "2" : "1";
}

const char* PresentationText(const Call& call) {
  switch (call.callerId) {
    case kCallerIdAvailable:
      return "1";
    case kCallerIdBlocked:
      return "2";
    default:
      return "3";
  }
}

}  // namespace

Call CallFromElement(const BackupElement& element, NoticeTally& tally) {
  Call call;
  TakeType(element, call, tally);
  TakeNumber(element, call, tally);
  call.name = KnownName(element.attributes["contact_name"]);
  TakeTimes(element, call, tally);
  call.ended = true;
  const std::string_view json = element.attributes[kHandheldAttribute];
  if (json.empty()) return call;
  TakeJson(json, call, [&](const std::string& problem) {
    tally.Add(element.line, std::string(kHandheldAttribute) + ": " + problem);
  });
  return call;
}

BackupElement ToElement(const Call& call) {
  BackupElement element;
  BackupAttributes& to = element.attributes;
  to.Add("number", XmlCarries(call.number));
  to.Add("duration", DurationText(call));
  to.Add("date", MillisecondsText(call.start));
  to.Add("type", TypeText(call));
  to.Add("presentation", PresentationText(call));
  to.Add("subscription_id", "null");
  to.Add("readable_date", ReadableDate(call.start));
  to.Add("contact_name", call.name.empty() ? "(Unknown)" : XmlCarries(call.name));
  NoticeTally unread;
  const std::string rest = DifferenceAsJson(call, CallFromElement(element, unread));
  if (!rest.empty()) to.Add(kHandheldAttribute, rest);
  return element;
}

}  // namespace formats
