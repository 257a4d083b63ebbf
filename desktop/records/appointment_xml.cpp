#include "desktop/records/appointment_xml.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "desktop/records/recurrence_xml.h"
#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

using calendar::Zone;
using formats::Appointment;
using formats::ChangedOccurrence;
using formats::Occurrence;
using formats::Series;
using namespace std::chrono;

constexpr days kOneDay{1};

std::optional<local_seconds> WithinYears(local_seconds time) {
  const local_days day = floor<days>(time);
  if (day < calendar::kFirstDay || day > calendar::kLastDay) return std::nullopt;
  return time;
}

std::string TimesToXml(const Occurrence& occurrence, const Zone& zone) {
  std::string xml;
  const auto add = [&](const char* name, std::optional<local_seconds> time, days back) {
    if (!time) return;
    xml += Element(name, occurrence.allDay ? DateText(floor<days>(*time) - back)
                                           : DateTimeText(zone.ToWireUtc(*time)));
  };
  add("EVENT_START", occurrence.start, days{0});
  add("EVENT_END", occurrence.end, kOneDay);
  return xml;
}

// A record and a changed occurrence have the same elements, in the same order, with more in the
// midst of a record's.
std::string OccurrenceToXml(const Occurrence& occurrence, const Zone& zone,
                            const std::string& between) {
  return TextElement("SUBJECT", occurrence.subject) + TextElement("LOCATION", occurrence.location) +
         TrueElement("ALL_DAY_EVENT", occurrence.allDay) + between + TimesToXml(occurrence, zone) +
         NumberElement("BusyStatus", occurrence.busyStatus) + TextElement("NOTES", occurrence.body);
}

std::string SeriesToXml(const Series& series, const Zone& zone) {
  std::string xml = PatternToXml(series.pattern);
  for (const local_days day : series.deleted) xml += Element("DeletedException", DateText(day));
  for (const ChangedOccurrence& change : series.changed) {
    xml += Element("ChangedException", OccurrenceToXml(change.occurrence, zone, {}) +
                                           Element("OriginalDate", DateText(change.original)));
  }
  return TrueElement("IS_RECURRING", true) + Element("RECURRENCE", xml);
}

std::string ReminderToXml(std::optional<int> minutes) {
  if (!minutes) return {};
  return TrueElement("HAS_REMINDER", true) + NumberElement("ReminderMinutes", *minutes);
}

void ReadDays(const XmlElement& element, Occurrence& occurrence) {
  const std::optional<local_days> first = ChildDate(element, "EVENT_START");
  if (!first || !WithinYears(*first)) return;
  const local_days last = ChildDate(element, "EVENT_END").value_or(*first);
  occurrence.start = *first;
  occurrence.end = std::clamp(last, *first, calendar::kLastDay) + kOneDay;
}

void ReadTimes(const XmlElement& element, const Zone& zone, Occurrence& occurrence) {
  const auto read = [&](std::string_view name) -> std::optional<local_seconds> {
    const std::optional<sys_seconds> time = DateTimeFromText(element.ChildText(name));
    return time ? WithinYears(zone.FromWireUtc(*time)) : std::nullopt;
  };
  occurrence.start = read("EVENT_START");
  occurrence.end = read("EVENT_END");
  if (occurrence.start && occurrence.end) {
    occurrence.end = std::max(*occurrence.start, *occurrence.end);
  }
}

void ReadOccurrence(const XmlElement& element, const Zone& zone, Occurrence& occurrence) {
  occurrence.subject = element.ChildText("SUBJECT");
  occurrence.location = element.ChildText("LOCATION");
  occurrence.body = element.ChildText("NOTES");
  occurrence.allDay = ChildIsTrue(element, "ALL_DAY_EVENT");
  occurrence.busyStatus = ChildNumber(element, "BusyStatus", 0);
  if (occurrence.allDay) {
    ReadDays(element, occurrence);
  } else {
    ReadTimes(element, zone, occurrence);
  }
}

void ReadExceptions(const XmlElement& recurrence, const Zone& zone, Series& series) {
  std::set<local_days> deleted;
  std::map<local_days, Occurrence> changed;
  for (const XmlElement& child : recurrence.children) {
    if (child.name == "DeletedException") {
      if (const auto day = DateFromText(child.text)) deleted.insert(*day);
    } else if (child.name == "ChangedException") {
      if (const auto day = ChildDate(child, "OriginalDate")) {
        ReadOccurrence(child, zone, changed[*day]);
      }
    }
  }
  series.deleted.assign(deleted.begin(), deleted.end());
  for (auto& [day, occurrence] : changed) {
    if (!deleted.contains(day)) series.changed.push_back({day, std::move(occurrence)});
  }
}

std::optional<Series> ReadSeries(const XmlElement& record, const Zone& zone) {
  const XmlElement* const recurrence = record.Child("RECURRENCE");
  if (recurrence == nullptr || !ChildIsTrue(record, "IS_RECURRING")) return std::nullopt;
  const std::optional<calendar::Pattern> pattern = PatternFromXml(*recurrence);
  if (!pattern) return std::nullopt;
  Series series{*pattern, {}, {}};
  ReadExceptions(*recurrence, zone, series);
  return series;
}

}  // namespace

std::string AppointmentToXml(const Appointment& appointment, const Zone& zone) {
  std::string between = ElementUnlessEmpty("CATEGORIES", CategoriesToXml(appointment.categories));
  if (appointment.series) between += SeriesToXml(*appointment.series, zone);
  between += ReminderToXml(appointment.reminderMinutes);
  between += TrueElement("Private", appointment.isPrivate);
  return Element("CALENDAR", OccurrenceToXml(appointment, zone, between));
}

Appointment AppointmentFromXml(const XmlElement& record, const Zone& zone) {
  Appointment appointment;
  ReadOccurrence(record, zone, appointment);
  appointment.categories = CategoriesFromXml(record.Child("CATEGORIES"));
  appointment.series = ReadSeries(record, zone);
  if (ChildIsTrue(record, "HAS_REMINDER")) {
    appointment.reminderMinutes = ChildNumber(record, "ReminderMinutes", 0);
  }
  appointment.isPrivate = ChildIsTrue(record, "Private");
  return appointment;
}

}  // namespace desktop
