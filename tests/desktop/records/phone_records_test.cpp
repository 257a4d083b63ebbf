#include "desktop/records/phone_records.h"

#include <gtest/gtest.h>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using formats::Call;
using formats::MessageClass;
using formats::TextMessage;

Record Only(const std::string& record) {
  return ParseRecords(Document(record)).at(0);
}

formats::MessageTime TimeOf(const char* text) {
  return formats::ParseMessageTime(text).value();
}

TEST(MessageFromXml, TakesEveryField) {
  const Record record = Only(
      "<SMS Oid=\"0000000000000005000000010000000000000008\"><Folder>/Inbox/Old</Folder>"
      "<Time>20080215T134501</Time><Flags>33</Flags><Sender>+49 &amp; 1</Sender>"
      "<NOTES>Hi\r\nthere \xE2\x82\xAC</NOTES><Recipients><Recipient><Number>+49222</Number>"
      "</Recipient><Recipient><Number>+49333</Number></Recipient></Recipients></SMS>");
  EXPECT_EQ(record.oidText, "0000000000000005000000010000000000000008");
  TextMessage wanted;
  wanted.folder = "/Inbox/Old";
  wanted.time = TimeOf("2008-02-15T13:45:01Z");
  wanted.flags.read = true;
  wanted.flags.fromMe = true;
  wanted.from.address = "+49 & 1";
  wanted.text = "Hi\nthere \xE2\x82\xAC";
  wanted.to = {{"+49222", ""}, {"+49333", ""}};
  EXPECT_EQ(MessageFromXml(record.element), wanted);
  EXPECT_EQ(MissingOf(record), "");
}

TEST(MessageFromXml, KeepsBitsWithoutANameAndTheSign) {
  const Record record = Only("<SMS Oid=\"0A\"><Flags>-2147483648</Flags><NOTES>x</NOTES></SMS>");
  EXPECT_EQ(formats::ToFlags(MessageFromXml(record.element).flags), INT32_MIN);
}

TEST(MessageFromXml, TakesNoTimeFromWhatIsNone) {
  for (const char* text : {"", "20081315T000000", "20080215", "16010101T000000", "yesterday"}) {
    const Record record =
        Only("<SMS Oid=\"0A\"><Time>" + std::string(text) + "</Time><NOTES>x</NOTES></SMS>");
    EXPECT_FALSE(MessageFromXml(record.element).time) << text;
  }
}

TEST(MessageFromXml, TakesAMessageWithFolderAloneForAMultimediaOne) {
  const Record record = Only("<SMS Oid=\"0A\"><Folder>/Inbox</Folder></SMS>");
  const TextMessage message = MessageFromXml(record.element);
  EXPECT_EQ(message.messageClass, MessageClass::kMms);
  EXPECT_EQ(message.folder, "/Inbox");
  EXPECT_EQ(MissingOf(record),
            "multimedia: the handheld sends nothing of it but its number and folder");
}

TEST(MessageFromXml, TakesAMessageWithoutTextForATextMessage) {
  const Record record = Only("<SMS Oid=\"0A\"><Folder>/Inbox</Folder><Flags>0</Flags></SMS>");
  EXPECT_EQ(MessageFromXml(record.element).messageClass, MessageClass::kSms);
  EXPECT_EQ(MissingOf(record), "");
}

TEST(MissingOf, NamesAMessageWithoutAnIdentifier) {
  const Record record = Only("<SMS><Folder>/Inbox</Folder><Flags>1</Flags></SMS>");
  EXPECT_EQ(MissingOf(record), "no identifier: the handheld sends no sender, text and recipients");
}

TEST(CallFromXml, TakesEveryField) {
  const Record record = Only(
      "<Call><Number>+4912345</Number><Name>Ada</Name><Type>m</Type><Note>Call back</Note>"
      "<Outgoing>TRUE</Outgoing><Connected>FALSE</Connected><Roam>TRUE</Roam>"
      "<Ended>FALSE</Ended><CID>2</CID><Start>20080215T134501</Start>"
      "<End>20080215T134601</End></Call>");
  Call wanted;
  wanted.number = "+4912345";
  wanted.name = "Ada";
  wanted.numberType = "m";
  wanted.note = "Call back";
  wanted.outgoing = true;
  wanted.roaming = true;
  wanted.callerId = formats::kCallerIdAvailable;
  wanted.start = TimeOf("2008-02-15T13:45:01Z");
  wanted.end = TimeOf("2008-02-15T13:46:01Z");
  EXPECT_EQ(CallFromXml(record.element), wanted);
}

TEST(CallFromXml, TellsEveryFlagApart) {
  const std::pair<const char*, bool Call::*> flags[] = {{"Outgoing", &Call::outgoing},
                                                        {"Connected", &Call::connected},
                                                        {"Roam", &Call::roaming},
                                                        {"Ended", &Call::ended}};
  for (const auto& [name, flag] : flags) {
    const std::string tag = name;
    const Record record = Only("<Call><" + tag + ">TRUE</" + tag + "></Call>");
    Call wanted;
    wanted.*flag = true;
    EXPECT_EQ(CallFromXml(record.element), wanted) << name;
  }
}

TEST(CallFromXml, IsMissedWhenItCameInAndWasNotConnected) {
  for (const std::string outgoing : {"TRUE", "FALSE"}) {
    for (const std::string connected : {"TRUE", "FALSE"}) {
      const Record record = Only("<Call><Outgoing>" + outgoing + "</Outgoing><Connected>" +
                                 connected + "</Connected></Call>");
      EXPECT_EQ(CallFromXml(record.element).missed, outgoing == "FALSE" && connected == "FALSE")
          << outgoing << ' ' << connected;
    }
  }
}

TEST(CallFromXml, HasNothingForWhatIsNotThere) {
  EXPECT_EQ(CallFromXml(Only("<Call><Start>16010101T000000</Start></Call>").element), Call());
}

}  // namespace
}  // namespace desktop::testing
