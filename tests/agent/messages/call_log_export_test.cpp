#include "agent/messages/call_log_export.h"

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"
#include "handheld/system/memory.h"
#include "tests/agent/messages/call_log_support.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredCall;
using ::testing::ElementsAre;

using CallLogExport = CallLogTest;

TEST_F(CallLogExport, SendsOnlyTheTrailerForAnEmptyLog) {
  ExpectOnlyTrailer(Export(), S_OK);
}

TEST_F(CallLogExport, SendsTheFirstAloneAndFortyToADocumentBehindIt) {
  const auto sizesOf = [this](int calls) {
    EXPECT_EQ(filler_->box().Clear(), S_OK);
    filler_->AddMany(calls);
    const DownloadAnswer answer = Export();
    EXPECT_EQ(answer.status, S_OK);
    return Sizes(answer);
  };
  EXPECT_THAT(sizesOf(1), ElementsAre(1));
  EXPECT_THAT(sizesOf(2), ElementsAre(1, 1));
  EXPECT_THAT(sizesOf(40), ElementsAre(1, 39));
  EXPECT_THAT(sizesOf(41), ElementsAre(1, 40));
  EXPECT_THAT(sizesOf(42), ElementsAre(1, 40, 1));
  EXPECT_THAT(sizesOf(81), ElementsAre(1, 40, 40));
  EXPECT_THAT(sizesOf(82), ElementsAre(1, 40, 40, 1));
}

TEST_F(CallLogExport, SendsTheNewestFirst) {
  filler_->AddMany(3);
  std::string all;
  for (const std::string& document : Export().documents) all += document;
  EXPECT_LT(all.find("<Number>1<"), all.find("<Number>2<"));
  EXPECT_LT(all.find("<Number>2<"), all.find("<Number>3<"));
}

TEST_F(CallLogExport, LeavesTheLogAsItIs) {
  filler_->AddMany(2);
  const std::vector<StoredCall> before = filler_->Calls();
  Export();
  EXPECT_EQ(filler_->Calls(), before);
}

TEST_F(CallLogExport, AnswersNotImplementedWithoutATelephone) {
  filler_->AddMany(1);
  handheld_->Set(u"Phone", DWORD{0});
  ExpectOnlyTrailer(Export(), E_NOTIMPL);
}

TEST_F(CallLogExport, AnswersNotImplementedWhenTheLibraryCannotBeLoaded) {
  const auto plan = FaultPlan::FailCalls("LoadLibraryW", ERROR_NOT_ENOUGH_MEMORY);
  ExpectOnlyTrailer(Export(), E_NOTIMPL);
}

TEST_F(CallLogExport, AnswersNotImplementedWhenTheLibraryLacksAFunction) {
  filler_->AddMany(1);
  for (std::uint64_t n = 1; n <= 4; ++n) {
    const auto plan = FaultPlan::FailNthCall("GetProcAddressW", n, ERROR_PROC_NOT_FOUND);
    ExpectOnlyTrailer(Export(), E_NOTIMPL);
    EXPECT_TRUE(plan.fired());
    EXPECT_EQ(plan.calls(), n) << "it looks for no further one";
  }
}

TEST_F(CallLogExport, EndsWithTheFailureOfTheLibrary) {
  filler_->AddMany(1);
  for (const char* call : {"PhoneOpenCallLog", "PhoneSeekCallLog", "PhoneGetCallLogEntry"}) {
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_READ_FAULT);
    ExpectOnlyTrailer(Export(), host::kStoreReadFault);
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(CallLogExport, DropsTheOpenDocumentWhenAReadFails) {
  filler_->AddMany(45);
  const auto plan = FaultPlan::FailNthCall("PhoneGetCallLogEntry", 44, ERROR_READ_FAULT);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, host::kStoreReadFault);
  EXPECT_THAT(Sizes(answer), ElementsAre(1, 40));
}

TEST_F(CallLogExport, EndsAtAFailureOfTheDocument) {
  filler_->AddMany(3);
  const auto plan = FaultPlan::FailNthCall("IXMLDOMDocument::save", 2, ERROR_NOT_ENOUGH_MEMORY);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(plan.fired());
  EXPECT_TRUE(answer.complete);
  EXPECT_LT(answer.status, 0);
  EXPECT_THAT(Sizes(answer), ElementsAre(1));
}

TEST_F(CallLogExport, AttemptsTheTrailerAlsoOnABrokenConnection) {
  filler_->AddMany(2);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(answer.documents.empty());
  EXPECT_EQ(plan.calls(), 4u) << "a document and the trailer, two writes each";
  EXPECT_GE(answer.returned, 0) << "a broken connection is no failure by its sign";
}

TEST_F(CallLogExport, GoesOnForTheLogOnABrokenConnection) {
  filler_->AddMany(2);
  SwitchLogOn();
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  Export();
  EXPECT_EQ(plan.calls(), 6u) << "two documents and the trailer, two writes each";
}

TEST_F(CallLogExport, AnswersTheLastFlushOnABrokenConnection) {
  filler_->AddMany(1);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  EXPECT_EQ(Export().returned, static_cast<HRESULT>(WSAECONNRESET));
}

TEST_F(CallLogExport, ClosesTheLogAndFreesWhatItHandsOut) {
  StoredCall call = CallWithNote(u"\\missing.txt");
  call.name = u"Ada";
  filler_->Add(call);
  const std::int64_t blocks = host::LiveLocalBlocks();
  for (const char* failing : {"IXMLDOMNode::appendChild", "PhoneSeekCallLog", "none"}) {
    {
      const auto plan = FaultPlan::FailCalls(failing, ERROR_READ_FAULT);
      Export();
    }
    EXPECT_EQ(host::LiveLocalBlocks(), blocks) << failing;
  }
  const auto plan = FaultPlan::CountOnly("PhoneCloseCallLog");
  Export();
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(CallLogExport, RunsWithoutAStream) {
  filler_->AddMany(2);
  EXPECT_EQ(ExportCallLog(nullptr), S_OK);
  EXPECT_EQ(filler_->Count(), 2);
  handheld_->Set(u"Phone", DWORD{0});
  EXPECT_EQ(ExportCallLog(nullptr), E_NOTIMPL);
}

TEST_F(CallLogExport, LogsItsSteps) {
  filler_->AddMany(42);
  SwitchLogOn();
  Export();
  EXPECT_THAT(LogMessages(),
              ElementsAre("DownloadALLCallLog", "Calling StreamXMLToDesktop",
                          "Calling StreamXMLToDesktop", "Calling StreamXMLToDesktop"));
}

TEST_F(CallLogExport, LogsNoDocumentThatItDoesNotSend) {
  filler_->AddMany(1);
  SwitchLogOn();
  Export();
  EXPECT_THAT(LogMessages(), ElementsAre("DownloadALLCallLog", "Calling StreamXMLToDesktop"));
}

TEST_F(CallLogExport, LogsItsBeginAlsoWithoutATelephone) {
  handheld_->Set(u"Phone", DWORD{0});
  SwitchLogOn();
  Export();
  EXPECT_THAT(LogMessages(), ElementsAre("DownloadALLCallLog"));
}

TEST_F(CallLogExport, WritesNoLineWhileTheLogIsOff) {
  filler_->AddMany(2);
  Export();
  EXPECT_THAT(LogMessages(), ElementsAre());
}

}  // namespace
}  // namespace corvane::testing
