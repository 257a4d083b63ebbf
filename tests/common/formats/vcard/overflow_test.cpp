#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <string>

#include "common/formats/vcard/overflow_block.h"
#include "common/formats/vcard/vcard.h"
#include "tests/common/formats/vcard/card_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::string_view kFirstLine = "--- vCard lines without a field of their own ---\n";
constexpr std::string_view kLastLine = "--- end of vCard lines ---";

ParsedContact ReadWith(Overflow overflow, const std::string& lines) {
  VCardFile file = ReadVCards("BEGIN:VCARD\nVERSION:3.0\n" + lines + "END:VCARD\n", overflow);
  EXPECT_EQ(file.contacts.size(), 1u);
  return file.contacts.at(0);
}
Contact Kept(const std::string& lines) {
  return ReadWith(Overflow::kNote, lines).contact;
}
std::string BlockOf(const std::string& lines) {
  return std::string(kFirstLine) + lines + std::string(kLastLine);
}
Contact ReadBack(const Contact& contact, VCardVersion version = VCardVersion::k30) {
  return ReadVCards(WriteVCard(contact, version, Overflow::kNote), Overflow::kNote)
      .contacts.at(0)
      .contact;
}

constexpr char kMuch[] =
    "N:Doe;Ann;;;\n"
    "NOTE:Met in Girona\n"
    "EMAIL:1@a\nEMAIL:2@a\nEMAIL:3@a\nEMAIL;TYPE=HOME:4@a\n"
    "TEL;TYPE=WORK:1\nTEL;TYPE=WORK:2\nTEL;TYPE=WORK:3\nTEL;TYPE=CELL,PREF:4\nTEL;TYPE=PAGER:5\n"
    "TEL;TYPE=PAGER:6\nTEL:7\n"
    "NICKNAME:Annie,A.\nIMPP;X-SERVICE-TYPE=Skype:skype:ann\nX-ICQ:123\n"
    "item1.ADR;TYPE=HOME:;;Street 1;Town;;;\nitem1.X-ABLabel:Beach house\n"
    "item2.TEL;TYPE=CAR:8\nitem2.X-ABLabel:The \"old\" car: red\n";

TEST(Overflow, LeavesOutUnlessAsked) {
  const ParsedContact left = ReadWith(Overflow::kLeftOut, kMuch);
  EXPECT_EQ(left.contact[Field::kBody], "Met in Girona");
  EXPECT_THAT(Texts(left.notices), ::testing::Contains(HasSubstr("NICKNAME: ")));
}

TEST(Overflow, GoesToTheEndOfTheNote) {
  const Contact contact = Kept(kMuch);
  EXPECT_EQ(contact[Field::kBody],
            "Met in Girona\n\n" +
                BlockOf("TEL;X-KEPT-AS=HomeTelephoneNumber:7\n"
                        "TEL;TYPE=WORK;X-KEPT-AS=Home2TelephoneNumber:3\n"
                        "item1.ADR;TYPE=HOME;X-KEPT-AS=HomeAddressStreet:;;Street 1;Town;;;\n"
                        "item1.X-ABLabel:Beach house\n"
                        "item2.TEL;TYPE=CAR;X-KEPT-AS=CarTelephoneNumber:8\n"
                        "item2.X-ABLabel:The \"old\" car: red\n"
                        "NICKNAME:Annie,A.\n"
                        "IMPP;X-SERVICE-TYPE=Skype:skype:ann\n"
                        "X-ICQ:123\n"
                        "TEL;TYPE=PAGER:6\n"
                        "EMAIL;TYPE=HOME:4@a\n"));
}

TEST(Overflow, IsNothingForACardThatFits) {
  const ParsedContact fits = ReadWith(Overflow::kNote, "N:Doe;Ann;;;\nTEL;TYPE=HOME:1\nNOTE:Hi\n");
  EXPECT_EQ(fits.contact[Field::kBody], "Hi");
  EXPECT_THAT(fits.notices, IsEmpty());
}

