#include "agent/pim_import/record_group.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "agent/pim_import/upload_request.h"
#include "tests/support/calendar_upload_runs.h"
#include "tests/support/file_size_limit.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const HRESULT kDiskFull = static_cast<HRESULT>(0x80070070);

std::string Contacts(std::size_t count) {
  std::string records;
  while (count-- > 0) records += ContactRecord("<FIRST_NAME>a</FIRST_NAME>");
  return records;
}

class RecordGroups : public CalendarUpload {
 protected:
  static std::size_t Commits(const std::vector<std::string>& documents) {
    const auto plan = FaultPlan::CountOnly("sqlite3_step:commit");
    Upload(documents);
    return plan.calls();
  }
};

TEST_F(RecordGroups, EndWithTheirChunk) {
  EXPECT_EQ(Commits({RootOf(Contacts(3))}), 1u);
  EXPECT_EQ(Commits({RootOf(Contacts(3)), RootOf(Contacts(2))}), 2u);
}

TEST_F(RecordGroups, AreBounded) {
  EXPECT_GE(Commits({RootOf(Contacts(2 * RecordGroup::kMostRecords + 1))}), 3u);
  EXPECT_THAT(store_->Oids(), SizeIs(2 * RecordGroup::kMostRecords + 1));
}

TEST_F(RecordGroups, AnswerNothingBeforeTheirCommit) {
  const auto plan = FaultPlan::CountOnly();
  Upload({RootOf(Contacts(3))});
  const auto calls = plan.names();
  const auto commit = std::ranges::find(calls, "sqlite3_step:commit");
  ASSERT_NE(commit, calls.end());
  EXPECT_EQ(std::count(calls.begin(), commit, "send"), 0);
  EXPECT_EQ(std::count(commit, calls.end(), "send"), 1);
}

TEST_F(RecordGroups, AnswerRecordsThatChangeNothing) {
  EXPECT_EQ(Commits({RootOf(ContactRecord("", "Oid='7' Delete='1'"))}), 0u);
  EXPECT_THAT(Upload({RootOf(ContactRecord("", "Oid='7' Delete='1'"))}).replies,
              ElementsAre(RecordReply{7, S_OK}));
}

TEST_F(RecordGroups, HoldASeriesWithAllItsExceptions) {
  const auto plan = FaultPlan::CountOnly("sqlite3_step:commit");
  const ComPtr<IAppointment> series =
      AddedAppointment(TimedEvent() + Recurring(Daily(Element("DeletedException", "20080216") +
                                                      Element("DeletedException", "20080217"))));
  EXPECT_EQ(plan.calls(), 1u);
  EXPECT_THAT(ExceptionsOf(*series.get()), SizeIs(2));
}

TEST_F(RecordGroups, AreAppliedRecordByRecordWhenTheyCannotBeCommitted) {
  for (const char* call : {"IPOutlookApp::BeginTransaction", "IPOutlookApp::CommitTransaction",
                           "sqlite3_step:commit"}) {
    for (const LONG oid : store_->Oids()) store_->Delete(oid);
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_DISK_FULL);
    const UploadAnswer answer = Upload({RootOf(Contacts(3))});
    EXPECT_EQ(answer.status, S_OK);
    std::vector<LONG> oids;
    for (const RecordReply& reply : answer.replies) {
      EXPECT_EQ(reply.result, S_OK) << call;
      oids.push_back(reply.oid);
    }
    EXPECT_THAT(oids, SizeIs(3));
    EXPECT_EQ(store_->Oids(), oids) << call;
  }
}

TEST_F(RecordGroups, SayWhatCouldNotBeStored) {
  const LONG deleted = store_->AddNamed(u"old");
  const LONG changed = store_->AddNamed(u"old");
  const std::string name = "<FIRST_NAME>new</FIRST_NAME>";
  const auto plan = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
  const UploadAnswer answer = Upload({RootOf(
      ContactRecord("", OidTag(deleted) + " Delete='1'") + ContactRecord(name, OidTag(changed)) +
      ContactRecord(name) + ContactRecord("<BIRTHDAY>soon</BIRTHDAY>"))});
  EXPECT_THAT(answer.replies,
              ElementsAre(RecordReply{deleted, kDiskFull}, RecordReply{0, kDiskFull},
                          RecordReply{0, kDiskFull}, RecordReply{0, E_INVALIDARG}));
  EXPECT_THAT(store_->Oids(), ElementsAre(deleted, changed));
  EXPECT_EQ(store_->Text(changed, &IContact::get_FirstName), u"old");
}

TEST_F(RecordGroups, StoreWhatADiskThatRunsFullHasRoomFor) {
  const std::string small = ContactRecord("<FIRST_NAME>a</FIRST_NAME>");
  const std::string large = ContactRecord("<NOTES>" + std::string(30'000, 'x') + "</NOTES>");
  const LONG before = store_->AddNamed(u"old");  // which keeps the log of the store open
  const FileSizeLimit limit(file_size(handheld_.directory() / "store.db-wal") + 25'000);
  const UploadAnswer answer = Upload({RootOf(small + large + small)});
  ASSERT_THAT(answer.replies, SizeIs(3));
  EXPECT_EQ(answer.replies[0].result, S_OK);
  EXPECT_LT(answer.replies[1].result, 0);
  EXPECT_EQ(answer.replies[1].oid, 0);
  EXPECT_EQ(answer.replies[2].result, S_OK);
  EXPECT_THAT(store_->Oids(), ElementsAre(before, answer.replies[0].oid, answer.replies[2].oid));
}

TEST_F(RecordGroups, KeepWhatCameBeforeTheTreeCouldNotBeWalked) {
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::get_nextSibling", 1, 0x80004005);
  const UploadAnswer answer = Upload({RootOf("<CONTACT/><CONTACT/>")});
  EXPECT_LT(answer.status, 0);
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
  EXPECT_THAT(store_->Oids(), ElementsAre(1));
}

}  // namespace
}  // namespace corvane::testing
