#include "agent/messages/message_to_xml.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/agent/messages/fake_rows.h"
#include "tests/agent/messages/messages_support.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredMessage;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class MessageToXml : public MessagesTest {
 protected:
  // The record of a row that the test makes up; the status in `status_`.
  std::string RecordOf(const FakeRow& row) {
    const SmsSession session;
    ComPtr<IMAPITable> table;
    table.attach(new FakeTable({{row}}));
    SRowSet* rows = nullptr;
    EXPECT_EQ(table->QueryRows(1, 0, &rows), S_OK);
    const TestDocument document;
    MessageText text{};
    status_ = AddMessageToXML(document.document(), document.root(), session.store(), u"/Inbox",
                              rows->aRow[0], &text);
    FreeProws(rows);
    return document.Inner();
  }
  std::vector<BYTE> AddAndGetId(const StoredMessage& message) {
    filler_->Add(u"/Inbox", message);
    return *filler_->Messages(u"/Inbox").back().entryId;
  }

  HRESULT status_ = S_OK;
};

TEST_F(MessageToXml, WritesTheValuesInTheOrderOfTheRow) {
  const std::vector<BYTE> id = AddAndGetId(TextMessage(u"text"));
  const auto oid = BytesValue(PR_ENTRYID, id);
  const auto time = TimeValue(PR_MESSAGE_DELIVERY_TIME, kSampleDelivery);
  const auto flags = LongValue(PR_MESSAGE_FLAGS, -1 & ~MSGFLAG_FROMME);
  const std::string begin = "<SMS Oid=\"" + Hex(id) + "\"><Folder>/Inbox</Folder>";
  const std::string end = "<Sender>+4912345</Sender></SMS>";
  EXPECT_EQ(RecordOf({flags, time, oid}),
            begin + "<Flags>-33</Flags><Time>20080215T134501</Time>" + end);
  EXPECT_EQ(RecordOf({oid, time, flags}),
            begin + "<Time>20080215T134501</Time><Flags>-33</Flags>" + end);
}

TEST_F(MessageToXml, WritesTheDeliveryTimeWithoutConvertingIt) {
  handheld_.SetZone("America/New_York");
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  EXPECT_THAT(ExportedRecords(), HasSubstr("<Time>20080215T134501</Time>"));
}

TEST_F(MessageToXml, LeavesOutATimeThatIsNone) {
  StoredMessage message = TextMessage(u"x");
  message.deliveryTime = -1;
  filler_->Add(u"/Inbox", message);
  const std::string records = ExportedRecords();
  EXPECT_THAT(records, Not(HasSubstr("Time")));
  EXPECT_THAT(records, HasSubstr("<NOTES>x</NOTES>"));
}

TEST_F(MessageToXml, IgnoresTheFailureOfATime) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  const auto plan = FaultPlan::FailCalls("FileTimeToSystemTime", 0x80004005);
  const std::string records = ExportedRecords();
  EXPECT_TRUE(plan.fired());
  EXPECT_THAT(records, Not(HasSubstr("Time")));
  EXPECT_THAT(records, HasSubstr("<NOTES>x</NOTES>"));
}

TEST_F(MessageToXml, NamesTheSenderOfAReceivedMessageOnly) {
  StoredMessage message = TextMessage(u"x");
  message.flags = 0x20;
  filler_->Add(u"/Inbox", message);
  EXPECT_THAT(ExportedRecords(), Not(HasSubstr("Sender")));
  message.flags = 0x1F;
  filler_->Add(u"/Inbox/Old", message);
  EXPECT_THAT(Records(Export().documents[1]), HasSubstr("<Sender>+4912345</Sender>"));
}

TEST_F(MessageToXml, CountsAMessageWithoutFlagsAsReceived) {
  StoredMessage message = TextMessage(u"x");
  message.flags.reset();
  filler_->Add(u"/Inbox", message);
  const std::string records = ExportedRecords();
  EXPECT_THAT(records, HasSubstr("<Sender>"));
  EXPECT_THAT(records, Not(HasSubstr("Flags")));
}

TEST_F(MessageToXml, WritesNoSenderWhenTheMessageLacksOne) {
  StoredMessage message = TextMessage(u"x");
  message.senderAddress.reset();
  filler_->Add(u"/Inbox", message);
  EXPECT_THAT(ExportedRecords(), Not(HasSubstr("Sender")));
}

