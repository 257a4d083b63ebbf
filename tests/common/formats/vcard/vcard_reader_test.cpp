#include <gtest/gtest.h>

#include "tests/common/formats/vcard/card_support.h"
#include "tests/support/sanitizers.h"

namespace formats::testing {
namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

Strings FirstNames(const VCardFile& file) {
  Strings names;
  for (const ParsedContact& read : file.contacts) {
    names.push_back(read.contact[Field::kFirstName]);
  }
  return names;
}

TEST(ReadVCards, TakesSeveralCardsAndTellsTheirLines) {
  const VCardFile file = ReadVCards(
      "\r\nBEGIN:VCARD\r\nVERSION:3.0\r\nN:;A\r\nEND:VCARD\r\n\r\n"
      "begin:vcard\r\nversion:2.1\r\nn:;B\r\nphoto:x\r\nend:vcard");
  EXPECT_EQ(FirstNames(file), (Strings{"A", "B"}));
  EXPECT_EQ(file.contacts[0].line, 2u);
  EXPECT_EQ(file.contacts[1].line, 7u);
  EXPECT_EQ(Texts(file.contacts[1].notices), Strings{"10: PHOTO: a contact holds no pictures"});
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadVCards, TellsTheLineAfterFoldedOnes) {
  const VCardFile file = ReadVCards(
      "BEGIN:VCARD\nVERSION:2.1\nNOTE;QUOTED-PRINTABLE:a=\nb=\nc\nPHOTO;BASE64:\n AA\n AA\n\n"
      "X-A:1\nEND:VCARD\n");
  EXPECT_EQ(
      Texts(file.contacts.at(0).notices),
      (Strings{"6: PHOTO: a contact holds no pictures", "10: X-A: a contact has no field for it"}));
}

TEST(ReadVCards, HasNoCardsInOtherText) {
  EXPECT_EQ(Texts(ReadVCards("").notices), Strings{});
  const VCardFile file = ReadVCards("<html>\nnothing here\n");
  EXPECT_TRUE(file.contacts.empty());
  EXPECT_EQ(Texts(file.notices), Strings{"1: 2 lines outside any vCard left out"});
}

TEST(ReadVCards, ReportsLinesBetweenCards) {
  const VCardFile file = ReadVCards(
      "BEGIN:VCARD\nVERSION:3.0\nN:;A\nEND:VCARD\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nN:;B\n"
      "END:VCARD\nx\n");
  EXPECT_EQ(FirstNames(file), (Strings{"A", "B"}));
  EXPECT_EQ(Texts(file.notices), (Strings{"5: 1 line outside any vCard left out",
                                          "10: 1 line outside any vCard left out"}));
}

TEST(ReadVCards, KeepsACardThatIsCutOff) {
  const VCardFile file = ReadVCards("BEGIN:VCARD\nVERSION:3.0\nN:;A\nTEL;TYPE=CELL:1");
  ASSERT_EQ(file.contacts.size(), 1u);
  EXPECT_EQ(file.contacts[0].contact[Field::kMobileTelephoneNumber], "1");
  EXPECT_EQ(Texts(file.notices), Strings{"1: the vCard that begins here has no END:VCARD"});
}

TEST(ReadVCards, EndsACardWhereTheNextBegins) {
  const VCardFile file =
      ReadVCards("BEGIN:VCARD\nVERSION:3.0\nN:;A\nBEGIN:VCARD\nVERSION:3.0\nN:;B\nEND:VCARD\n");
  EXPECT_EQ(FirstNames(file), (Strings{"A", "B"}));
  EXPECT_EQ(Texts(file.notices), Strings{"1: the vCard that begins here has no END:VCARD"});
}

TEST(ReadVCards, SkipsAnAgentsCard) {
  const VCardFile file = ReadVCards(
      "BEGIN:VCARD\nVERSION:2.1\nN:;A\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nN:;B\nAGENT:\n"
      "BEGIN:VCARD\nN:;C\nEND:VCARD\nEND:VCARD\nTITLE:T\nEND:VCARD\n");
  EXPECT_EQ(FirstNames(file), Strings{"A"});
  EXPECT_EQ(file.contacts[0].contact[Field::kJobTitle], "T");
  EXPECT_EQ(Texts(file.contacts[0].notices), Strings{"4: AGENT: a contact holds no other card"});
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadVCards, FindsTheNextCardAfterAnAgentWithoutEnd) {
  const VCardFile file = ReadVCards(
      "BEGIN:VCARD\nVERSION:2.1\nN:;A\nAGENT:\nBEGIN:VCARD\nN:;B\n"
      "BEGIN:VCARD\nVERSION:2.1\nN:;C\nEND:VCARD\n");
  EXPECT_EQ(FirstNames(file), (Strings{"A", "C"}));
  EXPECT_EQ(Texts(file.notices), Strings{"1: the vCard that begins here has no END:VCARD"});
}

TEST(ReadVCards, ReadsACardWithoutVersion) {
  const VCardFile file = ReadVCards("BEGIN:VCARD\nN:;A\nNOTE:a\\,b\nEND:VCARD\n");
  EXPECT_EQ(file.contacts.at(0).contact[Field::kBody], "a,b");
  EXPECT_EQ(Texts(file.contacts[0].notices), Strings{"1: VERSION is missing, read as 3.0"});
}

TEST(ReadVCards, ReportsLinesThatAreNoProperties) {
  const ParsedContact read = ReadCard("3.0", "N:;A\nrubbish \xFF\x01\nTITLE:T");
  EXPECT_EQ(read.contact[Field::kJobTitle], "T");
  EXPECT_EQ(Texts(read.notices), Strings{"4: not a property, left out: rubbish ÿ "});
}

TEST(ReadVCards, ReportsLinesThatAreNoPropertiesAndFollowEachOtherAsOne) {
  const ParsedContact read = ReadCard("3.0", "N:;A\nAAAA\n\nBBBB\nCCCC\nTITLE:T\nDDDD\nEEEE");
  EXPECT_EQ(read.contact[Field::kJobTitle], "T");
  EXPECT_EQ(Texts(read.notices), (Strings{"4: not a property, left out: AAAA and 2 lines behind",
                                          "9: not a property, left out: DDDD and 1 line behind"}));
}

TEST(ReadVCards, ReadsUtf8WithAMark) {
  const VCardFile file = ReadVCards(
      "\xEF\xBB\xBF"
      "BEGIN:VCARD\nVERSION:3.0\nN:;Zoë\nEND:VCARD\n"
      "\xEF\xBB\xBF"
      "BEGIN:VCARD\nVERSION:3.0\nN:;Ada\nEND:VCARD\n");
  EXPECT_EQ(FirstNames(file), (Strings{"Zoë", "Ada"}));
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadVCards, ReadsUtf16OfEitherOrder) {
  const std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Zo\xEB\r\nEND:VCARD\r\n";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (char c : text) {
    little += {c, '\0'};
    big += {'\0', c};
  }
  EXPECT_EQ(FirstNames(ReadVCards(little)), Strings{"Zoë"});
  EXPECT_EQ(FirstNames(ReadVCards(big)), Strings{"Zoë"});
  const VCardFile cut = ReadVCards(little.substr(0, little.size() - 1));
  EXPECT_EQ(Texts(cut.notices).at(0), "1: bytes that are no UTF-16 were replaced");
}

