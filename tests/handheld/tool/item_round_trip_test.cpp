// Whatever a record holds, the item that it becomes gives it back.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>

#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using formats::Appointment;
using formats::local_days;
using formats::Occurrence;
using formats::Series;
using formats::Task;
using std::chrono::days;
using std::chrono::seconds;

rc::Gen<std::string> AnyText() {
  const auto piece =
      rc::gen::element<std::string>("a", "Z", " ", "\n", "\t", ",", ";", "\\", "\"", "\x01",
                                    "\xC3\xA4", "\xE5\xB1\xB1", "\xF0\x9F\x98\x80", "end ");
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text;
    for (const std::string& each : pieces) text += each;
    return text;
  });
}

rc::Gen<std::vector<std::string>> AnyCategories() {
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(
                          rc::gen::element<std::string>("Work", "At home", "\xC3\x84rger", "x;y")),
                      [](std::vector<std::string> names) {
                        std::sort(names.begin(), names.end());
                        names.erase(std::unique(names.begin(), names.end()), names.end());
                        return names;
                      });
}

local_days AnyDay() {
  return calendar::kFirstDay +
         days{*rc::gen::inRange(
             0, static_cast<int>((calendar::kLastDay - calendar::kFirstDay).count()))};
}

std::optional<local_days> PerhapsADay() {
  return *rc::gen::arbitrary<bool>() ? std::optional(AnyDay()) : std::nullopt;
}

// Within the years that there are, whatever it lasts.
void SetTimes(Occurrence& occurrence, local_days day) {
  occurrence.allDay = *rc::gen::arbitrary<bool>();
  if (occurrence.allDay) {
    occurrence.start = day;
    occurrence.end = day + days{*rc::gen::inRange(1, 40)};
    return;
  }
  occurrence.start = day + seconds{*rc::gen::inRange(0, 86400)};
  occurrence.end = *occurrence.start + seconds{*rc::gen::inRange(0, 300000)};
  const formats::local_seconds last = calendar::kLastDay + seconds{86399};
  occurrence.end = std::min(*occurrence.end, last);
}

void SetFields(Occurrence& occurrence, local_days day) {
  occurrence.subject = *AnyText();
  occurrence.location = *AnyText();
  occurrence.body = *AnyText();
  occurrence.busyStatus = *rc::gen::inRange(0, 5);
  SetTimes(occurrence, day);
}

Pattern AnyPattern(local_days start) {
  Pattern pattern = calendar::PatternFrom(
      *rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly,
                        PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth),
      start);
  if (pattern.type <= PatternType::kMonthNth) pattern.interval = *rc::gen::inRange(1, 15);
  if (pattern.daysOfWeek) pattern.daysOfWeek = *rc::gen::inRange(1, 128);
  if (pattern.dayOfMonth) pattern.dayOfMonth = *rc::gen::inRange(1, 32);
  if (pattern.instance) pattern.instance = *rc::gen::inRange(1, 6);
  if (pattern.monthOfYear) pattern.monthOfYear = *rc::gen::inRange(1, 13);
  return pattern;
}

// The first days of the series.
std::vector<local_days> DaysOf(const Pattern& pattern, local_days start) {
  const calendar::SeriesDays days(pattern, start);
  std::vector<local_days> found;
  for (int n = 0; n < 20 && n < days.size(); ++n) found.push_back(days[n]);
  return found;
}

// Ends, if at all, with one of its first days.
Pattern AnyEndingPattern(local_days start) {
  Pattern pattern = AnyPattern(start);
  const std::vector<local_days> walked = DaysOf(pattern, start);
  RC_PRE(!walked.empty());
  if (*rc::gen::arbitrary<bool>()) pattern.until = *rc::gen::elementOf(walked);
  return pattern;
}

Series AnySeries(local_days start) {
  Series series;
  series.pattern = AnyEndingPattern(start);
  for (const local_days day : DaysOf(series.pattern, start)) {
    const int fate = *rc::gen::inRange(0, 6);
    if (fate == 0) series.deleted.push_back(day);
    if (fate != 1) continue;
    formats::ChangedOccurrence& changed = series.changed.emplace_back();
    changed.original = day;
    SetFields(changed.occurrence, AnyDay());
  }
  return series;
}

Appointment AnyAppointment() {
  Appointment appointment;
  const local_days day = AnyDay();
  SetFields(appointment, day);
  appointment.categories = *AnyCategories();
  appointment.isPrivate = *rc::gen::arbitrary<bool>();
  if (*rc::gen::arbitrary<bool>()) appointment.reminderMinutes = *rc::gen::inRange(-60, 20000);
  if (*rc::gen::arbitrary<bool>()) appointment.series = AnySeries(day);
  return appointment;
}

Task AnyTask() {
  Task task;
  task.subject = *AnyText();
  task.body = *AnyText();
  task.categories = *AnyCategories();
  task.start = PerhapsADay();
  task.due = PerhapsADay();
  if (*rc::gen::arbitrary<bool>()) task.reminder = AnyDay() + seconds{*rc::gen::inRange(0, 86400)};
  task.isPrivate = *rc::gen::arbitrary<bool>();
  task.complete = *rc::gen::arbitrary<bool>();
  if (task.complete) task.completed = PerhapsADay();
  task.importance = *rc::gen::element(formats::Importance::kLow, formats::Importance::kNormal,
                                      formats::Importance::kHigh);
  if (task.start || task.due)
    if (*rc::gen::arbitrary<bool>())
      task.pattern = AnyEndingPattern(task.start.value_or(*task.due));
  return task;
}

class Store : public ItemTest {
 public:
  void TestBody() override {}

  // Stores the first record as a new item, then the second over it.
  template <typename Record>
  void Check(const std::array<Record, 2>& records) {
    const auto item = New<Record>();
    for (const Record& record : records) {
      const NotKept notKept = StoreIn(record, *item.get());
      RC_ASSERT(notKept.empty());
      const bool same = OnlyRecord<Record>(*session_) == record;
      RC_ASSERT(same);
    }
  }
};

RC_GTEST_PROP(ItemRoundTrip, GivesAppointmentsBack, ()) {
  const std::array<Appointment, 2> appointments{AnyAppointment(), AnyAppointment()};
  Store().Check(appointments);
}

RC_GTEST_PROP(ItemRoundTrip, GivesTasksBack, ()) {
  const std::array<Task, 2> tasks{AnyTask(), AnyTask()};
  Store().Check(tasks);
}

}  // namespace
}  // namespace tool::testing
