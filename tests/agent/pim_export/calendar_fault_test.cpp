#include <gtest/gtest.h>

#include "agent/pim_export/delete_request.h"
#include "agent/pim_export/download_requests.h"
#include "handheld/base/com_object.h"
#include "tests/support/fault_runs.h"
#include "tests/support/sample_calendar.h"

namespace corvane::testing {
namespace {

using namespace ce;

// Their failure leaves a positive last error, which is no failure by its sign, or is forgiven: what
// they were to make is missing from the document.
bool MayLeaveSomethingOut(const std::string& call) {
  return call.starts_with("SysAllocString") || call.starts_with("GetDateFormat") ||
         call.starts_with("GetTimeFormat") || call.starts_with("SystemTimeToFileTime") ||
         call.starts_with("FileTimeToSystemTime") || call == "GetTimeZoneInformation" ||
         call == "GetVersionExW" || call == "IAppointment::get_Body";
}

bool IsOfTheConnection(const std::string& call) {
  return call == "send" || call == "closesocket";
}

class CalendarFaults : public CalendarTest {
 protected:
  void SetUp() override {
    UseZone("Europe/Berlin");
    AddSeries(appointments());
    appointments().Add([](IAppointment& item) {
      EXPECT_EQ(item.put_Start(DateOf(2008, 2, 15)), S_OK);
      EXPECT_EQ(item.put_AllDayEvent(VARIANT_TRUE), S_OK);
      EXPECT_EQ(item.put_Duration(1440), S_OK);
    });
    tasks().Add([](ITask& item) {
      FillFully(item);
      MakeWeekly(item, 6);
    });
    for (int index = 0; index < 4; ++index) {
      appointments().AddNamed(u"plain");
      tasks().AddNamed(u"plain");
    }
  }

  // The deleted occurrence that cannot be written is left out, whatever made it fail.
  static std::string WithoutDeleted(std::string record) {
    for (const std::string_view deleted :
         {"<DeletedException>20080303T000000</DeletedException>", "<DeletedException/>"}) {
      const std::size_t at = record.find(deleted);
      if (at != std::string::npos) record.erase(at, deleted.size());
    }
    return record;
  }

  // A document is one of the whole download's, or has an error, or lacks what failed unnoticed.
  static void ExpectHonest(const DownloadAnswer& answer, const DownloadAnswer& whole,
                           const std::string& call) {
    if (IsOfTheConnection(call)) return;
    ASSERT_TRUE(answer.complete) << "every download ends with its trailer";
    EXPECT_EQ(answer.status, answer.returned);
    ASSERT_LE(answer.documents.size(), whole.documents.size());
    if (answer.status >= 0) {
      EXPECT_EQ(answer.documents.size(), whole.documents.size());
    }
    if (MayLeaveSomethingOut(call)) return;
    for (std::size_t index = 0; index < answer.documents.size(); ++index) {
      const std::string& document = answer.documents[index];
      if (Occurrences(document, "<Error ") > 0) continue;
      EXPECT_EQ(WithoutDeleted(Body(document)), WithoutDeleted(Body(whole.documents[index])))
          << "only a declaration may be missing";
    }
  }

  template <typename Run>
  void ExpectHonestWhicheverCallFails(Run run) {
    const DownloadAnswer whole = run();
    ASSERT_TRUE(whole.complete);
    ASSERT_EQ(whole.status, S_OK);
    const LONG objects = host::LiveComObjects();
    const auto calls = FailEachCall(
        ERROR_NOT_ENOUGH_MEMORY,
        [&] {
          ResetTimeZoneCache();
          return run();
        },
        [&](const DownloadAnswer& answer, const std::string& call) {
          ExpectHonest(answer, whole, call);
          EXPECT_EQ(host::LiveComObjects(), objects);
          if (call.empty()) {
            EXPECT_EQ(answer.documents, whole.documents);
          }
        });
    EXPECT_GT(calls, 300u);
  }

  template <typename Store>
  void ExpectHonestDeletion(DWORD kind, Store& store) {
    const LONG objects = host::LiveComObjects();
    const std::size_t count = store.Oids().size();
    const std::string input = Word(kind);
    const auto run = [&] {
      return DeleteAllPIMRecords(4, reinterpret_cast<const BYTE*>(input.data()), nullptr, nullptr,
                                 nullptr);
    };
    const auto calls =
        FailEachCall(ERROR_DISK_FULL, run, [&](HRESULT status, const std::string& call) {
          const std::size_t left = store.Oids().size();
          if (status >= 0) {
            EXPECT_EQ(left, 0u);
          }
          if (call.empty()) {
            EXPECT_EQ(status, S_OK);
          }
          EXPECT_EQ(host::LiveComObjects(), objects);
          for (std::size_t have = left; have < count; ++have) store.AddNamed(u"again");
        });
    EXPECT_GT(calls, 20u);
  }
};

TEST_F(CalendarFaults, DownloadOfAppointmentsEndsHonestly) {
  ExpectHonestWhicheverCallFails([] { return RunDownload(DownloadAllPIMRecords, Word(0)); });
}

TEST_F(CalendarFaults, DownloadOfTasksEndsHonestly) {
  ExpectHonestWhicheverCallFails([] { return RunDownload(DownloadAllPIMRecords, Word(2)); });
}

TEST_F(CalendarFaults, DownloadOfChosenAppointmentsEndsHonestly) {
  std::string input = Word(0);
  for (const LONG oid : appointments().Oids()) input += Word(static_cast<DWORD>(oid));
  ExpectHonestWhicheverCallFails([&] { return RunDownload(DownloadSpecificPIMRecords, input); });
}

TEST_F(CalendarFaults, DeletionTellsWhetherTheFoldersAreEmpty) {
  ExpectHonestDeletion(0, appointments());
  ExpectHonestDeletion(2, tasks());
}

}  // namespace
}  // namespace corvane::testing