TEST_F(MessageToXml, CutsALongTextTo4095Characters) {
  for (const std::size_t length : {4095u, 4096u, 5000u}) {
    ASSERT_EQ(filler_->box().Clear(filler_->Folder(u"/Inbox")), S_OK);
    filler_->Add(u"/Inbox", TextMessage(std::u16string(length - 1, u'a') + u'b'));
    const std::string notes = "<NOTES>" +
                              std::string(std::min<std::size_t>(length - 1, 4095), 'a') +
                              (length == 4095 ? "b" : "") + "</NOTES>";
    EXPECT_THAT(ExportedRecords(), HasSubstr(notes)) << length;
  }
}

TEST_F(MessageToXml, WritesAReadableDocumentWhenTheCutSplitsACharacter) {
  filler_->Add(u"/Inbox", TextMessage(std::u16string(4094, u'a') + u"\U0001F600"));
  EXPECT_THAT(ExportedRecords(), HasSubstr("<NOTES>" + std::string(4094, 'a') + "</NOTES>"));
}

TEST_F(MessageToXml, LeavesAMultimediaMessageAsItIsAtItsClass) {
  for (const auto* name : {u"IPM.MMS", u"IPM.MMS.Report", u"IPM.MMSx"}) {
    ASSERT_EQ(filler_->box().Clear(filler_->Folder(u"/Inbox")), S_OK);
    StoredMessage message = TextMessage(u"x");
    message.messageClass = name;
    message.recipients = {{u"Me", u"+49222"}};
    filler_->Add(u"/Inbox", message);
    EXPECT_EQ(ExportedRecords(),
              "<SMS Oid=\"" + OidOf(u"/Inbox") + "\"><Folder>/Inbox</Folder></SMS>");
  }
}

TEST_F(MessageToXml, KeepsWhatCameBeforeTheClassOfAMultimediaMessage) {
  const std::vector<BYTE> id = AddAndGetId(TextMessage(u"x"));
  EXPECT_EQ(RecordOf({LongValue(PR_MESSAGE_FLAGS, 1), TextValue(PR_MESSAGE_CLASS_W, "IPM.MMS"),
                      BytesValue(PR_ENTRYID, id)}),
            "<SMS><Folder>/Inbox</Folder><Flags>1</Flags></SMS>");
  EXPECT_EQ(status_, S_OK);
}

TEST_F(MessageToXml, TakesOtherClassesForText) {
  for (const auto* name : {u"IPM.MM", u"ipm.mms", u"IPM.Note", u""}) {
    ASSERT_EQ(filler_->box().Clear(filler_->Folder(u"/Inbox")), S_OK);
    StoredMessage message = TextMessage(u"x");
    message.messageClass = name;
    filler_->Add(u"/Inbox", message);
    EXPECT_THAT(ExportedRecords(), HasSubstr("<NOTES>x</NOTES>"));
  }
}

TEST_F(MessageToXml, EndsARowWithoutAnEntryIdentifierWithThePositiveCode13) {
  SwitchLogOn();
  EXPECT_EQ(RecordOf({LongValue(PR_MESSAGE_FLAGS, 1), TextValue(PR_SUBJECT_W, "x")}),
            "<SMS><Folder>/Inbox</Folder><Flags>1</Flags></SMS>");
  EXPECT_EQ(status_, 13);
  EXPECT_THAT(LogMessages(), ElementsAre("Store name SMS", "Subject x", "Subject moved"));
}

TEST_F(MessageToXml, SendsAStoredMessageWithoutAnEntryIdentifierShort) {
  StoredMessage message = TextMessage(u"x");
  message.entryId.reset();
  filler_->Add(u"/Inbox", message);
  EXPECT_EQ(ExportedRecords(),
            "<SMS><Folder>/Inbox</Folder><Time>20080215T134501</Time><Flags>1</Flags></SMS>");
}

TEST_F(MessageToXml, SetsNoOidForAnEntryIdentifierOfNoBytesAndFailsToOpenIt) {
  EXPECT_EQ(RecordOf({BytesValue(PR_ENTRYID, {})}), "<SMS><Folder>/Inbox</Folder></SMS>");
  EXPECT_EQ(status_, MAPI_E_INVALID_ENTRYID);
}

TEST_F(MessageToXml, FailsForAnEntryThatIsNoMessage) {
  host::EntryIdBytes folder;
  ASSERT_EQ(filler_->box().FolderEntryId(filler_->Folder(u"/Inbox"), folder), S_OK);
  EXPECT_THAT(RecordOf({BytesValue(PR_ENTRYID, folder)}), Not(HasSubstr("NOTES")));
  EXPECT_EQ(status_, E_NOINTERFACE);
}

