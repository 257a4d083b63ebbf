#include "agent/pim_import/upload_request.h"

#include <gmock/gmock.h>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

std::string Named(const std::string& name, const std::string& attributes = {}) {
  return ContactRecord("<FIRST_NAME>" + name + "</FIRST_NAME>", attributes);
}

class UploadRequest : public PimTest {
 protected:
  std::u16string FirstName(LONG oid) { return store_->Text(oid, &IContact::get_FirstName); }
};

TEST_F(UploadRequest, EndsAtAFirstCountOfZero) {
  const StreamedAnswer answer = RunStreamed(UploadPIMRecords, {}, {Word(0)});
  EXPECT_EQ(answer.bytes, "");
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(UploadRequest, RefusesToRunWithoutAStream) {
  SwitchLogOn();
  EXPECT_EQ(UploadPIMRecords(0, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
  EXPECT_THAT(LogMessages(),
              ElementsAre("Starting UploadPIMRecords", "returning with hr = -2147024809"));
}

TEST_F(UploadRequest, AnswersEveryRecordInTheDocumentsOrder) {
  const UploadAnswer answer = Upload({RootOf(Named("a") + Named("b")), RootOf(Named("c"))});
  EXPECT_THAT(answer.replies,
              ElementsAre(RecordReply{1, S_OK}, RecordReply{2, S_OK}, RecordReply{3, S_OK}));
  EXPECT_EQ(answer.status, S_OK);
  EXPECT_EQ(FirstName(2), u"b");
}

TEST_F(UploadRequest, ReadsBothElementNamesAlike) {
  const UploadAnswer answer = Upload({RootOf(
      "<CONTACT><LAST_NAME>1</LAST_NAME></CONTACT><Contact2><LAST_NAME>2</LAST_NAME></Contact2>")});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}, RecordReply{2, S_OK}));
  EXPECT_EQ(store_->Text(2, &IContact::get_LastName), u"2");
}

TEST_F(UploadRequest, SkipsEverythingElseSilently) {
  const UploadAnswer answer =
      Upload({RootOf("text<!--c--><contact/><CONTACT2/><Error/> " + Named("a") + "<?p?>")});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
}

TEST_F(UploadRequest, GoesOnBehindADocumentWithoutRecords) {
  const UploadAnswer answer = Upload({"<root/>", RootOf("<x/>"), RootOf(Named("a"))});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
}

TEST_F(UploadRequest, ReadsEveryKindOfOneDocument) {
  const UploadAnswer answer = Upload({RootOf("<CALENDAR><SUBJECT>a</SUBJECT></CALENDAR><TASK/>" +
                                             Named("a") + "<calendar/><Task/><APPOINTMENT/>")});
  EXPECT_THAT(answer.replies,
              ElementsAre(RecordReply{1, S_OK}, RecordReply{2, S_OK}, RecordReply{3, S_OK}));
  EXPECT_THAT(store_->Oids(), ElementsAre(3));
}

TEST_F(UploadRequest, GoesOnBehindARecordThatFails) {
  const UploadAnswer answer =
      Upload({RootOf(ContactRecord("<BIRTHDAY>soon</BIRTHDAY>") + Named("a"))});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{0, E_INVALIDARG}, RecordReply{1, S_OK}));
  EXPECT_EQ(answer.status, S_OK) << "a record's failure is not the request's";
}

TEST_F(UploadRequest, ReadsOtherEncodings) {
  const std::u16string wide =
      u"\uFEFF<root><CONTACT><FIRST_NAME>\u00E9</FIRST_NAME></CONTACT></root>";
  const std::string utf16 = text::ToUtf16Le(wide);
  const std::string latin1 = "<?xml version='1.0' encoding='ISO-8859-1'?>" + RootOf(Named("\xE9"));
  EXPECT_THAT(Upload({utf16, latin1}).replies,
              ElementsAre(RecordReply{1, S_OK}, RecordReply{2, S_OK}));
  EXPECT_EQ(FirstName(1), u"\u00E9");
  EXPECT_EQ(FirstName(2), u"\u00E9");
}

TEST_F(UploadRequest, EndsAtADocumentThatDoesNotParse) {
  const UploadAnswer answer =
      Upload({RootOf(Named("kept")), "<root><CONTACT></root>", RootOf(Named("unread"))});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
  EXPECT_LT(answer.status, 0);
  EXPECT_THAT(store_->Oids(), ElementsAre(1));
}

using RecordDecision = UploadRequest;

TEST_F(RecordDecision, ModifiesTheItemThatIsThere) {
  const LONG oid = store_->AddNamed(u"old");
  EXPECT_THAT(Upload({RootOf(Named("new", OidTag(oid)))}).replies,
              ElementsAre(RecordReply{oid, S_OK}));
  EXPECT_EQ(FirstName(oid), u"new");
  EXPECT_THAT(store_->Oids(), ElementsAre(oid));
}

