#include <gtest/gtest.h>
#include <libical/ical.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/pattern_rule.h"
#include "tests/common/formats/icalendar/calendar_support.h"
#include "tests/support/paths.h"

namespace formats {

// How RapidCheck shows what fails.
void showValue(const Appointment& appointment, std::ostream& out) {
  PrintTo(appointment, &out);
}
void showValue(const Task& task, std::ostream& out) {
  PrintTo(task, &out);
}

namespace testing {
namespace {

using std::chrono::days;
using std::chrono::minutes;

constexpr const char* kZones[] = {"Europe/Berlin", "America/New_York", "Australia/Sydney",
                                  "Asia/Tokyo",    "Asia/Kolkata",     "UTC"};

std::string AnyText() {
  const auto piece = rc::gen::element<std::string>(
      "a", "n", "é", "山", "\U0001F600", "\\", ";", ",", ":", "\"", "\r\n", "\n", "\r", " ", "\t",
      "\\n", "^n", "END:VEVENT", "\r\nEND:VEVENT\r\n", "\uFEFF", "\u2028", std::string(90, 'w'));
  std::string text;
  for (const std::string& part : *rc::gen::container<std::vector<std::string>>(piece)) text += part;
  return text;
}

std::string MaybeText() {
  return *rc::gen::inRange(0, 3) == 0 ? std::string() : AnyText();
}

std::vector<std::string> AnyNames() {
  std::vector<std::string> names;
  for (int i = *rc::gen::inRange(0, 3); i > 0; --i) {
    std::string name = AnyText();
    std::replace(name.begin(), name.end(), ',', '.');
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
      names.push_back(name);
    }
  }
  return names;
}

local_days AnyDay() {
  // Years of all kinds, most of them near.
  const int year = *rc::gen::weightedOneOf<int>(
      {{6, rc::gen::inRange(1990, 2040)}, {1, rc::gen::inRange(1901, 2990)}});
  return Day(year, 1, 1) + days(*rc::gen::inRange(0, 365));
}

// On any minute, on the second now and then.
std::chrono::seconds AnyClock() {
  return minutes(*rc::gen::inRange(0, 24 * 60)) +
         std::chrono::seconds(*rc::gen::element(0, 0, 0, 30));
}

Occurrence AnyOccurrence(local_days day) {
  Occurrence occurrence;
  occurrence.subject = MaybeText();
  occurrence.location = MaybeText();
  occurrence.body = MaybeText();
  occurrence.allDay = *rc::gen::arbitrary<bool>();
  occurrence.busyStatus = *rc::gen::element(0, 1, 2, 3, 4, 7, -1);
  if (occurrence.allDay) {
    occurrence.start = day;
    occurrence.end = day + days(*rc::gen::inRange(1, 5));
  } else {
    occurrence.start = day + AnyClock();
    occurrence.end = *occurrence.start + minutes(*rc::gen::element(0, 1, 30, 60, 1440, 3000));
  }
  return occurrence;
}

calendar::Pattern AnyPattern(local_days start) {
  using calendar::PatternType;
  const auto type =
      *rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly,
                        PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth);
  calendar::Pattern pattern = calendar::PatternFrom(type, start);
  const bool yearly = type == PatternType::kYearly || type == PatternType::kYearNth;
  if (!yearly) {
    pattern.interval = *rc::gen::weightedOneOf<int>(
        {{4, rc::gen::inRange(1, 5)}, {1, rc::gen::inRange(1, calendar::kMaxInterval + 1)}});
  }
  if (type == PatternType::kWeekly) pattern.daysOfWeek |= *rc::gen::inRange(1, 128);
  if (pattern.dayOfMonth != 0) pattern.dayOfMonth = *rc::gen::inRange(1, 32);
  if (pattern.instance != 0) pattern.instance = *rc::gen::inRange(1, 6);
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      pattern.occurrences = *rc::gen::inRange(1, 40);
      break;
    case 1:
      pattern.until = start + days(*rc::gen::inRange(0, 1500));
      break;
    default:
      break;
  }
  return pattern;
}

