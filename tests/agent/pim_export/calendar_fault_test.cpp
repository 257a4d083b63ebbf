#include "agent/pim_export/download_requests.h"
#include "tests/support/download_faults.h"
#include "tests/support/sample_calendar.h"

namespace corvane::testing {
namespace {

using namespace ce;

// Of these the failure is a positive code, or forgiven.
bool MayLeaveSomethingOut(const std::string& call) {
  return LeavesATextOut(call) || call.starts_with("SystemTimeToFileTime") ||
         call == "GetTimeZoneInformation" || call == "GetVersionExW" ||
         call == "IAppointment::get_Body";
}

class CalendarExportFaults : public CalendarTest {
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

  template <typename Run>
  static void ExpectHonestWhicheverCallFails(Run run) {
    EXPECT_GT(ExpectHonestDownload({.run =
                                        [&] {
                                          ResetTimeZoneCache();
                                          return run();
                                        },
                                    .mayLack = MayLeaveSomethingOut,
                                    .compared = WithoutDeleted}),
              300u);
  }

  template <typename Store>
  void ExpectHonestDeletionOf(DWORD kind, Store& store) {
    const std::size_t count = store.Oids().size();
    ExpectHonestDeletion([&] { return DeleteKind(kind); }, [&] { return store.Oids().size(); },
                         [&] {
                           while (store.Oids().size() < count) store.AddNamed(u"again");
                         });
  }
};

TEST_F(CalendarExportFaults, DownloadOfAppointmentsEndsHonestly) {
  ExpectHonestWhicheverCallFails([] { return RunDownload(DownloadAllPIMRecords, Word(0)); });
}

TEST_F(CalendarExportFaults, DownloadOfTasksEndsHonestly) {
  ExpectHonestWhicheverCallFails([] { return RunDownload(DownloadAllPIMRecords, Word(2)); });
}

TEST_F(CalendarExportFaults, DownloadOfChosenAppointmentsEndsHonestly) {
  const std::string input = ChosenRecords(0, appointments().Oids());
  ExpectHonestWhicheverCallFails([&] { return RunDownload(DownloadSpecificPIMRecords, input); });
}

TEST_F(CalendarExportFaults, DeletionTellsWhetherTheFoldersAreEmpty) {
  ExpectHonestDeletionOf(0, appointments());
  ExpectHonestDeletionOf(2, tasks());
}

}  // namespace
}  // namespace corvane::testing
