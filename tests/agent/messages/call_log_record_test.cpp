// What is in a "Call".
#include "handheld/base/fault.h"
#include "tests/agent/messages/call_log_support.h"
#include "tests/support/golden.h"
#include "tests/support/ink_note_bytes.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredCall;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kAlways[] =
    "<Outgoing>FALSE</Outgoing><Connected>TRUE</Connected><Roam>FALSE</Roam><Ended>TRUE</Ended>"
    "<CID>2</CID><Start>20080215T134501</Start><End>20080215T134601</End>";

using CallRecord = CallLogTest;

TEST_F(CallRecord, WritesEveryElementInItsOrder) {
  MakeFile("call.pwi", InkNote({"Call back", "don" + Bytes({0x99, 0x80}) + "t <forget>"}));
  StoredCall call = CallWithNote(u"\\call.pwi");
  call.name = u"M\u00FCller & S\u00F6hne \U0001F600";
  call.flags = CALLLOG_OUTGOING | CALLLOG_CONNECTED | CALLLOG_ROAM | CALLLOG_ENDED;
  filler_->Add(call);
  StoredCall missed;
  missed.startTime = missed.endTime = kSampleStart - kMinute;
  filler_->Add(missed);
  std::string all;
  for (const std::string& document : Export().documents) all += document + "\n";
  EXPECT_TRUE(EqualsGolden("calls.xml", all));
}

TEST_F(CallRecord, LeavesOutTextsThatAreMissingOrEmpty) {
  StoredCall call = SampleCall();
  call.number.reset();
  call.name = u"";
  call.nameType.reset();
  filler_->Add(call);
  EXPECT_EQ(ExportedCall(), kAlways);
}

TEST_F(CallRecord, WritesEachFlagFromItsBit) {
  const struct {
    DWORD flags;
    const char* written;
  } cases[] = {
      {0x0,
       "<Outgoing>FALSE</Outgoing><Connected>FALSE</Connected><Roam>FALSE</Roam>"
       "<Ended>FALSE</Ended>"},
      {0x1,
       "<Outgoing>TRUE</Outgoing><Connected>FALSE</Connected><Roam>FALSE</Roam>"
       "<Ended>FALSE</Ended>"},
      {0x2,
       "<Outgoing>FALSE</Outgoing><Connected>TRUE</Connected><Roam>FALSE</Roam>"
       "<Ended>FALSE</Ended>"},
      {0x4,
       "<Outgoing>FALSE</Outgoing><Connected>FALSE</Connected><Roam>FALSE</Roam>"
       "<Ended>TRUE</Ended>"},
      {0x5,
       "<Outgoing>TRUE</Outgoing><Connected>FALSE</Connected><Roam>FALSE</Roam>"
       "<Ended>TRUE</Ended>"},
      {0x8,
       "<Outgoing>FALSE</Outgoing><Connected>FALSE</Connected><Roam>TRUE</Roam>"
       "<Ended>FALSE</Ended>"},
      {0xFFFFFFF0,
       "<Outgoing>FALSE</Outgoing><Connected>FALSE</Connected><Roam>FALSE</Roam>"
       "<Ended>FALSE</Ended>"},
  };
  for (const auto& each : cases) {
    ASSERT_EQ(filler_->box().Clear(), S_OK);
    StoredCall call = SampleCall();
    call.flags = each.flags;
    filler_->Add(call);
    EXPECT_THAT(ExportedCall(), HasSubstr(each.written)) << each.flags;
  }
}

TEST_F(CallRecord, WritesRoamBeforeEnded) {
  filler_->Add(SampleCall());
  const std::string call = ExportedCall();
  EXPECT_LT(call.find("<Connected>"), call.find("<Roam>"));
  EXPECT_LT(call.find("<Roam>"), call.find("<Ended>"));
}

TEST_F(CallRecord, WritesTheCallerIdTypeInSignedDecimal) {
  StoredCall call = SampleCall();
  call.callerIdType = 0xFFFFFFFF;
  filler_->Add(call);
  EXPECT_THAT(ExportedCall(), HasSubstr("<CID>-1</CID>"));
}

TEST_F(CallRecord, DoesNotTellTheKindOfTheCall) {
  StoredCall call = SampleCall();
  call.kind = IOM_MISSED;
  filler_->Add(call);
  const std::string missed = ExportedCall();
  ASSERT_EQ(filler_->box().Clear(), S_OK);
  call.kind = IOM_OUTGOING;
  filler_->Add(call);
  EXPECT_EQ(ExportedCall(), missed);
}

TEST_F(CallRecord, WritesTimesAsTheyAreStoredInWhateverZone) {
  handheld_.SetZone("America/New_York");
  filler_->Add(SampleCall());
  EXPECT_THAT(ExportedCall(),
              HasSubstr("<Start>20080215T134501</Start><End>20080215T134601</End>"));
}

TEST_F(CallRecord, WritesTheTimeZeroOfFileTime) {
  StoredCall call = SampleCall();
  call.startTime = 0;
  filler_->Add(call);
  EXPECT_THAT(ExportedCall(), HasSubstr("<Start>16010101T000000</Start>"));
}

TEST_F(CallRecord, WritesAYearOfFiveDigitsAsThePictureGivesIt) {
  StoredCall call = SampleCall();
  call.endTime = 2'650'467'744'000'000'000;  // the first moment of 10000
  filler_->Add(call);
  EXPECT_THAT(ExportedCall(), HasSubstr("<End>100000101T000000</End>"));
}

TEST_F(CallRecord, LeavesOutATimeThatNoCalendarHas) {
  StoredCall call = SampleCall();
  call.endTime = -1;
  filler_->Add(call);
  EXPECT_THAT(ExportedCall(), Not(HasSubstr("<End>")));
}