TEST(ReadVCards, JoinsACharacterThatWasFoldedApart) {
  EXPECT_EQ(ReadCard("3.0", "N:;Zo\xC3\n \xAB").contact[Field::kFirstName], "Zoë");
}

TEST(ReadVCards, ReadsUndeclaredWindows1252WithANotice) {
  const ParsedContact read = ReadCard("2.1", "N:M\xFCller;J\xF6rg\nPHOTO:\xFC");
  EXPECT_EQ(read.contact[Field::kLastName], "Müller");
  EXPECT_EQ(Texts(read.notices), (Strings{"3: N: not UTF-8, read as Windows-1252",
                                          "4: PHOTO: a contact holds no pictures"}));
}

TEST(ReadVCards, ReadsOneCharsetAProperty) {
  const ParsedContact read = ReadCard("2.1",
                                      "N;CHARSET=ISO-8859-1:M\xFCller;J\xF6rg\nTITLE;CHARSET=Shift_"
                                      "JIS;ENCODING=QUOTED-PRINTABLE:=8ER\n"
                                      "ORG:Zoë");
  EXPECT_EQ(read.contact, ContactOf({{Field::kLastName, "Müller"},
                                     {Field::kFirstName, "Jörg"},
                                     {Field::kJobTitle, "山"},
                                     {Field::kCompanyName, "Zoë"}}));
  EXPECT_EQ(Texts(read.notices), Strings{});
}

TEST(ReadVCards, ReadsWhatTelephonesWrite) {
  const ParsedContact read =
      ReadCard("2.1",
               "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=91=20;=C3=91=20=\n=C3=91;;;\n"
               "TEL;CELL;PREF:555\n"
               "ORG;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=91=C3=91=\n\n"
               "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:a=0D=0A=\nTEL: b\n"
               "PHOTO;ENCODING=BASE64;JPEG:/9j/4AAQ\n AAAA==\n\n");
  EXPECT_EQ(read.contact, ContactOf({{Field::kLastName, "Ñ"},
                                     {Field::kFirstName, "Ñ Ñ"},
                                     {Field::kMobileTelephoneNumber, "555"},
                                     {Field::kCompanyName, "ÑÑ"},
                                     {Field::kBody, "a\nTEL: b"}}));
  EXPECT_EQ(Texts(read.notices), Strings{"10: PHOTO: a contact holds no pictures"});
}

