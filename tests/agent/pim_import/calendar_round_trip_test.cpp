// Appointments and tasks, down and up again: the same document byte for byte.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "agent/pim_export/download_requests.h"
#include "tests/agent/pim_import/random_calendar.h"
#include "tests/support/calendar_upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;

constexpr DWORD kAppointments = 0;
constexpr DWORD kTasks = 2;
const char* const kZones[] = {"Europe/Berlin", "America/New_York", "Australia/Sydney",
                              "Asia/Tokyo",    "Asia/Kolkata",     "UTC"};

// A handheld's own terms.
struct Place {
  std::string zone;
  DWORD major;
};

std::vector<std::string> Download(DWORD kind) {
  return RunDownload(DownloadAllPIMRecords, Word(kind)).documents;
}

// Calls `test` on a handheld that is there, whose days all are the same.
template <typename Case>
void OnAHandheld(const Place& place, DWORD firstOid, Case test) {
  ce::host::HandheldSettings settings;
  settings.firstOid = firstOid;
  settings.zone = place.zone;
  settings.osMajor = place.major;
  TestHandheld handheld(settings);
  handheld.FreezeClock(SYSTEMTIME{2024, 3, 0, 15, 12, 0, 0, 0});
  ResetTimeZoneCache();
  test();
  ResetTimeZoneCache();
}

// What one handheld says is what it says after it was told, and what another one says.
void ExpectSame(const Place& place, const std::vector<RandomAppointment>& appointments,
                const std::vector<RandomTask>& tasks) {
  std::vector<std::string> documents;
  OnAHandheld(place, 1, [&] {
    {
      AppointmentStore store;
      for (const RandomAppointment& random : appointments) StoreRandom(store, random);
      TaskStore taskStore;
      for (const RandomTask& random : tasks) StoreRandom(taskStore, random);
    }
    for (const DWORD kind : {kAppointments, kTasks}) {
      const auto before = Download(kind);
      ExpectAllStored(before);
      RC_ASSERT(Download(kind) == before);
      documents.insert(documents.end(), before.begin(), before.end());
    }
  });
  OnAHandheld(place, 1'000'000, [&] {
    ExpectAllStored(documents);
    auto after = Download(kAppointments);
    const auto afterTasks = Download(kTasks);
    after.insert(after.end(), afterTasks.begin(), afterTasks.end());
    RC_ASSERT(WithoutOids(after) == WithoutOids(documents));
  });
}

Place AnyPlace() {
  return {*rc::gen::elementOf(std::vector<std::string>(std::begin(kZones), std::end(kZones))),
          *rc::gen::element<DWORD>(4, 5)};
}

RC_GTEST_PROP(CalendarRoundTrip, KeepsAppointmentsByteForByte, ()) {
  const Place place = AnyPlace();
  std::vector<RandomAppointment> appointments;
  OnAHandheld(place, 1, [&] { appointments = Some(AnyAppointment); });
  ExpectSame(place, appointments, {});
}

RC_GTEST_PROP(CalendarRoundTrip, KeepsTasksByteForByte, ()) {
  ExpectSame(AnyPlace(), {}, Some(AnyTask));
}

class CalendarTrip : public CalendarUpload {};

TEST_F(CalendarTrip, KeepsTimesThatAreMissing) {
  for (const auto& [start, end] :
       {std::pair(kNoDate, kNoDate), {39493.5, kNoDate}, {kNoDate, 39493.5}}) {
    appointments().Add([start = start, end = end](IAppointment& item) {
      EXPECT_EQ(item.put_Start(start), S_OK);
      EXPECT_EQ(item.put_End(end), S_OK);
    });
  }
  const auto before = Download(kAppointments);
  ExpectAllStored(before);
  EXPECT_EQ(Download(kAppointments), before);
  EXPECT_EQ(Occurrences(before.at(0), "<EVENT_START>"), 1u);
}

TEST_F(CalendarTrip, KeepsASeriesAtAnHourThatClocksSkip) {
  UseZone("Europe/Berlin");
  appointments().Add([](IAppointment& item) {
    EXPECT_EQ(item.put_Start(DateOf(2008, 3, 28, 2, 30)), S_OK);
    EXPECT_EQ(PatternOf(item)->put_RecurrenceType(olRecursDaily), S_OK);
    EXPECT_EQ(item.Save(), S_OK);
    const auto at = [&](int day) {
      ComPtr<IAppointment> occurrence;
      EXPECT_EQ(PatternOf(item)->GetOccurrence(DateOf(2008, 3, day, 2, 30), occurrence.put()),
                S_OK);
      return occurrence;
    };
    EXPECT_EQ(at(30)->Delete(), S_OK);
    const auto moved = at(31);
    EXPECT_EQ(moved->put_Start(DateOf(2008, 3, 30, 2, 30)), S_OK);
    EXPECT_EQ(moved->Save(), S_OK);
  });
  const auto before = Download(kAppointments);
  ExpectAllStored(before);
  EXPECT_EQ(Download(kAppointments), before);
  EXPECT_EQ(Occurrences(before.at(0), "20080330T003000"), 1u);
  EXPECT_EQ(Occurrences(before.at(0), "<DeletedException>20080330T000000"), 1u);
}

TEST_F(CalendarTrip, KeepsTheDayOfCompletionOfATaskThatIsThere) {
  const LONG oid = tasks().Add([](ITask& task) {
    EXPECT_EQ(task.put_Complete(VARIANT_TRUE), S_OK);
    EXPECT_EQ(task.put_DateCompleted(DateOf(2007, 1, 2)), S_OK);
  });
  const auto before = Download(kTasks);
  ExpectAllStored(before);
  EXPECT_EQ(Download(kTasks), before);
  EXPECT_EQ(DateTextOf(*tasks().Get(oid).get(), &ITask::get_DateCompleted), "2007-01-02 00:00:00");
}

TEST_F(CalendarTrip, KeepsInkOfAnItemThatIsThere) {
  appointments().Add([](IAppointment& item) { SetInk(item, kInkNote); });
  tasks().Add([](ITask& item) { SetInk(item, kInkNote); });
  for (const DWORD kind : {kAppointments, kTasks}) {
    const auto before = Download(kind);
    ExpectAllStored(before);
    EXPECT_EQ(Download(kind), before);
    EXPECT_EQ(Occurrences(before.at(0), "<BodyInk>TRUE</BodyInk>"), 1u);
  }
}

}  // namespace
}  // namespace corvane::testing
