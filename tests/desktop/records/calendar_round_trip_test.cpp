// Whatever an appointment or a task holds of what the wire carries comes back from it.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/items/item_json.h"
#include "common/formats/items/normal_form.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/task_xml.h"
#include "tests/desktop/fixtures.h"

namespace formats {

// How RapidCheck shows what fails.
void showValue(const Appointment& appointment, std::ostream& out) {
  out << AppointmentToJson(appointment, 0);
}
void showValue(const Task& task, std::ostream& out) {
  out << TaskToJson(task, 0);
}

}  // namespace formats

namespace desktop::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using calendar::Zone;
using formats::Appointment;
using formats::local_days;
using formats::local_seconds;
using formats::Occurrence;
using formats::Series;
using formats::SeriesEnd;
using formats::Task;
using namespace std::chrono;

// North and south, half hours, no daylight saving time, changes at midnight.
constexpr const char* kZones[] = {"UTC",          "Europe/Berlin",    "America/New_York",
                                  "Asia/Kolkata", "Australia/Sydney", "America/Santiago"};

rc::Gen<std::string> AnyText() {
  const auto piece =
      rc::gen::element<std::string>("a", "Z", "0", " ", "é", "山", "\U0001F600", "\n", "\t", "<",
                                    ">", "&", "&amp;", "\"", "'", "]]>", "<!--", "</SUBJECT>");
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text;
    for (const std::string& each : pieces) text += each;
    return text;
  });
}

rc::Gen<local_days> AnyDay() {
  const int first = static_cast<int>(Day(1901, 1, 1).time_since_epoch().count());
  const int last = static_cast<int>(Day(2500, 1, 1).time_since_epoch().count());
  return rc::gen::map(rc::gen::inRange(first, last), [](int day) { return local_days{days{day}}; });
}

// A time that the handheld's clock shows, which leaves out an hour in spring.
local_seconds AnyTime(const Zone& zone) {
  const local_seconds time = *AnyDay() + seconds{*rc::gen::inRange(0, 86400)};
  return zone.FromWireUtc(zone.ToWireUtc(time));
}

std::vector<std::string> AnyCategories() {
  std::vector<std::string> names;
  for (std::string name : *rc::gen::container<std::vector<std::string>>(AnyText())) {
    if (name.find_first_not_of(" \t\n") == std::string::npos) continue;
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  return names;
}

Pattern AnyPattern() {
  const auto type =
      *rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly,
                        PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth);
  Pattern pattern = PatternFrom(type, *AnyDay());
  if (type != PatternType::kYearly && type != PatternType::kYearNth) {
    pattern.interval = *rc::gen::weightedOneOf<int>(
        {{2, rc::gen::just(1)}, {1, rc::gen::inRange(1, calendar::kMaxInterval + 1)}});
  }
  if (pattern.daysOfWeek != 0) pattern.daysOfWeek = *rc::gen::inRange(1, 128);
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      pattern.occurrences = *rc::gen::inRange(1, 1000);
      break;
    case 1:
      pattern.until = *AnyDay();
      break;
    default:
      break;
  }
  return pattern;
}

void FillOccurrence(Occurrence& occurrence, const Zone& zone) {
  occurrence.subject = *AnyText();
  occurrence.location = *AnyText();
  occurrence.body = *AnyText();
  occurrence.busyStatus = *rc::gen::inRange(0, 5);
  occurrence.allDay = *rc::gen::arbitrary<bool>();
  if (occurrence.allDay) {
    const local_days first = *AnyDay();
    occurrence.start = first;
    occurrence.end = first + days{*rc::gen::inRange(1, 30)};
  } else {
    const local_seconds one = AnyTime(zone);
    const local_seconds other = AnyTime(zone);
    occurrence.start = std::min(one, other);
    occurrence.end = std::max(one, other);
  }
}

Series AnySeries(const Zone& zone) {
  Series series;
  series.pattern = AnyPattern();
  for (const local_days day : *rc::gen::container<std::set<local_days>>(AnyDay())) {
    if (*rc::gen::arbitrary<bool>()) {
      series.deleted.push_back(day);
    } else {
      Occurrence occurrence;
      FillOccurrence(occurrence, zone);
      series.changed.push_back({day, occurrence});
    }
  }
  return series;
}

Appointment AnyAppointment(const Zone& zone) {
  Appointment appointment;
  FillOccurrence(appointment, zone);
  appointment.categories = AnyCategories();
  appointment.isPrivate = *rc::gen::arbitrary<bool>();
  if (*rc::gen::arbitrary<bool>()) appointment.reminderMinutes = *rc::gen::inRange(-3000, 3000);
  if (*rc::gen::arbitrary<bool>()) appointment.series = AnySeries(zone);
  return appointment;
}