class CallNote : public CallLogTest {
 protected:
  // The export of a call with this note, which is the newest of two.
  DownloadAnswer ExportNote(const std::u16string& path) {
    EXPECT_EQ(filler_->box().Clear(), S_OK);
    StoredCall newest = CallWithNote(path);
    newest.startTime += kMinute;
    filler_->Add(newest);
    filler_->Add(SampleCall());
    return Export();
  }
  void ExpectWithoutNote(const DownloadAnswer& answer) {
    EXPECT_EQ(answer.status, S_OK);
    EXPECT_THAT(Sizes(answer), ::testing::ElementsAre(1, 1));
    ASSERT_FALSE(answer.documents.empty());
    EXPECT_THAT(answer.documents[0], Not(HasSubstr("<Note>")));
    EXPECT_THAT(answer.documents[0], HasSubstr("<Outgoing>"));
  }
};

TEST_F(CallNote, IsTheTextOfTheFile) {
  MakeFile("a.txt", "plain");
  MakeFile("b.rtf", "{\\rtf1\\ansi rich}");
  MakeFile("c.unicode", Bytes({'u', 0, 0x2D, 0x4E}));
  MakeFile("d.pwi", InkNote({"ink"}));
  EXPECT_THAT(ExportNote(u"\\a.txt").documents.at(0), HasSubstr("<Note>plain</Note><Outgoing>"));
  EXPECT_THAT(ExportNote(u"\\b.rtf").documents.at(0), HasSubstr("<Note>rich</Note>"));
  EXPECT_THAT(ExportNote(u"\\c.unicode").documents.at(0), HasSubstr("<Note>u\u4E2D</Note>"));
  EXPECT_THAT(ExportNote(u"d.pwi").documents.at(0), HasSubstr("</Type><Note>ink</Note>"));
}

TEST_F(CallNote, EndsWhereTheConversionEnded) {
  // Of every length up to some blocks of memory: behind a shorter one lies what was there before.
  for (std::size_t length = 1; length <= 70; ++length) {
    const std::string text(length, 'n');
    MakeFile("a.txt", text);
    EXPECT_THAT(ExportNote(u"\\a.txt").documents.at(0), HasSubstr("<Note>" + text + "</Note>"));
  }
}

TEST_F(CallNote, EndsAtAZeroInTheText) {
  MakeFile("a.unicode", Bytes({'u', 0, 0, 0, 'v', 0}));
  EXPECT_THAT(ExportNote(u"\\a.unicode").documents.at(0), HasSubstr("<Note>u</Note>"));
}

TEST_F(CallNote, IsLeftOutWithoutAPath) {
  ExpectWithoutNote(ExportNote(u""));
}

TEST_F(CallNote, IsLeftOutWhenTheFileIsEmpty) {
  MakeFile("a.txt", "");
  ExpectWithoutNote(ExportNote(u"\\a.txt"));
}

TEST_F(CallNote, IsLeftOutWhenTheFileIsMissing) {
  ExpectWithoutNote(ExportNote(u"\\missing.pwi"));
  ExpectWithoutNote(ExportNote(u"\\no directory\\missing.pwi"));
}

TEST_F(CallNote, NeverComesFromOutsideTheHandheld) {
  std::ofstream(handheld_.directory() / "outside.txt") << "secret";
  for (const WCHAR* path : {u"\\..\\outside.txt", u"../outside.txt", u"/etc/hostname.txt"}) {
    ExpectWithoutNote(ExportNote(path));
  }
}

TEST_F(CallNote, IsLeftOutWhenTheFileCannotBeRead) {
  MakeFile("a.txt", "plain");
  for (const char* call : {"CreateFileW", "GetFileSize", "ReadFile", "CreateWindowExW"}) {
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_READ_FAULT);
    ExpectWithoutNote(ExportNote(u"\\a.txt"));
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(CallNote, StaysWhenItsWindowCannotBeDestroyed) {
  MakeFile("a.txt", "plain");
  const auto plan = FaultPlan::FailNthCall("DestroyWindow", 1, ERROR_GEN_FAILURE);
  const DownloadAnswer answer = ExportNote(u"\\a.txt");
  EXPECT_TRUE(plan.fired());
  EXPECT_EQ(answer.status, S_OK);
  EXPECT_THAT(answer.documents.at(0), HasSubstr("<Note>plain</Note>"));
}

TEST_F(CallNote, EndsTheExportWhenItsFormatIsUnknown) {
  MakeFile("a.PWI", InkNote({"ink"}));
  MakeFile("plain", "plain");
  for (const WCHAR* path : {u"\\a.PWI", u"\\plain", u"\\missing.doc"}) {
    ExpectOnlyTrailer(ExportNote(path), static_cast<HRESULT>(0x800A0141));
  }
}

TEST_F(CallNote, EndsTheExportWhenItIsNotWhatItsNameSays) {
  MakeFile("a.pwi", "no note");
  ExpectOnlyTrailer(ExportNote(u"\\a.pwi"), E_FAIL);
}

TEST_F(CallNote, EndsTheExportOnAHandheldWithoutTheControl) {
  handheld_->Set(u"RichInk", DWORD{0});
  MakeFile("a.txt", "plain");
  ExpectOnlyTrailer(ExportNote(u"\\a.txt"), E_NOTIMPL);
}

TEST_F(CallNote, KeepsWhatWasSentBeforeItFailed) {
  filler_->AddMany(3);
  StoredCall oldest = CallWithNote(u"\\a.doc");
  oldest.startTime -= 9 * kMinute;
  filler_->Add(oldest);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, static_cast<HRESULT>(0x800A0141));
  EXPECT_THAT(Sizes(answer), ::testing::ElementsAre(1)) << "the open document is not sent";
}

}  // namespace
}  // namespace corvane::testing
