// Streamed uploads: chunks in, an identifier and a result a record out.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

std::string Contact(std::string_view attributes, std::string_view children) {
  return "<root><CONTACT" + std::string(attributes) + ">" + std::string(children) +
         "</CONTACT></root>";
}

std::string OidAttribute(std::uint32_t oid) {
  return " Oid=\"" + std::to_string(static_cast<std::int32_t>(oid)) + "\"";
}

class UploadWire : public WireTest {
 protected:
  RawConnection Begin() {
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveWord(), 0u);
    return connection;
  }
  UploadReply UploadOne(const std::string& document) { return Upload({document}, 1).at(0); }
  bool Holds(std::string_view text) { return AllContacts().find(text) != std::string::npos; }
};

TEST_F(UploadWire, EndsAtOnceOnAFirstCountOfZero) {
  RawConnection connection = Begin();
  connection.Send(Word(0));
  EXPECT_EQ(connection.ReceiveToEnd(), "");
}

TEST_F(UploadWire, AddsARecordWithoutAnIdentifier) {
  settings_.firstOid = 700;
  EXPECT_EQ(UploadOne(Contact("", "<FIRST_NAME>Ada</FIRST_NAME>")), (UploadReply{700, 0}));
  EXPECT_TRUE(Holds("<FIRST_NAME>Ada</FIRST_NAME>"));
}

TEST_F(UploadWire, ReadsBothElementNamesByTheSameRules) {
  const auto replies = Upload({"<root><CONTACT><LAST_NAME>One</LAST_NAME></CONTACT>"
                               "<Contact2><LAST_NAME>Two</LAST_NAME></Contact2></root>"},
                              2);
  EXPECT_EQ(replies[0].result, 0u);
  EXPECT_EQ(replies[1].result, 0u);
  EXPECT_EQ(CountElements(AllContacts(), "LAST_NAME"), 2u);
}

TEST_F(UploadWire, DoesNotCheckTheRootElementsName) {
  EXPECT_EQ(UploadOne("<anything><CONTACT/></anything>").result, 0u);
}

TEST_F(UploadWire, ChangesTheItemWithTheIdentifier) {
  const std::uint32_t oid = AddContacts(1)[0];
  EXPECT_EQ(UploadOne(Contact(OidAttribute(oid), "<FIRST_NAME>Eve</FIRST_NAME>")),
            (UploadReply{oid, 0}));
  EXPECT_TRUE(Holds("<FIRST_NAME>Eve</FIRST_NAME>"));
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 1u);
}

TEST_F(UploadWire, AddsAnewWhenTheIdentifierIsUnknown) {
  const UploadReply reply = UploadOne(Contact(" Oid=\"123456\"", "<FIRST_NAME>New</FIRST_NAME>"));
  EXPECT_EQ(reply.result, 0u);
  EXPECT_NE(reply.oid, 123456u);
  EXPECT_TRUE(Holds(OidAttribute(reply.oid)));
}

TEST_F(UploadWire, ReadsOidsAboveTheSignedRange) {
  settings_.firstOid = 0xFFFFFFF0;
  const std::uint32_t oid = AddContacts(1)[0];
  EXPECT_EQ(oid, 0xFFFFFFF0);
  EXPECT_EQ(UploadOne(Contact(" Oid=\"-16\"", "<FIRST_NAME>Changed</FIRST_NAME>")),
            (UploadReply{oid, 0}));
  EXPECT_TRUE(Holds("Changed"));
}

TEST_F(UploadWire, TakesAHexadecimalIdentifierForZero) {
  const std::uint32_t oid = AddContacts(1)[0];
  const UploadReply reply = UploadOne(Contact(" Oid=\"0x1\"", "<FIRST_NAME>Hex</FIRST_NAME>"));
  EXPECT_EQ(reply.result, 0u);
  EXPECT_NE(reply.oid, oid);
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 2u);
}