TEST(Overflow, IsNothingForTheLabelOfWhatIsEmpty) {
  const Contact contact = Kept(
      "item1.ADR:;;\f;;;;\nitem1.X-ABLabel:Beach house\n"
      "item2.URL:\f\nitem2.X-ABLabel:Shop\n");
  EXPECT_EQ(contact[Field::kBody], "");
  EXPECT_EQ(ReadBack(contact), contact);
}

TEST(Overflow, ComesBackAsTheCardsOwnLines) {
  const std::string card = WriteVCard(Kept(kMuch), VCardVersion::k30, Overflow::kNote);
  for (const char* line :
       {"\r\nNOTE:Met in Girona\r\n", "\r\nTEL;TYPE=WORK;X-KEPT-AS=Home2TelephoneNumber:3\r\n",
        "\r\nTEL;TYPE=PAGER:6\r\n", "\r\nEMAIL;TYPE=HOME:4@a\r\n", "\r\nNICKNAME:Annie,A.\r\n",
        "\r\nX-ICQ:123\r\n", ".X-ABLabel:Beach house\r\n", ".X-ABLabel:The \"old\" car: red\r\n"})
    EXPECT_THAT(card, HasSubstr(line));
  EXPECT_THAT(card, Not(HasSubstr("---")));
}

TEST(Overflow, MakesTheSameContactAgain) {
  const Contact contact = Kept(kMuch);
  for (const VCardVersion version : {VCardVersion::k30, VCardVersion::k40})
    EXPECT_EQ(ReadBack(contact, version), contact);
  // Once more, when the note was written as a text with its block in it.
  const std::string plain = WriteVCard(contact, VCardVersion::k30);
  EXPECT_THAT(plain, HasSubstr("--- vCard lines"));
  EXPECT_EQ(ReadVCards(plain).contacts.at(0).contact, contact);
  EXPECT_EQ(ReadVCards(plain, Overflow::kNote).contacts.at(0).contact, contact);
}

TEST(Overflow, SurvivesTheLineEndsOfAHandheld) {
  Contact contact = Kept(kMuch);
  const std::string card = WriteVCard(contact, VCardVersion::k30, Overflow::kNote);
  std::string& body = contact[Field::kBody];
  for (std::size_t at = body.find('\n'); at != body.npos; at = body.find('\n', at + 2))
    body.insert(at, 1, '\r');
  EXPECT_EQ(WriteVCard(contact, VCardVersion::k30, Overflow::kNote), card);
}

TEST(Overflow, LeavesWhatIsWrittenAroundTheBlockInTheNote) {
  Contact contact = Kept("NICKNAME:Annie\n");
  contact[Field::kBody] = "Above\n\n" + contact[Field::kBody] + "\nBelow\nand more";
  EXPECT_EQ(ReadBack(contact)[Field::kBody],
            "Above\nBelow\nand more\n\n" + BlockOf("NICKNAME:Annie\n"));
}

TEST(Overflow, TakesABlockThatWasTouchedForText) {
  for (const std::string& note :
       {"Hello\n\n" + std::string(kFirstLine) + "NICKNAME:Annie\n",
        BlockOf("NICKNAME:Annie\nwhat is this\n"), BlockOf("END:VCARD\n"), BlockOf("PHOTO:x\n"),
        BlockOf("TEL;X-KEPT-AS=Nowhere:1\n"), BlockOf("NICKNAME;X-KEPT-AS=Body:1\n"),
        "x " + BlockOf("NICKNAME:Annie\n")}) {
    Contact contact;
    contact[Field::kBody] = note;
    EXPECT_EQ(WriteVCard(contact, VCardVersion::k30, Overflow::kNote),
              WriteVCard(contact, VCardVersion::k30))
        << note;
    EXPECT_EQ(ReadBack(contact), contact) << note;
  }
}