// A last day that leaves the series one day at least.
void EndWithin(Pattern& pattern, local_seconds start) {
  if (!pattern.until) return;
  pattern.until.reset();
  const local_days day = floor<days>(start);
  const auto first = NextDayOf(pattern, day, day);
  if (first) pattern.until = *first + days{*rc::gen::inRange(0, 3000)};
}

std::optional<local_days> MaybeDay() {
  return *rc::gen::arbitrary<bool>() ? std::optional(*AnyDay()) : std::nullopt;
}

Task AnyTask() {
  Task task;
  task.subject = *AnyText();
  task.body = *AnyText();
  task.categories = AnyCategories();
  task.start = MaybeDay();
  task.due = MaybeDay();
  if (task.due && *rc::gen::arbitrary<bool>()) {
    task.reminder = *task.due - minutes{*rc::gen::inRange(-100000, 100000)};
  }
  task.isPrivate = *rc::gen::arbitrary<bool>();
  task.complete = *rc::gen::arbitrary<bool>();
  task.importance = *rc::gen::element(formats::Importance::kLow, formats::Importance::kNormal,
                                      formats::Importance::kHigh);
  if (*rc::gen::arbitrary<bool>()) task.pattern = AnyPattern();
  return task;
}

class InEveryZone : public ::testing::TestWithParam<const char*> {};

TEST_P(InEveryZone, TheWireKeepsEveryAppointment) {
  const Zone zone = ZoneNamed(GetParam());
  EXPECT_TRUE(rc::check([&] {
    const Appointment appointment = AnyAppointment(zone);
    RC_LOG() << AppointmentToJson(appointment, 0);
    const XmlElement element = ElementOf(AppointmentToXml(appointment, zone));
    RC_ASSERT(AppointmentFromXml(element, zone) == appointment);
  }));
}

TEST_P(InEveryZone, TheWireKeepsEveryTask) {
  const Zone zone = ZoneNamed(GetParam());
  EXPECT_TRUE(rc::check([&] {
    const Task task = AnyTask();
    RC_LOG() << TaskToJson(task, 0);
    RC_ASSERT(TaskFromXml(ElementOf(TaskToXml(task)), zone) == task);
  }));
}

// What is in the normal form stays as it is.
TEST_P(InEveryZone, TheNormalFormIsOne) {
  const Zone zone = ZoneNamed(GetParam());
  EXPECT_TRUE(rc::check([&] {
    Appointment appointment = AnyAppointment(zone);
    if (appointment.series) EndWithin(appointment.series->pattern, *appointment.start);
    RC_LOG() << AppointmentToJson(appointment, 0);
    for (const SeriesEnd end : {SeriesEnd::kCount, SeriesEnd::kDay}) {
      const Appointment normal = Normalized(appointment, end);
      RC_ASSERT(Normalized(normal, end) == normal);
    }
  }));
}

// So a push of what has been pulled changes nothing.
TEST_P(InEveryZone, AFileIsTheSameToTheMappingAsTheRecord) {
  const Zone zone = ZoneNamed(GetParam());
  EXPECT_TRUE(rc::check([&] {
    Appointment appointment = AnyAppointment(zone);
    if (appointment.series) EndWithin(appointment.series->pattern, *appointment.start);
    Task task = AnyTask();
    if (!task.start && !task.due) task.pattern.reset();
    // A file has the time of a reminder in UTC, which an hour that was left out does not have.
    if (task.reminder && zone.ToLocal(zone.ToUtc(*task.reminder)) != *task.reminder) {
      task.reminder.reset();
    }
    if (task.pattern) EndWithin(*task.pattern, task.start ? *task.start : *task.due);
    appointment = Normalized(appointment, SeriesEnd::kCount);
    task = Normalized(task, SeriesEnd::kCount);
    appointment.uid = "one";
    task.uid = "two";
    RC_LOG() << AppointmentToJson(appointment, 0) << TaskToJson(task, 0);
    const formats::CalendarText text = formats::WriteICalendar({&appointment, 1}, {&task, 1}, zone);
    RC_LOG() << text.bytes;
    const formats::CalendarFile file = formats::ReadICalendar(text.bytes, zone);
    RC_ASSERT(file.appointments.size() == 1U);
    RC_LOG() << AppointmentToJson(file.appointments[0].appointment, 0);
    const Appointment read = Normalized(file.appointments[0].appointment, SeriesEnd::kCount);
    RC_ASSERT(AppointmentToXml(read, zone) == AppointmentToXml(appointment, zone));
    RC_ASSERT(file.tasks.size() == 1U);
    RC_ASSERT(TaskToXml(Normalized(file.tasks[0].task, SeriesEnd::kCount)) == TaskToXml(task));
  }));
}

INSTANTIATE_TEST_SUITE_P(Zones, InEveryZone, ::testing::ValuesIn(kZones), [](const auto& each) {
  std::string name = each.param;
  std::replace(name.begin(), name.end(), '/', '_');
  return name;
});

}  // namespace
}  // namespace desktop::testing
