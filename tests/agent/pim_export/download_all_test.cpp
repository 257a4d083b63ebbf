#include <gmock/gmock.h>

#include <algorithm>

#include "agent/pim_export/download_requests.h"
#include "handheld/base/fault.h"
#include "tests/support/call_filler.h"
#include "tests/support/message_filler.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class DownloadAll : public PimTest {
 protected:
  void AddContacts(int count) {
    for (int index = 1; index <= count; ++index) store_->AddNamed(Wide(std::to_string(index)));
  }
  static DownloadAnswer Run(DWORD kind) { return RunDownload(DownloadAllPIMRecords, Word(kind)); }
  // Records in each document.
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    return testing::Sizes(answer, {"<CONTACT ", "<Contact2 "});
  }
};

TEST_F(DownloadAll, SendsOnlyTheTrailerForAnEmptyFolder) {
  const StreamedAnswer answer = RunStreamed(DownloadAllPIMRecords, Word(1));
  EXPECT_EQ(answer.bytes, std::string(8, '\0'));
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadAll, SendsFiveRecordsToADocument) {
  AddContacts(12);
  const DownloadAnswer answer = Run(1);
  EXPECT_THAT(Sizes(answer), ElementsAre(5, 5, 2));
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadAll, SendsNoEmptyDocumentBehindAFullOne) {
  AddContacts(10);
  EXPECT_THAT(Sizes(Run(1)), ElementsAre(5, 5));
}

TEST_F(DownloadAll, SendsTheRecordsInTheFoldersOrder) {
  AddContacts(6);
  std::string all;
  for (const std::string& document : Run(1).documents) all += document;
  std::size_t at = 0;
  for (int index = 1; index <= 6; ++index) {
    at = all.find("<FIRST_NAME>" + std::to_string(index) + "<", at);
    ASSERT_NE(at, std::string::npos) << index;
  }
}

TEST_F(DownloadAll, SendsContactsInTheirSecondFormForKindThree) {
  AddContacts(1);
  const DownloadAnswer answer = Run(3);
  ASSERT_EQ(answer.documents.size(), 1u);
  EXPECT_THAT(answer.documents[0], HasSubstr("<Contact2 Oid=\"1\"><FIRST_NAME>1</FIRST_NAME>"));
}

TEST_F(DownloadAll, RefusesAnUnknownKindInTheTrailer) {
  for (const DWORD kind : {6u, 9u, 0xFFFFFFFFu}) ExpectOnlyTrailer(Run(kind), E_INVALIDARG);
}

TEST_F(DownloadAll, SendsTheCallLogForKindFour) {
  CallFiller(*handheld_).AddMany(2);
  const DownloadAnswer answer = Run(4);
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, S_OK);
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[0], HasSubstr("<root><Call><Number>1</Number>"));
}

TEST_F(DownloadAll, RefusesTheCallLogOnAHandheldWithoutATelephone) {
  handheld_->Set(u"Phone", DWORD{0});
  ExpectOnlyTrailer(Run(4), E_NOTIMPL);
}

TEST_F(DownloadAll, SendsTextMessagesForKindFive) {
  MessageFiller(*handheld_).AddMany(u"/Inbox", 2);
  const DownloadAnswer answer = Run(5);
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, S_OK);
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[1], HasSubstr("<NOTES>2</NOTES>"));
}

TEST_F(DownloadAll, RefusesTextMessagesWithoutAStoreForThem) {
  MessageFiller(*handheld_).RemoveSmsStore();
  ExpectOnlyTrailer(Run(5), E_NOTIMPL);
}

TEST_F(DownloadAll, FindsNothingInTheFoldersOfOtherKinds) {
  AddContacts(1);
  for (const DWORD kind : {0u, 2u}) ExpectOnlyTrailer(Run(kind), S_OK);
}

TEST_F(DownloadAll, RefusesAnInputOfAnotherSizeInTheTrailer) {
  AddContacts(1);
  for (const std::size_t size : {0u, 3u, 5u, 8u}) {
    std::string input = Word(1) + std::string(4, '\0');
    input.resize(size);
    ExpectOnlyTrailer(RunDownload(DownloadAllPIMRecords, input), E_INVALIDARG);
  }
}