TEST_F(MessageToXml, TakesTheLastOfSeveralEntryIdentifiers) {
  const std::vector<BYTE> id = AddAndGetId(TextMessage(u"x"));
  EXPECT_EQ(RecordOf({BytesValue(PR_ENTRYID, {1}), BytesValue(PR_ENTRYID, id)}),
            "<SMS Oid=\"" + Hex(id) + "\"><Folder>/Inbox</Folder><Sender>+4912345</Sender></SMS>");
}

TEST_F(MessageToXml, TracesAPropertyThatItDoesNotKnowAndNoneThatItIgnores) {
  const std::vector<BYTE> id = AddAndGetId(TextMessage(u"x"));
  SwitchLogOn();
  RecordOf({TextValue(PR_SENDER_NAME_W, "n"), LongValue(0x00000004, 0), LongValue(0x00000007, 0),
            LongValue(0x0000000A, 0), LongValue(0x00090003, 0), LongValue(PR_MESSAGE_SIZE, 0),
            TimeValue(PR_LAST_MODIFICATION_TIME, 0), LongValue(0x80010003, 0),
            LongValue(0x0E060003, 0), LongValue(PR_MSG_STATUS, -7)});
  EXPECT_THAT(LogMessages(),
              ElementsAre("Store name SMS", "Unknown Property 0x80010003 (-2147418109)",
                          "Unknown Property 0x0E060003 (235274243)", "Message Status -7"));
}

TEST_F(MessageToXml, LogsAFailureToOpenTheMessage) {
  SwitchLogOn();
  RecordOf({BytesValue(PR_ENTRYID, {1})});
  EXPECT_THAT(LogMessages(), ElementsAre("Store name SMS", "OpenEntry returned -2147221233"));
}

TEST_F(MessageToXml, LogsASenderThatIsNotThere) {
  StoredMessage message = TextMessage(u"x");
  message.senderAddress.reset();
  const std::vector<BYTE> id = AddAndGetId(message);
  SwitchLogOn();
  RecordOf({BytesValue(PR_ENTRYID, id)});
  EXPECT_THAT(LogMessages(),
              ElementsAre("Store name SMS", "OpenEntry returned 0", "Received Message",
                          "Sender: (null)", "Done with Message"));
}

TEST(AddEntryIdAttribute, WritesTwoCapitalDigitsAByte) {
  const TestDocument document;
  const BYTE bytes[] = {0x00, 0x0A, 0xAB, 0xFF};
  EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 4, bytes), S_OK);
  EXPECT_THAT(document.Text(), HasSubstr("<root Oid=\"000AABFF\"/>"));
}

TEST(AddEntryIdAttribute, WritesTheFirst64BytesOf70) {
  const TestDocument document;
  std::vector<BYTE> bytes(70, 0x5C);
  bytes[63] = 0x01;
  bytes[64] = 0x02;
  EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 70, bytes.data()), S_OK);
  bytes.resize(64);
  EXPECT_THAT(document.Text(), HasSubstr("<root Oid=\"" + Hex(bytes) + "\"/>"));
}

TEST(AddEntryIdAttribute, SetsNothingForNoBytes) {
  const TestDocument document;
  const BYTE byte = 0;
  EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 4, nullptr), S_OK);
  EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 0, &byte), S_OK);
  EXPECT_THAT(document.Text(), HasSubstr("<root/>"));
}

TEST(AddEntryIdAttribute, IsStoppedByANegativeLastErrorOnly) {
  const BYTE byte = 0;
  {
    const TestDocument document;
    const auto plan = FaultPlan::FailNthCall("SysAllocString", 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 1, &byte), S_OK);
  }
  {
    const TestDocument document;
    const auto plan = FaultPlan::FailNthCall("SysAllocString", 1, 0x8007000E);
    EXPECT_EQ(AddEntryIdAttribute(document.document(), document.root(), 1, &byte), E_OUTOFMEMORY);
  }
}

TEST_F(MessageToXml, SendsA70ByteEntryIdentifierAs128Digits) {
  StoredMessage message = TextMessage(u"x");
  message.entryId = std::vector<BYTE>(70, 0xA7);
  filler_->Add(u"/Inbox", message);
  const std::string records = ExportedRecords();
  EXPECT_THAT(records, HasSubstr("<SMS Oid=\"" + Hex(std::vector<BYTE>(64, 0xA7)) + "\">"));
  EXPECT_THAT(records, HasSubstr("<NOTES>x</NOTES>"));
}

}  // namespace
}  // namespace corvane::testing