// A day of the year that its month lacks comes back as the month's last.
calendar::Pattern Plain(calendar::Pattern pattern) {
  if (pattern.type != calendar::PatternType::kYearly) return pattern;
  constexpr int kLongest[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  pattern.dayOfMonth = std::min(pattern.dayOfMonth, kLongest[pattern.monthOfYear - 1]);
  return pattern;
}

// A pattern as it is read, with its first day.
std::optional<local_days> Settle(calendar::Pattern& pattern, local_days start) {
  const std::optional<local_days> first = calendar::NextDayOf(pattern, start, start);
  if (!first) return std::nullopt;
  const auto settled = PatternOfRule(*RecurrenceRule::Parse(RuleOf(pattern)),
                                     {pattern.occurrences, pattern.until}, *first);
  RC_ASSERT(settled == Plain(pattern));
  pattern = *settled;
  return first;
}

Series AnySeries(const calendar::Pattern& pattern, local_days first) {
  Series series;
  series.pattern = pattern;
  const calendar::SeriesDays told(pattern, first);
  for (int i = 0; i < 30 && i < told.size() && told[i] <= calendar::kLastDay - days(10); ++i) {
    const int fate = *rc::gen::inRange(0, 10);
    if (fate == 0) series.deleted.push_back(told[i]);
    if (fate == 1) {
      series.changed.push_back({told[i], AnyOccurrence(told[i] + days(*rc::gen::inRange(-3, 4)))});
    }
  }
  return series;
}

Appointment AnyAppointment(const std::string& uid) {
  Appointment appointment;
  local_days day = AnyDay();
  std::optional<calendar::Pattern> pattern;
  if (*rc::gen::arbitrary<bool>()) {
    pattern = AnyPattern(day);
    const std::optional<local_days> first = Settle(*pattern, day);
    if (first && *first < calendar::kLastDay - days(10)) {
      day = *first;
    } else {
      pattern.reset();
    }
  }
  static_cast<Occurrence&>(appointment) = AnyOccurrence(day);
  appointment.uid = uid;
  appointment.categories = AnyNames();
  appointment.isPrivate = *rc::gen::arbitrary<bool>();
  if (*rc::gen::arbitrary<bool>()) {
    appointment.reminderMinutes = *rc::gen::element(0, 15, -15, 1440, 100'000, 2'147'483'647);
  }
  if (pattern) appointment.series = AnySeries(*pattern, day);
  return appointment;
}

Task AnyTask(const std::string& uid, const calendar::Zone& zone) {
  const auto maybeDay = [] {
    return *rc::gen::arbitrary<bool>() ? std::optional(AnyDay()) : std::nullopt;
  };
  Task task;
  task.uid = uid;
  task.subject = MaybeText();
  task.body = MaybeText();
  task.categories = AnyNames();
  task.start = maybeDay();
  task.due = maybeDay();
  task.isPrivate = *rc::gen::arbitrary<bool>();
  task.importance = *rc::gen::element(Importance::kLow, Importance::kNormal, Importance::kHigh);
  task.complete = *rc::gen::arbitrary<bool>();
  if (task.complete) task.completed = maybeDay();
  // A time that there is.
  if (*rc::gen::arbitrary<bool>()) task.reminder = zone.ToLocal(zone.ToUtc(AnyDay() + AnyClock()));
  std::optional<local_days>& begin = task.start ? task.start : task.due;
  if (begin && *rc::gen::arbitrary<bool>()) {
    calendar::Pattern pattern = AnyPattern(*begin);
    if (const std::optional<local_days> first = Settle(pattern, *begin)) {
      begin = first;
      task.pattern = pattern;
    }
  }
  return task;
}

calendar::Zone AnyZone() {
  return ZoneOf(
      *rc::gen::elementOf(std::vector<std::string>(std::begin(kZones), std::end(kZones))));
}

RC_GTEST_PROP(CalendarRoundTrip, KeepsEveryAppointment, ()) {
  const calendar::Zone zone = AnyZone();
  const std::vector<Appointment> written = {AnyAppointment("a"), AnyAppointment("b, \r\nc")};
  const CalendarText text = WriteICalendar(written, {}, zone);
  RC_LOG() << zone.name() << "\n" << text.bytes;
  RC_ASSERT(text.losses.empty());
  const CalendarFile file = ReadICalendar(text.bytes, zone);
  RC_ASSERT(Texts(file.notices) == Strings{});
  RC_ASSERT(file.appointments.size() == written.size());
  for (std::size_t i = 0; i < written.size(); ++i) {
    RC_ASSERT(file.appointments[i].appointment == written[i]);
  }
}

RC_GTEST_PROP(CalendarRoundTrip, KeepsEveryTask, ()) {
  const calendar::Zone zone = AnyZone();
  const std::vector<Task> written = {AnyTask("a", zone), AnyTask("b", zone)};
  const CalendarText text = WriteICalendar({}, written, zone);
  RC_LOG() << zone.name() << "\n" << text.bytes;
  RC_ASSERT(text.losses.empty());
  const CalendarFile file = ReadICalendar(text.bytes, zone);
  RC_ASSERT(Texts(file.notices) == Strings{});
  RC_ASSERT(file.tasks.size() == written.size());
  for (std::size_t i = 0; i < written.size(); ++i) RC_ASSERT(file.tasks[i].task == written[i]);
}

const long long kEndOfComparison = At(2059, 1, 1, 0).time_since_epoch().count();

// What another library makes of the text: the first instants of its series that are neither deleted
// nor changed.
std::set<long long> InstantsOf(const std::string& bytes, std::size_t most) {
  const std::unique_ptr<icalcomponent, void (*)(icalcomponent*)> calendar(
      icalparser_parse_string(bytes.c_str()), icalcomponent_free);
  std::set<long long> instants, replaced;
  const auto instant = [](icaltimetype time) {
    return static_cast<long long>(icaltime_as_timet_with_zone(
        time, time.zone != nullptr ? time.zone : icaltimezone_get_utc_timezone()));
  };
  for (icalcomponent* event =
           icalcomponent_get_first_component(calendar.get(), ICAL_VEVENT_COMPONENT);
       event != nullptr;
       event = icalcomponent_get_next_component(calendar.get(), ICAL_VEVENT_COMPONENT)) {
    if (icalcomponent_get_first_property(event, ICAL_RECURRENCEID_PROPERTY) == nullptr) {
      struct Collected {
        std::set<long long> starts;
        std::size_t most;
      } collected{{}, most};
      icalcomponent_foreach_recurrence(
          event, icaltime_from_string("19000101T000000Z"), icaltime_from_string("20600101T000000Z"),
          [](icalcomponent*, icaltime_span* span, void* data) {
            auto* into = static_cast<Collected*>(data);
            if (into->starts.size() < into->most) into->starts.insert(span->start);
          },
          &collected);
      instants.merge(collected.starts);
    } else {
      replaced.insert(instant(icalproperty_get_datetime_with_component(
          icalcomponent_get_first_property(event, ICAL_RECURRENCEID_PROPERTY), event)));
    }
  }
  for (const long long gone : replaced) instants.erase(gone);
  instants.erase(instants.lower_bound(kEndOfComparison), instants.end());
  return instants;
}

// The same by the appointment itself.
std::set<long long> InstantsOf(const Appointment& appointment, const calendar::Zone& zone,
                               std::size_t most) {
  std::set<long long> instants;
  const auto clock = *appointment.start - DayOf(*appointment.start);
  const auto add = [&](local_days day) {
    instants.insert(zone.ToUtc(day + clock).time_since_epoch().count());
  };
  const Series& series = *appointment.series;
  std::set<local_days> gone(series.deleted.begin(), series.deleted.end());
  std::size_t seen = 0;
  for (const ChangedOccurrence& change : series.changed) gone.insert(change.original);
  const calendar::SeriesDays told(series.pattern, DayOf(*appointment.start));
  for (std::int64_t i = 0; i < told.CountBefore(Day(2060, 1, 1)); ++i) {
    const bool deleted =
        std::find(series.deleted.begin(), series.deleted.end(), told[i]) != series.deleted.end();
    if (!deleted && seen++ == most) break;
    if (!gone.contains(told[i])) add(told[i]);
  }
  instants.erase(instants.lower_bound(kEndOfComparison), instants.end());
  return instants;
}

RC_GTEST_PROP(CalendarRoundTrip, IsUnderstoodByAnotherLibrary, ()) {
  constexpr std::size_t kMost = 200;
  const calendar::Zone zone = AnyZone();
  Appointment appointment;
  appointment.uid = "u";
  local_days day = Day(*rc::gen::inRange(1990, 2040), 1, 1) + days(*rc::gen::inRange(0, 365));
  calendar::Pattern pattern = AnyPattern(day);
  const std::optional<local_days> first = Settle(pattern, day);
  RC_PRE(first.has_value() && *first < Day(2058, 1, 1));
  // Hours that every day of these zones has once.
  appointment.start = *first + std::chrono::hours(*rc::gen::inRange(4, 23));
  appointment.end = *appointment.start + minutes(30);
  appointment.series = AnySeries(pattern, *first);
  const CalendarText text = WriteICalendar(std::span(&appointment, 1), {}, zone);
  RC_LOG() << text.bytes;
  RC_ASSERT(text.losses.empty());
  RC_ASSERT(InstantsOf(text.bytes, kMost) == InstantsOf(appointment, zone, kMost));
}

TEST(CalendarRoundTrip, KeepsTimesAroundChangesOfTheClock) {
  for (const char* name : kZones) {
    const calendar::Zone zone = ZoneOf(name);
    std::vector<Appointment> written;
    for (local_seconds at = At(2008, 3, 5, 0); at < At(2008, 11, 5, 0); at += minutes(30)) {
      if (at == At(2008, 4, 10, 0)) at = At(2008, 10, 1, 0);
      Appointment appointment;
      appointment.uid = std::to_string(written.size());
      appointment.start = at;
      appointment.end = at + minutes(45);
      written.push_back(appointment);
    }
    const CalendarFile file = ReadICalendar(WriteICalendar(written, {}, zone).bytes, zone);
    ASSERT_EQ(file.appointments.size(), written.size());
    EXPECT_EQ(Texts(file.notices), Strings{});
    for (std::size_t i = 0; i < written.size(); ++i) {
      ASSERT_EQ(file.appointments[i].appointment, written[i]);
    }
  }
}

TEST(CalendarRoundTrip, GivesTheSameInstantsInAnotherZone) {
  const calendar::Zone berlin = ZoneOf("Europe/Berlin");
  const calendar::Zone sydney = ZoneOf("Australia/Sydney");
  Appointment appointment;
  appointment.uid = "u";
  appointment.start = At(2008, 2, 15, 9);
  appointment.end = At(2008, 2, 15, 10);
  appointment.series.emplace();
  appointment.series->pattern =
      calendar::PatternFrom(calendar::PatternType::kWeekly, Day(2008, 2, 15));
  appointment.series->pattern.occurrences = 60;
  const std::string bytes = WriteICalendar(std::span(&appointment, 1), {}, berlin).bytes;
  const CalendarFile there = ReadICalendar(bytes, sydney);
  ASSERT_EQ(there.appointments.size(), 1u);
  const Appointment& moved = there.appointments[0].appointment;
  std::set<long long> instants = InstantsOf(moved, sydney, 60);
  for (const ChangedOccurrence& change : moved.series->changed) {
    instants.insert(sydney.ToUtc(*change.occurrence.start).time_since_epoch().count());
  }
  EXPECT_EQ(instants, InstantsOf(appointment, berlin, 60));
}

TEST(Samples, OfACalendarAreReadWithoutLoss) {
  std::ifstream in(corvane::testing::SourcePath("samples/calendar.ics"), std::ios::binary);
  ASSERT_TRUE(in.is_open());
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  const CalendarFile file = ReadICalendar(bytes, ZoneOf("Europe/Berlin"));
  EXPECT_GE(file.appointments.size(), 5u);
  EXPECT_EQ(Texts(file.notices), Strings{});
}

}  // namespace
}  // namespace testing
}  // namespace formats
