// Appointments and tasks as they come, of all that a document can say.
//
// Left out is what no document tells: seconds of reminders, a reminder's time without a due date or
// of none with one, a whole day without a date, ink, and the day of completion; also an end that
// stands before its start in UTC, since clocks skip an hour. Categories begin with no blank, and
// texts have what an XML reader leaves as it is.
#pragma once

#include <rapidcheck.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/pattern.h"
#include "tests/support/item_store.h"

namespace corvane::testing {

inline constexpr int kSecondsPerDay = 86400;

// Local, in days since 1899-12-30 and seconds.
struct Moment {
  int day = 0;
  int second = 0;

  ce::DATE date() const { return day + static_cast<double>(second) / kSecondsPerDay; }
  Moment After(std::int64_t moreSeconds) const {
    const std::int64_t all = std::int64_t{day} * kSecondsPerDay + second + moreSeconds;
    return {static_cast<int>(all / kSecondsPerDay), static_cast<int>(all % kSecondsPerDay)};
  }
};

struct RandomTimes {
  bool allDay = false;
  Moment start;
  std::int64_t length = 0;  // seconds
};

struct RandomException {
  int occurrence = 0;  // from the first, which is 0
  bool deleted = false;
  RandomTimes times;
  std::u16string subject, location, body;
  ce::LONG busy = 0;
};

struct RandomPattern {
  calendar::Pattern pattern;  // without its end
  int ending = 0;             // none, by a number of occurrences, by a date
  int occurrences = 1;
  int daysBehindLast = 0;
  std::vector<RandomException> exceptions;
};

struct RandomAppointment {
  RandomTimes times;
  std::u16string subject, location, categories, body;
  ce::LONG busy = 0;
  ce::LONG sensitivity = 0;
  std::optional<ce::LONG> reminder;
  std::optional<RandomPattern> series;
};

struct RandomTask {
  std::u16string subject, categories, body;
  std::optional<int> start, due;
  std::optional<ce::LONG> reminder;  // minutes before the due date
  ce::LONG sensitivity = 0;
  ce::LONG importance = 0;
  bool complete = false;
  std::optional<RandomPattern> series;
};

// To be called within a property. The handheld's zone decides on the times of an appointment.
RandomAppointment AnyAppointment();
RandomTask AnyTask();

// Of full variety also in the first cases.
template <typename Random>
std::vector<Random> Some(Random (*any)()) {
  constexpr std::size_t kItems = 20;
  return *rc::gen::resize(rc::kNominalSize,
                          rc::gen::container<std::vector<Random>>(kItems, rc::gen::exec(any)));
}

// Puts the item into the store, unless its series would begin behind the last day.
void StoreRandom(AppointmentStore& store, const RandomAppointment& random);
void StoreRandom(TaskStore& store, const RandomTask& random);

}  // namespace corvane::testing