TEST(HostileInput, MakesABoundedNumberOfNotices) {
  std::string lines;
  for (int i = 0; i < 5000; ++i) lines += i % 2 == 0 ? "X-A:1\n" : "rubbish\n";
  const ParsedContact read = ReadCard("3.0", lines);
  ASSERT_EQ(read.notices.size(), 201u);
  EXPECT_EQ(Texts(read.notices).back(), "5002: 4800 more notices were left out");
}

TEST(HostileInput, ShortensWhatANoticeRepeats) {
  const ParsedContact read = ReadCard("3.0", std::string(100000, 'X') + ":1");
  ASSERT_EQ(read.notices.size(), 1u);
  EXPECT_LT(read.notices[0].text.size(), 200u);
}

TEST(HostileInput, NestsAsDeepAsItLikes) {
  std::string text = "BEGIN:VCARD\nVERSION:2.1\nN:;A\n";
  for (std::size_t i = 0; i < corvane::testing::Many(100000); ++i) text += "AGENT:\nBEGIN:VCARD\n";
  const VCardFile file = ReadVCards(text);
  EXPECT_EQ(FirstNames(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices), Strings{"1: the vCard that begins here has no END:VCARD"});
}

// Each is large enough that work that grows with the square would run into the test's limit.
struct HostileCase {
  const char* name;
  std::string head;
  std::string repeated;
  std::size_t count;
};
class HostileLinesTest : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileLinesTest, AreReadInOneGo) {
  const HostileCase& c = GetParam();
  std::string text = "BEGIN:VCARD\nVERSION:2.1\nN:;A\n" + c.head;
  const std::size_t count = corvane::testing::Many(c.count);
  text.reserve(text.size() + c.repeated.size() * count + 20);
  for (std::size_t i = 0; i < count; ++i) text += c.repeated;
  const VCardFile file = ReadVCards(text + "\nEND:VCARD\n");
  ASSERT_GE(file.contacts.size(), 1u);
  EXPECT_EQ(file.contacts.front().contact[Field::kFirstName], "A");
  std::size_t notices = 0;
  for (const ParsedContact& read : file.contacts) notices += read.notices.size();
  EXPECT_LE(notices, 201 * file.contacts.size());
}

INSTANTIATE_TEST_SUITE_P(
    HostileLines, HostileLinesTest,
    ::testing::Values(HostileCase{"FoldedBlanks", "NOTE;QUOTED-PRINTABLE:", " \n", 1000000},
                      HostileCase{"FoldedHeader", "NOTE", ";X=\"\n ", 300000},
                      HostileCase{"SoftBreaks", "NOTE;QUOTED-PRINTABLE:=\n", "=\n", 1000000},
                      HostileCase{"IndentedSoftBreaks", "NOTE;QUOTED-PRINTABLE:=\n", " a=\n",
                                  500000},
                      HostileCase{"Begins", "", "BEGIN:VCARD\n", 20000},
                      HostileCase{"Semicolons", "ADR:", ";", 1000000},
                      HostileCase{"Parameters", "TEL", ";TYPE=x", 300000},
                      HostileCase{"ParameterList", "TEL;TYPE=", "x,", 300000},
                      HostileCase{"QuotedParameterList", "TEL;TYPE=\"", "x,", 300000},
                      HostileCase{"QuotedParameter", "TEL;P=\"", "x,\",", 300000},
                      HostileCase{"WordsOfAName", "FN:", "van Mr. a, ", 300000},
                      HostileCase{"Quotes", "TEL", ";\"", 1000000},
                      HostileCase{"Categories", "CATEGORIES:", "\xC3\xA9,a,", 300000},
                      HostileCase{"DifferentNotes", "", "NOTE:a\nNOTE:b\n", 100000},
                      HostileCase{"Numbers", "", "TEL:1\nTEL;CELL:2\n", 50000},
                      HostileCase{"Groups", "", "a.X-ABLabel:b\na.TEL:1\n", 50000},
                      HostileCase{"Backslashes", "N:", "\\", 1000000},
                      HostileCase{"LineBreaks", "NOTE;X-LINE-BREAKS=cr:", "\\n", 300000},
                      HostileCase{"BadUtf8", "NOTE;CHARSET=UTF-8:", "\x80", 1000000},
                      HostileCase{"BadJapanese", "NOTE;CHARSET=ISO-2022-JP:", "\x1B$B\xFF", 100000},
                      HostileCase{"Nuls", "NOTE:", "\0"s, 1000000}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace formats::testing