TEST_F(DownloadAll, RefusesToRunWithoutAStream) {
  const std::string input = Word(1);
  EXPECT_EQ(DownloadAllPIMRecords(4, reinterpret_cast<const BYTE*>(input.data()), nullptr, nullptr,
                                  nullptr),
            E_INVALIDARG);
}

TEST_F(DownloadAll, EndsAtARecordThatFailsWithoutItsDocument) {
  AddContacts(7);
  const auto plan = FaultPlan::FailNthCall("IContact::get_LastName", 7, 0x80004005);
  const DownloadAnswer answer = Run(1);
  EXPECT_THAT(Sizes(answer), ElementsAre(5));
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, E_FAIL);
}

TEST_F(DownloadAll, AnswersAFailedLogonInTheTrailer) {
  const auto plan = FaultPlan::FailCalls("IPOutlookApp::Logon", 0x80004005);
  ExpectOnlyTrailer(Run(1), E_FAIL);
}

TEST_F(DownloadAll, AnswersAFailedInitialisationInTheTrailer) {
  const auto plan = FaultPlan::FailCalls("CoInitializeEx", 0x80004005);
  ExpectOnlyTrailer(Run(1), E_FAIL);
}

TEST_F(DownloadAll, AttemptsTheTrailerAlsoOnABrokenConnection) {
  AddContacts(6);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  const StreamedAnswer answer = RunStreamed(DownloadAllPIMRecords, Word(1));
  EXPECT_EQ(answer.bytes, "");
  // A document and the trailer, two writes each.
  EXPECT_EQ(plan.calls(), 4u);
  EXPECT_GE(answer.status, 0) << "a broken connection is no failure by its sign";
}

TEST_F(DownloadAll, ReadsNoMoreRecordsThanItKnowsToBeLost) {
  AddContacts(20);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  RunStreamed(DownloadAllPIMRecords, Word(1));
  EXPECT_EQ(plan.calls(), 4u);
}

TEST_F(DownloadAll, GoesOnForTheLogOnABrokenConnection) {
  AddContacts(12);
  SwitchLogOn();
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  RunStreamed(DownloadAllPIMRecords, Word(1));
  // Three documents and the trailer, two writes each.
  EXPECT_EQ(plan.calls(), 8u);
  const std::vector<std::string> messages = LogMessages();
  EXPECT_EQ(std::count(messages.begin(), messages.end(), "AddContactToXML returned 0"), 12);
}

TEST_F(DownloadAll, AnswersTheLastDocumentOnABrokenConnection) {
  for (const int more : {1, 4, 5}) {  // 1, 5 and 10 records
    AddContacts(more);
    const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
    EXPECT_EQ(Run(1).returned, static_cast<HRESULT>(WSAECONNRESET)) << more;
  }
}

TEST_F(DownloadAll, LogsOffInTheEnd) {
  const auto plan = FaultPlan::CountOnly("IPOutlookApp::Logoff");
  Run(1);
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(DownloadAll, SeesOneSnapshotOfTheFolder) {
  AddContacts(2);
  const DownloadAnswer before = Run(1);
  store_->AddNamed(u"late");
  EXPECT_THAT(Sizes(before), ElementsAre(2));
  EXPECT_THAT(Sizes(Run(1)), ElementsAre(3));
}

TEST_F(DownloadAll, LogsItsSteps) {
  AddContacts(1);
  SwitchLogOn();
  Run(1);
  EXPECT_THAT(
      LogMessages(),
      ElementsAre("DownloadAllPIMRecords", "Before Logon", "After get_Count hr = 0, nItems = 1",
                  "AddContactToXML", "Got LastName ", "after get_Body hr = 0x00000000",
                  "after get_BodyInk hr = 0x00000000", "after get_Birthday hr = 0x00000000",
                  "AddContactToXML returned 0", "Calling StreamXMLToDesktop",
                  "Exit DownloadAllPIMRecords hr = 0x00000000"));
}

TEST_F(DownloadAll, LogsAWrongInput) {
  SwitchLogOn();
  RunDownload(DownloadAllPIMRecords, "");
  EXPECT_THAT(LogMessages(),
              ElementsAre("DownloadAllPIMRecords", "Exit DownloadAllPIMRecords hr = 0x80070057"));
}

}  // namespace
}  // namespace corvane::testing