TEST_F(RecordDecision, AddsWhenTheItemIsGone) {
  const LONG oid = store_->AddNamed(u"gone");
  store_->Delete(oid);
  const RecordReply reply = UploadContact("<FIRST_NAME>a</FIRST_NAME>", OidTag(oid));
  EXPECT_EQ(reply.result, S_OK);
  EXPECT_NE(reply.oid, oid);
  EXPECT_EQ(FirstName(reply.oid), u"a");
}

TEST_F(RecordDecision, TakesAnIdentifierThatIsNoDecimalNumberForNone) {
  const LONG oid = store_->AddNamed(u"one");
  const RecordReply reply = UploadContact("", "Oid='0x" + std::to_string(oid) + "'");
  EXPECT_EQ(reply.result, S_OK);
  EXPECT_NE(reply.oid, oid);
}

TEST_F(RecordDecision, DeletesTheItem) {
  const LONG oid = store_->AddNamed(u"one");
  EXPECT_EQ(UploadContact("<FIRST_NAME>x</FIRST_NAME>", OidTag(oid) + " Delete='1'"),
            (RecordReply{oid, S_OK}));
  EXPECT_THAT(store_->Oids(), IsEmpty());
}

TEST_F(RecordDecision, DoesNotDeleteForAZeroFlag) {
  const LONG oid = store_->AddNamed(u"one");
  for (const char* flag : {"0", "TRUE", ""}) {
    EXPECT_EQ(UploadContact("", OidTag(oid) + " Delete='" + flag + "'"), (RecordReply{oid, S_OK}));
  }
  EXPECT_THAT(store_->Oids(), ElementsAre(oid));
}

TEST_F(RecordDecision, DeletesNothingForAnUnknownIdentifier) {
  const LONG oid = store_->AddNamed(u"one");
  EXPECT_EQ(UploadContact("", "Oid='-77' Delete='1'"), (RecordReply{-77, S_OK}));
  EXPECT_THAT(store_->Oids(), ElementsAre(oid));
}

TEST_F(RecordDecision, TakesAnIdentifierBeyond32BitsForNoOtherItem) {
  const std::vector<LONG> oids{store_->AddNamed(u"one"), store_->AddNamed(u"two")};
  ASSERT_THAT(oids, ElementsAre(1, 2));
  EXPECT_EQ(UploadContact("", "Oid='4294967298' Delete='1'"), (RecordReply{2147483647, S_OK}));
  EXPECT_EQ(store_->Oids(), oids);
}

TEST_F(RecordDecision, NeitherDeletesNorAddsWithoutAnIdentifier) {
  const LONG oid = store_->AddNamed(u"one");
  EXPECT_EQ(UploadContact("<FIRST_NAME>x</FIRST_NAME>", "Delete='1'"), (RecordReply{0, S_OK}));
  EXPECT_EQ(UploadContact("<FIRST_NAME>x</FIRST_NAME>", "Oid='0' Delete='1'"),
            (RecordReply{0, S_OK}));
  EXPECT_THAT(store_->Oids(), ElementsAre(oid));
}

TEST_F(RecordDecision, AnswersADeletionThatFailsWithTheIdentifierAsSent) {
  const LONG oid = store_->AddNamed(u"one");
  const auto plan = FaultPlan::FailCalls("IContact::Delete", 0x80004005);
  EXPECT_EQ(UploadContact("", OidTag(oid) + " Delete='1'"), (RecordReply{oid, E_FAIL}));
}

TEST_F(RecordDecision, AnswersAnIdentifierThatCannotBeReadWithItsFailure) {
  const LONG oid = store_->AddNamed(u"one");
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::get_nodeValue", 1, 0x80004005);
  EXPECT_EQ(UploadContact("", OidTag(oid)), (RecordReply{0, E_FAIL}));
}