TEST_F(UploadWire, ReadsLeadingDigitsOfAnIdentifier) {
  const std::uint32_t oid = AddContacts(1)[0];
  EXPECT_EQ(UploadOne(Contact(" Oid=\"" + std::to_string(oid) + "abc\" Delete=\"1x\"", "")),
            (UploadReply{oid, 0}));
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 0u);
}

TEST_F(UploadWire, DeletesTheItemWithTheIdentifier) {
  const auto oids = AddContacts(2);
  EXPECT_EQ(UploadOne(Contact(OidAttribute(oids[0]) + " Delete=\"1\"", "")),
            (UploadReply{oids[0], 0}));
  EXPECT_EQ(OidsOf(AllContacts()), std::vector<std::uint32_t>{oids[1]});
}

TEST_F(UploadWire, AnswersADeletionOfNothingWithTheSameIdentifier) {
  EXPECT_EQ(UploadOne(Contact(" Oid=\"4711\" Delete=\"1\"", "")), (UploadReply{4711, 0}));
}

TEST_F(UploadWire, AnswersADeletionWithoutIdentifierWithZeroAndAddsNothing) {
  AddContacts(1);
  EXPECT_EQ(UploadOne(Contact(" Delete=\"1\"", "<FIRST_NAME>Nobody</FIRST_NAME>")),
            (UploadReply{0, 0}));
  EXPECT_EQ(UploadOne(Contact(" Oid=\"0\" Delete=\"1\"", "<FIRST_NAME>Nobody</FIRST_NAME>")),
            (UploadReply{0, 0}));
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 1u);
}

TEST_F(UploadWire, DoesNotDeleteForADeleteOfZeroOrOfNoNumber) {
  const std::uint32_t oid = AddContacts(1)[0];
  for (const char* value : {"0", "", "yes"}) {
    UploadOne(
        Contact(OidAttribute(oid) + " Delete=\"" + value + "\"", "<FIRST_NAME>Kept</FIRST_NAME>"));
    EXPECT_TRUE(Holds("Kept")) << value;
  }
}

TEST_F(UploadWire, SkipsOtherChildrenWithoutAReply) {
  EXPECT_EQ(
      UploadOne("<root>text<!-- comment --><Other/><contact/><CONTACT/><NOTE/></root>").result, 0u);
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 1u);
}

TEST_F(UploadWire, GoesOnToTheNextChunkAfterADocumentWithoutRecords) {
  const auto replies = Upload({"<root/>", "<root><Nothing/></root>", "<root><CONTACT/></root>"}, 1);
  EXPECT_EQ(replies[0].result, 0u);
}

TEST_F(UploadWire, AnswersInDocumentOrderAcrossChunks) {
  const auto oids = AddContacts(3);
  const auto replies = Upload({"<root><CONTACT" + OidAttribute(oids[2]) + "/><CONTACT" +
                                   OidAttribute(oids[0]) + " Delete=\"1\"/></root>",
                               Contact(OidAttribute(oids[1]), "")},
                              3);
  EXPECT_EQ(replies, (std::vector<UploadReply>{{oids[2], 0}, {oids[0], 0}, {oids[1], 0}}));
}

TEST_F(UploadWire, KeepsEarlierRecordsWhenAChunkIsBroken) {
  RawConnection connection = Begin();
  connection.Send(Chunk(Contact("", "<FIRST_NAME>Before</FIRST_NAME>")) +
                  Chunk("<root><CONTACT><FIRST_NAME>Broken</CONTACT></root>") +
                  Chunk(Contact("", "<FIRST_NAME>After</FIRST_NAME>")) + Word(0));
  EXPECT_EQ(connection.ReceiveToEnd().size(), 8u);
  EXPECT_TRUE(Holds("Before"));
  EXPECT_FALSE(Holds("Broken"));
  EXPECT_FALSE(Holds("After"));
}

