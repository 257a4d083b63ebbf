#include "agent/pim_export/delete_request.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/support/message_filler.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;

class DeleteAll : public PimTest {
 protected:
  void SetUp() override {
    for (const auto* name : {u"1", u"2", u"3"}) store_->AddNamed(name);
  }
  static HRESULT Run(const std::string& input, CorvaneStream* stream = nullptr) {
    DWORD outputCount = 0;
    BYTE* output = nullptr;
    const HRESULT status = DeleteAllPIMRecords(static_cast<DWORD>(input.size()),
                                               reinterpret_cast<const BYTE*>(input.data()),
                                               &outputCount, &output, stream);
    EXPECT_EQ(outputCount, 0u);
    EXPECT_EQ(output, nullptr);
    return status;
  }
  std::size_t Left() { return store_->Oids().size(); }
};

TEST_F(DeleteAll, EmptiesTheFolderForEitherKindOfContacts) {
  EXPECT_EQ(Run(Word(1)), S_OK);
  EXPECT_EQ(Left(), 0u);
  store_->AddNamed(u"4");
  EXPECT_EQ(Run(Word(3)), S_OK);
  EXPECT_EQ(Left(), 0u);
}

TEST_F(DeleteAll, SucceedsOnAnEmptyFolder) {
  EXPECT_EQ(Run(Word(1)), S_OK);
  EXPECT_EQ(Run(Word(1)), S_OK);
}

TEST_F(DeleteAll, LogsOffInTheEnd) {
  const auto plan = FaultPlan::CountOnly("IPOutlookApp::Logoff");
  EXPECT_EQ(Run(Word(1)), S_OK);
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(DeleteAll, LeavesContactsAloneForTheFoldersOfOtherKinds) {
  EXPECT_EQ(Run(Word(0)), S_OK);
  EXPECT_EQ(Run(Word(2)), S_OK);
  EXPECT_EQ(Left(), 3u);
}

TEST_F(DeleteAll, CannotEmptyTheCallLog) {
  EXPECT_EQ(Run(Word(4)), E_NOTIMPL);
}

TEST_F(DeleteAll, DeletesTextMessagesAndNothingElse) {
  MessageFiller filler(*handheld_);
  filler.AddMany(u"/Inbox", 3);
  EXPECT_EQ(Run(Word(5)), S_OK);
  EXPECT_EQ(filler.Count(u"/Inbox"), 0);
  EXPECT_EQ(Left(), 3u);
}

TEST_F(DeleteAll, CannotDeleteTextMessagesWithoutAStoreForThem) {
  MessageFiller(*handheld_).RemoveSmsStore();
  EXPECT_EQ(Run(Word(5)), E_NOTIMPL);
}

TEST_F(DeleteAll, SucceedsForAnUnknownKindWithoutTouchingAnything) {
  for (const DWORD kind : {6u, 9u, 0xFFFFFFFFu}) EXPECT_EQ(Run(Word(kind)), S_OK);
  EXPECT_EQ(Left(), 3u);
}

TEST_F(DeleteAll, RefusesAnInputOfAnotherSize) {
  EXPECT_EQ(Run(""), E_INVALIDARG);
  EXPECT_EQ(Run(Word(1).substr(0, 3)), E_INVALIDARG);
  EXPECT_EQ(Run(Words({1, 1})), E_INVALIDARG);
  EXPECT_EQ(Left(), 3u);
}

TEST_F(DeleteAll, RefusesAStreamAndClosesIt) {
  DesktopEnd desktop;
  CorvaneStream stream;
  stream.Attach(desktop.socket());
  EXPECT_EQ(Run(Word(1), &stream), E_INVALIDARG);
  EXPECT_EQ(desktop.Received(), "");
  EXPECT_EQ(Left(), 3u);
}

TEST_F(DeleteAll, StopsAtTheFirstFailureFromTheEnd) {
  {
    const auto plan = FaultPlan::FailNthCall("IContact::Delete", 2, 0x80004005);
    EXPECT_EQ(Run(Word(1)), E_FAIL);
  }
  EXPECT_THAT(store_->Oids(), ElementsAre(1, 2));
}

TEST_F(DeleteAll, AnswersAFailedLogon) {
  const auto plan = FaultPlan::FailCalls("IPOutlookApp::Logon", 0x80004005);
  EXPECT_EQ(Run(Word(1)), E_FAIL);
}

TEST_F(DeleteAll, LogsItsSteps) {
  SwitchLogOn();
  EXPECT_EQ(Run(Word(1)), S_OK);
  EXPECT_THAT(LogMessages(),
              ElementsAre("DeleteAllPIMRecords", "Before Logon",
                          "After get_Count hr = 0, nItems = 3", "Exit DeleteAllPIMRecords"));
}

}  // namespace
}  // namespace corvane::testing