TEST_F(RecordDecision, NeedsTheFolderOnlyToAdd) {
  const LONG oid = store_->AddNamed(u"one");
  for (const char* call : {"IPOutlookApp::GetDefaultFolder", "IFolder::get_Items"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    EXPECT_EQ(UploadContact("", OidTag(oid)), (RecordReply{oid, S_OK})) << call;
    EXPECT_EQ(UploadContact(""), (RecordReply{0, E_FAIL})) << call;
  }
}

TEST_F(RecordDecision, ForgetsTheIdentifierWhenTheChangeFails) {
  const LONG oid = store_->AddNamed(u"one");
  const auto plan = FaultPlan::FailCalls("IContact::Save", 0x80004005);
  EXPECT_EQ(UploadContact("", OidTag(oid)), (RecordReply{0, E_FAIL}));
}

TEST_F(RecordDecision, LogsWhatItFinds) {
  const LONG oid = store_->AddNamed(u"one");
  SwitchLogOn();
  Upload({RootOf(Named("m", OidTag(oid)) + Named("a", "Oid='99'") +
                 Named("", OidTag(oid) + " Delete='1'") + Named("", "Oid='98' Delete='1'"))});
  std::vector<std::string> decisions;
  for (const std::string& message : LogMessages()) {
    for (const char* start : {"Found something", "Didn't find item", "Deleted", "Writing"}) {
      if (message.starts_with(start)) decisions.push_back(message);
    }
  }
  EXPECT_THAT(decisions, ElementsAre("Found something to Modify", "Writing oid 0x00000001, hr = 0",
                                     "Didn't find item by OID", "Found something to Add, yeah",
                                     "Writing oid 0x00000002, hr = 0", "Deleted item",
                                     "Writing oid 0x00000001, hr = 0", "Didn't find item by OID",
                                     "Writing oid 0x00000062, hr = 0"));
}

TEST_F(RecordDecision, LogsADeletionThatFails) {
  const LONG oid = store_->AddNamed(u"one");
  SwitchLogOn();
  {
    const auto plan = FaultPlan::FailCalls("IContact::Delete", 0x80004005);
    UploadContact("", OidTag(oid) + " Delete='1'");
  }
  EXPECT_THAT(LogMessages(), Contains("Delete failed hr = -2147467259 (0x80004005)"));
}

TEST_F(UploadRequest, SkipsTheLoopWhenTheLogonFails) {
  SwitchLogOn();
  {
    const auto plan = FaultPlan::FailCalls("IPOutlookApp::Logon", ERROR_SHARING_VIOLATION);
    const UploadAnswer answer = Upload({RootOf(Named("a"))});
    EXPECT_THAT(answer.replies, IsEmpty());
    EXPECT_EQ(answer.status, 32) << "the last error";
  }
  EXPECT_THAT(LogMessages(),
              ElementsAre("Starting UploadPIMRecords", "pPoomApp->Logon failed -2147024864",
                          "GetLastError returned 32", "returning with hr = 32"));
  EXPECT_THAT(store_->Oids(), IsEmpty());
}

TEST_F(UploadRequest, SkipsTheLoopWhenTheParserCannotBeSetUp) {
  for (const char* call :
       {"CoCreateInstance", "IObjectSafety::GetInterfaceSafetyOptions",
        "IObjectSafety::SetInterfaceSafetyOptions", "IXMLDOMDocument::put_validateOnParse",
        "IXMLDOMDocument::put_resolveExternals", "IXMLDOMDocument::put_preserveWhiteSpace"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    const UploadAnswer answer = Upload({RootOf(Named("a"))});
    EXPECT_THAT(answer.replies, IsEmpty()) << call;
    EXPECT_EQ(answer.status, E_FAIL) << call;
  }
}

TEST_F(UploadRequest, EndsWhenTheTreeCannotBeWalked) {
  for (const char* call : {"IXMLDOMDocument::get_documentElement", "IXMLDOMNode::get_firstChild",
                           "IXMLDOMNode::get_nodeName", "SafeArrayCreateVector"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    const UploadAnswer answer = Upload({RootOf(Named("a"))});
    EXPECT_THAT(answer.replies, IsEmpty()) << call;
    EXPECT_LT(answer.status, 0) << call;
  }
}

TEST_F(UploadRequest, LogsOffInTheEnd) {
  const auto plan = FaultPlan::CountOnly("IPOutlookApp::Logoff");
  Upload({RootOf("")});
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(UploadRequest, LogsItsSteps) {
  SwitchLogOn();
  RunStreamed(UploadPIMRecords, {}, {ChunkBytes("<root/>") + Word(0)});
  EXPECT_THAT(LogMessages(),
              ElementsAre("Starting UploadPIMRecords", "pPoomApp->Logon worked!",
                          "There are 7 bytes available", "cbBytes actually read 7",
                          "***Binary data (7 bytes)", "***End binary data (written 2 bytes)",
                          "pDoc->load returned 0", "pDoc->get_documentElement returned 0",
                          "get_firstChild returned 1", "returning with hr = 0"));
  EXPECT_THAT(handheld_.FileContent("CorvaneLog.txt"), ::testing::HasSubstr("<root/>\r\n"));
}

TEST_F(UploadRequest, LogsADocumentThatDoesNotParse) {
  SwitchLogOn();
  Upload({"<"});
  EXPECT_THAT(LogMessages(), Not(Contains("pDoc->get_documentElement returned 0")));
}

}  // namespace
}  // namespace corvane::testing