TEST_F(UploadWire, RefusesHostileDocuments) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  std::string bomb = "<!DOCTYPE root [<!ENTITY e0 \"0123456789\">";
  for (int i = 1; i < 30; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY e" + std::to_string(i) + " \"" + inner + inner + inner + inner + "\">";
  }
  bomb += "]><root><CONTACT><NOTES>&e29;</NOTES></CONTACT></root>";
  for (const std::string& document :
       {deep, bomb, std::string("<!DOCTYPE root><root><CONTACT/></root>"),
        std::string("\xFF\xFE\xFD"), std::string(100000, '<'), std::string(1, '\0')}) {
    RawConnection connection = Begin();
    connection.Send(Chunk(document) + Word(0));
    EXPECT_EQ(connection.ReceiveToEnd(), "");
  }
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 0u);
}

TEST_F(UploadWire, ReadsADocumentThatArrivesByteByByte) {
  RawConnection connection = Begin();
  for (const char byte : Chunk(Contact("", "<FIRST_NAME>Slow</FIRST_NAME>")) + Word(0))
    connection.Send(std::string_view(&byte, 1));
  EXPECT_NE(connection.ReceiveWord(), 0u);
  EXPECT_EQ(connection.ReceiveWord(), 0u);
  EXPECT_TRUE(Holds("Slow"));
}

TEST_F(UploadWire, EndsWhenThePeerGoesAwayWithinAChunk) {
  RawConnection connection = Begin();
  connection.Send(Chunk(Contact("", "<FIRST_NAME>Kept</FIRST_NAME>")) + Word(1000) + "<root>");
  EXPECT_EQ(connection.Receive(8).size(), 8u);
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), "");
  EXPECT_TRUE(Holds("Kept"));
}

TEST_F(UploadWire, EndsWhenThePeerGoesAwayWithinACount) {
  RawConnection connection = Begin();
  connection.Send(Chunk(Contact("", "<FIRST_NAME>Kept</FIRST_NAME>")) + std::string("\x10\x00", 2));
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd().size(), 8u);
  ExpectServing();
}

TEST_F(UploadWire, RefusesACountBeyondTheBound) {
  RawConnection connection = Begin();
  connection.Send(Word(0xFFFFFFFF));
  EXPECT_EQ(connection.ReceiveToEnd(), "");
  ExpectServing();
}

TEST_F(UploadWire, ReadsDocumentsInOtherEncodings) {
  const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
                            Contact("", "<FIRST_NAME>Ren\xE9</FIRST_NAME>");
  const std::string upper = "<?XML version=\"1.0\" encoding=\"UTF-8\"?>" +
                            Contact("", "<FIRST_NAME>Zo\xC3\xAB</FIRST_NAME>");
  const std::string utf16 = "\xFF\xFE" + Utf16(Contact("", "<FIRST_NAME>Wide</FIRST_NAME>"));
  for (const UploadReply& reply : Upload({latin, upper, utf16}, 3)) EXPECT_EQ(reply.result, 0u);
  const std::string all = AllContacts();
  for (const char* name : {"Ren\xC3\xA9", "Zo\xC3\xAB", "Wide"})
    EXPECT_NE(all.find(name), std::string::npos) << name;
}

TEST_F(UploadWire, ClearsEveryFieldThatARecordLacks) {
  const std::uint32_t oid =
      UploadOne(Contact("",
                        "<EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>a@example.org</NAME><TYPE>email1"
                        "</TYPE></EMAIL_ADDRESS></EMAIL_ADDRESSES><LAST_NAME>L</LAST_NAME>"
                        "<CATEGORIES><CATEGORY><Name>A</Name></CATEGORY></CATEGORIES>"
                        "<NOTES>note</NOTES><BIRTHDAY>19700101T000000</BIRTHDAY>"))
          .oid;
  UploadOne(Contact(OidAttribute(oid), "<FIRST_NAME>Only</FIRST_NAME>"));
  EXPECT_TRUE(Holds("<CONTACT" + OidAttribute(oid) + "><FIRST_NAME>Only</FIRST_NAME></CONTACT>"))
      << AllContacts();
}