TEST(Overflow, ForgetsWhatItSaidOfANumberThatIsAnother) {
  Contact contact = Kept("TEL;TYPE=WORK:1\nTEL;TYPE=WORK:2\nTEL;TYPE=WORK:3\n");
  contact[Field::kHome2TelephoneNumber] = "33";
  const std::string card = WriteVCard(contact, VCardVersion::k30, Overflow::kNote);
  EXPECT_THAT(card, HasSubstr("TEL;TYPE=HOME,VOICE;X-SLOT=2:33\r\n"));
  EXPECT_THAT(card, Not(HasSubstr(":3\r\n")));
  const Contact plain =
      ReadVCards(WriteVCard(contact, VCardVersion::k30), Overflow::kNote).contacts.at(0).contact;
  EXPECT_EQ(plain[Field::kHome2TelephoneNumber], "33");
  EXPECT_EQ(plain[Field::kBody], "");
}

TEST(Overflow, GivesAFreeSlotToWhatWaitedForOne) {
  Contact contact = Kept(
      "TEL;TYPE=PAGER:5\nTEL;TYPE=PAGER:6\nEMAIL:1@a\nEMAIL:2@a\nEMAIL:3@a\n"
      "EMAIL:4@a\n");
  contact[Field::kPagerNumber].clear();
  contact[Field::kEmail2Address].clear();
  const Contact again = ReadBack(contact);
  EXPECT_EQ(again[Field::kPagerNumber], "6");
  EXPECT_EQ(again[Field::kEmail2Address], "4@a");
  EXPECT_EQ(again[Field::kBody], "");
}

TEST(Overflow, NamesMovedAndUntypedNumbers) {
  EXPECT_THAT(Texts(ReadWith(Overflow::kNote, kMuch).notices),
              ElementsAre(HasSubstr("TEL: the slots of its kind are full, 3 is kept as Home2"),
                          HasSubstr("TEL: of no kind, 7 is kept as HomeTelephoneNumber")));
}

TEST(Overflow, PutsAnAssistantsNumberIntoItsSlot) {
  for (const char* line :
       {"TEL;TYPE=ASSISTANT:9\n", "X-ASSISTANT-PHONE:9\n", "TEL;X-EVOLUTION-ASSISTANT:9\n",
        "X-MS-ASSISTANT-PHONE:9\n", "item1.TEL:9\nitem1.X-ABLabel:_$!<Assistant>!$_\n"}) {
    const Contact contact = Kept(line);
    EXPECT_EQ(contact[Field::kAssistantTelephoneNumber], "9") << line;
    EXPECT_EQ(contact[Field::kBody], "") << line;
  }
}

TEST(Overflow, KeepsForTheWireWhatItDoesNotCarry) {
  const Contact contact =
      ReadWith(Overflow::kNoteForWire, "TEL;TYPE=CAR:8\nTEL;TYPE=ASSISTANT:9\nTEL;TYPE=CELL:1\n")
          .contact;
  EXPECT_EQ(contact[Field::kCarTelephoneNumber], "");
  EXPECT_EQ(contact[Field::kAssistantTelephoneNumber], "");
  EXPECT_EQ(contact[Field::kMobileTelephoneNumber], "1");
  EXPECT_EQ(contact[Field::kBody], BlockOf("TEL;TYPE=CAR:8\nTEL;TYPE=ASSISTANT:9\n"));
  const std::string card = WriteVCard(contact, VCardVersion::k30, Overflow::kNote);
  EXPECT_EQ(ReadVCards(card, Overflow::kNoteForWire).contacts.at(0).contact, contact);
  EXPECT_EQ(ReadVCards(card, Overflow::kNote).contacts.at(0).contact[Field::kCarTelephoneNumber],
            "8");
}

TEST(Overflow, KeepsNicknamesOfEveryForm) {
  EXPECT_EQ(Kept("X-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Jo\\;nny;1;;\n")[Field::kBody],
            BlockOf("NICKNAME:Jo\\;nny\n"));
  EXPECT_EQ(Kept("X-EPOCSECONDNAME:Jo\n")[Field::kBody], BlockOf("X-EPOCSECONDNAME:Jo\n"));
}

