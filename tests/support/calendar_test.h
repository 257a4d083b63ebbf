// What the tests of appointments and tasks share.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "agent/time/zone.h"
#include "tests/support/item_store.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {

inline constexpr std::string_view kInkNote{"{\\pwi\x01\x02\x03", 8};

// A handheld with its appointments and tasks, in a zone of the test's choice.
class CalendarTest : public PimTest {
 protected:
  CalendarTest() { ResetTimeZoneCache(); }

  void TearDown() override {
    appointments_.reset();
    tasks_.reset();
    ResetTimeZoneCache();
    PimTest::TearDown();
  }
  void UseZone(const std::string& name) {
    handheld_.SetZone(name);
    ResetTimeZoneCache();
  }
  AppointmentStore& appointments() {
    if (!appointments_) appointments_ = std::make_unique<AppointmentStore>();
    return *appointments_;
  }
  TaskStore& tasks() {
    if (!tasks_) tasks_ = std::make_unique<TaskStore>();
    return *tasks_;
  }

 private:
  std::unique_ptr<AppointmentStore> appointments_;
  std::unique_ptr<TaskStore> tasks_;
};

}  // namespace corvane::testing