TEST_F(UploadWire, FailsARecordWithABadDateAndReadsTheNext) {
  const auto replies = Upload({"<root><CONTACT><FIRST_NAME>Bad</FIRST_NAME><BIRTHDAY>soon"
                               "</BIRTHDAY></CONTACT><CONTACT><FIRST_NAME>Good</FIRST_NAME>"
                               "</CONTACT></root>"},
                              2);
  EXPECT_EQ(replies[0], (UploadReply{0, kInvalidArgument}));
  EXPECT_EQ(replies[1].result, 0u);
  EXPECT_FALSE(Holds("Bad"));
  EXPECT_TRUE(Holds("Good"));
}

TEST_F(UploadWire, FailsARecordWithACategoryWithoutAName) {
  EXPECT_EQ(UploadOne(Contact("", "<CATEGORIES><CATEGORY/></CATEGORIES>")),
            (UploadReply{0, kFail}));
}

TEST_F(UploadWire, FailsARecordWithATextTooLong) {
  const std::string text(1024, 'x');
  EXPECT_EQ(UploadOne(Contact("", "<FIRST_NAME>" + text + "</FIRST_NAME>")),
            (UploadReply{0, 0x80040066}));
  EXPECT_EQ(UploadOne(Contact("", "<FIRST_NAME>" + text.substr(1) + "</FIRST_NAME>")).result, 0u);
}

TEST_F(UploadWire, IgnoresFuriganaUnlessTheHandheldIsJapanese) {
  UploadOne(Contact("", "<FURIGANA_FIRST_NAME>Taro</FURIGANA_FIRST_NAME>"));
  EXPECT_FALSE(Holds("FURIGANA"));
}

TEST_F(UploadWire, KeepsFuriganaOnAJapaneseHandheld) {
  settings_.language = 0x0411;
  UploadOne(Contact("", "<FURIGANA_FIRST_NAME>Taro</FURIGANA_FIRST_NAME>"));
  EXPECT_TRUE(Holds("<FURIGANA_FIRST_NAME>Taro</FURIGANA_FIRST_NAME>"));
}

TEST_F(UploadWire, WhatWasAnsweredSurvivesAKill) {
  RawConnection connection = Begin();
  std::vector<std::uint32_t> oids;
  for (int i = 0; i < 20; ++i) {
    connection.Send(Chunk(Contact("", "<FIRST_NAME>Durable</FIRST_NAME>")));
    oids.push_back(connection.ReceiveWord());
    EXPECT_EQ(connection.ReceiveWord(), 0u);
  }
  StopAgent(SIGKILL);
  EXPECT_EQ(OidsOf(AllContacts()), oids);
}

TEST_F(UploadWire, ContactsComeBackByteForByteAfterDownUpDown) {
  UploadOne(Contact("",
                    "<EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>second@example.org</NAME><TYPE>email2"
                    "</TYPE></EMAIL_ADDRESS></EMAIL_ADDRESSES><FIRST_NAME>&lt;A&amp;B&gt;"
                    "</FIRST_NAME><LAST_NAME>\"quoted\" 'text'</LAST_NAME><CATEGORIES><CATEGORY>"
                    "<Name>One</Name></CATEGORY><CATEGORY><Name>Two</Name></CATEGORY></CATEGORIES>"
                    "<HOME_ADDRESS>Line 1\nLine 2</HOME_ADDRESS><NOTES>a\nb\r\nc</NOTES>"
                    "<BIRTHDAY>19991231T000000</BIRTHDAY>"));
  const std::string first = AllContacts();
  UploadOne(first);
  EXPECT_EQ(AllContacts(), first);
}

}  // namespace
}  // namespace corvane::testing