// A slot has no kind of its own there, so that the description has to say which it is.
TEST(Overflow, LeavesADescribedAddressInItsPlace) {
  const Contact contact = Kept("ADR:;;R;;;;\nx.ADR:;;r;;;;\nx.X-ABLabel:Barn\n");
  EXPECT_EQ(contact[Field::kOtherAddressStreet], "R");
  EXPECT_EQ(contact[Field::kHomeAddressStreet], "r");
  EXPECT_EQ(ReadBack(contact), contact);
}

TEST(Overflow, KeepsNoNicknameOfControlsAlone) {
  EXPECT_EQ(Kept("NICKNAME:\x02;\n")[Field::kBody], "");
}

rc::Gen<std::string> AnyLine() {
  return rc::gen::element<std::string>(
      "TEL:1", "TEL:2", "TEL;TYPE=WORK:1", "TEL;TYPE=WORK:3", "TEL;TYPE=WORK,PREF:4",
      "TEL;TYPE=HOME:5", "TEL;TYPE=HOME:6", "TEL;TYPE=HOME:7", "TEL;TYPE=CELL:8",
      "TEL;TYPE=CELL,WORK:9", "TEL;TYPE=CELL:10", "TEL;TYPE=FAX:11", "TEL;TYPE=WORK,FAX:12",
      "TEL;TYPE=FAX,HOME:13", "TEL;TYPE=CAR:14", "TEL;TYPE=CAR:15", "TEL;TYPE=PAGER:16",
      "TEL;TYPE=PAGER:17", "TEL;TYPE=MAIN:18", "TEL;TYPE=RADIO:19", "TEL;VALUE=uri:tel:+1;ext=5",
      "EMAIL:1@a", "EMAIL;TYPE=PREF:2@a", "EMAIL;TYPE=WORK:3@a", "EMAIL:4@a", "EMAIL:5@a",
      "NICKNAME:A;B", "NICKNAME:\\,\\n", "IMPP;TYPE=\"a,b\":xmpp:a^b", "X-SKYPE;X-A=\"c:d\":e",
      "a.TEL;TYPE=CELL:20\na.X-ABLabel:Boat", "b.TEL:21\nb.X-ABLabel:A \\, b",
      "c.EMAIL:6@a\nc.X-ABLabel:x", "d.ADR;TYPE=WORK:;;S;T;;;\nd.X-ABLabel:y",
      "e.ADR:;a;S\\nU;T;;;\ne.X-ABLabel:z", "f.URL:http://a\nf.X-ABLabel:blog", "URL:http://b",
      "ADR;TYPE=HOME:;;V;;;;", "TEL;TYPEWORK,X:23", "TEL;TYPE=\x01:24",
      "g.TEL;TYPE=HOME:25\ng.X-ABLabel:\x01", "h.TEL;TYPE=HOME:26\nh.X-ABLabel:ho\x01me",
      "NOTE:one\\n", "NOTE:\\n\\ntwo", "TEL:  tel:22 ", "ADR:;;W;;;;",
      "i.ADR:;;X;;;;\ni.X-ABLabel:v", "NICKNAME:\x02;", "N;SORT-AS=\x0E:D");
}

RC_GTEST_PROP(OverflowProperty, MakesTheSameContactAgainOfAnyCard, ()) {
  std::string lines = "UID:1\n";
  for (const std::string& line : *rc::gen::container<std::vector<std::string>>(AnyLine()))
    lines += line + "\n";
  for (const Overflow overflow : {Overflow::kNote, Overflow::kNoteForWire}) {
    const ParsedContact first = ReadWith(overflow, lines);
    for (const VCardVersion version : {VCardVersion::k30, VCardVersion::k40}) {
      const std::string card = WriteVCard(first.contact, version, Overflow::kNote);
      const Contact again = ReadVCards(card, overflow).contacts.at(0).contact;
      RC_LOG() << card;
      RC_ASSERT(Texts(again) == Texts(first.contact));
      const std::string plain = WriteVCard(first.contact, version);
      RC_ASSERT(Texts(ReadVCards(plain).contacts.at(0).contact) == Texts(first.contact));
    }
  }
}

}  // namespace
}  // namespace formats::testing
