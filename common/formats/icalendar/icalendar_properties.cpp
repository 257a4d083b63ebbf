#include "common/formats/icalendar/icalendar_properties.h"

#include <unordered_map>

namespace formats {
namespace {

using P = ItemProperty;

constexpr std::string_view kPeople = "a handheld keeps no participants";
constexpr std::string_view kFiles = "a handheld keeps no files or links";
constexpr std::string_view kPosition = "a handheld keeps no position";
constexpr std::string_view kRemarks = "a handheld keeps the description alone";
constexpr std::string_view kRelations = "a handheld keeps no relations between items";
constexpr std::string_view kTaskPlace = "a task has no place";
constexpr std::string_view kTaskSeries = "a task's series has no exceptions";
constexpr std::string_view kUnknownWhy = "a handheld has no field for it";

constexpr ItemRule kRules[] = {
    {"UID", P::kUid, P::kUid},
    {"SUMMARY", P::kSummary, P::kSummary},
    {"DESCRIPTION", P::kDescription, P::kDescription},
    {"LOCATION", P::kLocation, P::kNotKept, kTaskPlace},
    {"CATEGORIES", P::kCategories, P::kCategories},
    {"CLASS", P::kClass, P::kClass},
    {"TRANSP", P::kTransparency, P::kIgnored},
    {"X-MICROSOFT-CDO-BUSYSTATUS", P::kBusyStatus, P::kIgnored},
    {"X-MICROSOFT-CDO-ALLDAYEVENT", P::kAllDay, P::kIgnored},
    {"STATUS", P::kStatus, P::kStatus},
    {"PRIORITY", P::kPriority, P::kPriority},
    {"DTSTART", P::kStart, P::kStart},
    {"DTEND", P::kEnd, P::kNotKept, kUnknownWhy},
    {"DUE", P::kNotKept, P::kDue, kUnknownWhy},
    {"DURATION", P::kDuration, P::kDuration},
    {"COMPLETED", P::kNotKept, P::kCompleted, kUnknownWhy},
    {"PERCENT-COMPLETE", P::kNotKept, P::kPercent, kUnknownWhy},
    {"RRULE", P::kRule, P::kRule},
    {"EXRULE", P::kExceptionRule, P::kNotKept, kTaskSeries},
    {"RDATE", P::kDates, P::kNotKept, kTaskSeries},
    {"EXDATE", P::kExceptionDates, P::kNotKept, kTaskSeries},
    {"RECURRENCE-ID", P::kRecurrenceId, P::kRecurrenceId},
    {"SEQUENCE", P::kSequence, P::kSequence},
    {"DTSTAMP", P::kStamp, P::kStamp},

    {"CREATED", P::kIgnored, P::kIgnored},
    {"LAST-MODIFIED", P::kIgnored, P::kIgnored},
    {"DCREATED", P::kIgnored, P::kIgnored},
    {"REQUEST-STATUS", P::kIgnored, P::kIgnored},
    {"TZID", P::kIgnored, P::kIgnored},
    {"RNUM", P::kIgnored, P::kIgnored},

    {"ATTENDEE", P::kNotKept, P::kNotKept, kPeople},
    {"ORGANIZER", P::kNotKept, P::kNotKept, kPeople},
    {"CONTACT", P::kNotKept, P::kNotKept, kPeople},
    {"ATTACH", P::kNotKept, P::kNotKept, kFiles},
    {"URL", P::kNotKept, P::kNotKept, kFiles},
    {"IMAGE", P::kNotKept, P::kNotKept, kFiles},
    {"CONFERENCE", P::kNotKept, P::kNotKept, kFiles},
    {"STRUCTURED-DATA", P::kNotKept, P::kNotKept, kFiles},
    {"GEO", P::kNotKept, P::kNotKept, kPosition},
    {"COMMENT", P::kNotKept, P::kNotKept, kRemarks},
    {"STYLED-DESCRIPTION", P::kNotKept, P::kNotKept, kRemarks},
    {"RESOURCES", P::kNotKept, P::kNotKept, "a handheld keeps no equipment"},
    {"RELATED-TO", P::kNotKept, P::kNotKept, kRelations},
    {"COLOR", P::kNotKept, P::kNotKept, "a handheld keeps no colours"},
    {"DALARM", P::kNotKept, P::kNotKept, "a reminder is read from a VALARM alone"},
    {"AALARM", P::kNotKept, P::kNotKept, "a reminder is read from a VALARM alone"},
};

constexpr ItemRule kUnknown = {"", P::kNotKept, P::kNotKept, kUnknownWhy};
constexpr ItemRule kPrivateUse = {"", P::kIgnored, P::kIgnored};

}  // namespace

const ItemRule& FindItemRule(std::string_view name) {
  static const auto rules = [] {
    std::unordered_map<std::string_view, const ItemRule*> byName;
    for (const ItemRule& rule : kRules) byName.emplace(rule.name, &rule);
    return byName;
  }();
  const auto found = rules.find(name);
  if (found != rules.end()) return *found->second;
  return name.starts_with("X-") ? kPrivateUse : kUnknown;
}

}  // namespace formats
