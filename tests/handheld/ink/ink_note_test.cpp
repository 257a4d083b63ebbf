// The ink-note format: notes as devices wrote them, and notes of our own.
#include "handheld/ink/ink_note.h"

#include <gtest/gtest.h>

#include "tests/support/ink_note_bytes.h"

namespace corvane {
namespace {

using namespace testing;
using ce::host::ReadInkNote;
using ce::host::WriteInkNote;

using Text = std::optional<std::u16string>;

// Of a note with one paragraph.
Text ReadStream(const std::string& stream) {
  return ReadInkNote(InkNote({stream}));
}

std::u16string RoundTrip(const std::u16string& text) {
  return ReadInkNote(WriteInkNote(text).value()).value();
}

TEST(ReadInkNote, GivesTheParagraphsPartedByLineBreaks) {
  EXPECT_EQ(ReadInkNote(InkNote({"Milk", "", "Bread"})), u"Milk\r\n\r\nBread");
}

TEST(ReadInkNote, TakesBothVersionsAndNoOther) {
  for (const std::size_t version : {6u, 7u}) {
    EXPECT_EQ(ReadInkNote(InkHeader(version) + InkParagraph(1, "a") + InkEnd()), u"a") << version;
  }
  for (const std::size_t version : {0u, 5u, 8u, 0x107u}) {
    EXPECT_EQ(ReadInkNote(InkHeader(version) + InkParagraph(1, "a") + InkEnd()), std::nullopt)
        << version;
  }
}

TEST(ReadInkNote, FollowsTheParagraphList) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({9, 7, 8}) + InkParagraph(7, "second") +
                        InkParagraph(8, "third") + InkParagraph(9, "first") + InkEnd()),
            u"first\r\nsecond\r\nthird");
}

TEST(ReadInkNote, FollowsAListThatComesBehindItsParagraphs) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkParagraph(7, "second") + InkParagraph(9, "first") +
                        InkList({9, 7}) + InkEnd()),
            u"first\r\nsecond");
}

TEST(ReadInkNote, ReadsRepeatedIdsInTheFilesOrder) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({2, 1, 1}) + InkParagraph(1, "a") +
                        InkParagraph(1, "b") + InkParagraph(2, "c") + InkEnd()),
            u"a\r\nb\r\nc");
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({2, 1, 2}) + InkParagraph(1, "a") +
                        InkParagraph(2, "b") + InkEnd()),
            u"a\r\nb");
}

TEST(ReadInkNote, LosesNoParagraphThatTheListDoesNotName) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({3}) + InkParagraph(1, "b") + InkParagraph(2, "c") +
                        InkParagraph(3, "a") + InkEnd()),
            u"a\r\nb\r\nc");
  EXPECT_EQ(ReadInkNote(InkHeader() + InkParagraph(2, "a") + InkParagraph(1, "b") + InkEnd()),
            u"a\r\nb");
}

TEST(ReadInkNote, PassesOverListedZonesThatAreNoParagraphs) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({4, 2, 0, 0, 1}) + InkZone(0x43, 4, "strokes") +
                        InkParagraph(1, "b") + InkParagraph(2, "a") + InkEnd()),
            u"a\r\nb");
}

TEST(ReadInkNote, PassesOverOtherZones) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkFonts() + InkZone(0x07, 0, "page") +
                        InkZone(0x42, 1, "metrics") + InkParagraph(1, "text") +
                        InkZone(0x54, 2, "object") + InkZone(0x99, 3, "unknown") + InkEnd()),
            u"text");
}

TEST(ReadInkNote, CountsAnObjectsDataInBytes) {
  const std::string data(0x10003, 'x');
  EXPECT_EQ(ReadInkNote(InkHeader() + HalfWord(0x55) + HalfWord(1) + HalfWord(3) + data +
                        InkParagraph(1, "behind") + InkEnd()),
            u"behind");
}

TEST(ReadInkNote, GivesNoTextForStrokesAlone) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkList({1}) + InkParagraph(1, Bytes({0xC2, 0x02, 0x00})) +
                        InkZone(0x43, 2, "strokes") + InkEnd()),
            u"");
  EXPECT_EQ(ReadInkNote(InkHeader() + InkZone(0x43, 2, "strokes") + InkEnd()), u"");
}

TEST(ReadInkNote, EndsAtTheEnd) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkParagraph(1, "a") + InkEnd() + "anything"), u"a");
  EXPECT_EQ(ReadInkNote(InkHeader() + InkParagraph(1, "a") + HalfWord(0x82)), u"a");
  EXPECT_EQ(ReadInkNote(InkHeader() + InkParagraph(1, "a")), u"a") << "no zone is missing";
}

TEST(ReadInkNote, RefusesWhatIsNoNote) {
  EXPECT_EQ(ReadInkNote("{\\rtf1 text}"), std::nullopt);
  EXPECT_EQ(ReadInkNote("{\\pwi"), std::nullopt);
  EXPECT_EQ(ReadInkNote(std::string(40, '\0')), std::nullopt);
}

TEST(ReadInkNote, RefusesEveryCutThatTakesPartOfAZone) {
  const std::string note = InkNote({"Milk", "Bread"});
  // Up to where the last zone's type is told; and where a zone ends the cut cannot be seen.
  const std::size_t lastZone = note.size() - InkEnd().size();
  const std::size_t paragraph = InkParagraph(5, "Bread").size();
  for (std::size_t size = lastZone - paragraph + 1; size < lastZone; ++size) {
    EXPECT_EQ(ReadInkNote(std::string_view(note).substr(0, size)), std::nullopt) << size;
  }
  EXPECT_EQ(ReadInkNote(std::string_view(note).substr(0, lastZone + 1)), std::nullopt);
}

TEST(ReadInkNote, RefusesAParagraphWithoutItsHead) {
  EXPECT_EQ(ReadInkNote(InkHeader() + InkZone(0x41, 1, std::string(20, '\0')) + InkEnd()),
            std::nullopt);
}

TEST(ReadInkNote, RefusesAStreamThatDoesNotEndInItsZone) {
  const std::string head(24, '\0');
  EXPECT_EQ(ReadInkNote(InkHeader() + InkZone(0x41, 1, head + "endless!") + InkEnd()),
            std::nullopt);
  for (const auto& last : {Bytes({0xC1}), Bytes({0xC4}), Bytes({0x99}), Bytes({0xC0, 1}),
                           Bytes({0xE5, 1}), Bytes({0xF1, 1, 2}), Bytes({0xC4, 0x1B, 1})}) {
    const std::string stream = std::string(8 - last.size(), 'x') + last;
    EXPECT_EQ(ReadInkNote(InkHeader() + InkZone(0x41, 1, head + stream) + InkEnd()), std::nullopt);
  }
}

struct StreamCase {
  const char* name;
  std::string stream;
  std::u16string text;
};

class InkStream : public ::testing::TestWithParam<StreamCase> {};

TEST_P(InkStream, IsRead) {
  EXPECT_EQ(ReadStream(GetParam().stream), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, InkStream,
    ::testing::Values(StreamCase{"Ascii", "a~ \x7F", u"a~ \x7F"},
                      StreamCase{"Latin", Bytes({0xC1, 0xE9, 0xC1, 0x41}), u"éA"},
                      StreamCase{"Apostrophe", "don" + Bytes({0x99, 0x80}) + "t", u"don\u2019t"},
                      StreamCase{"FirstOfTheLeads", Bytes({0x80, 0x04}), u"\u0100"},
                      StreamCase{"LastOfTheLeads", Bytes({0xBF, 0xFF}), u"\u3FFF"},
                      StreamCase{"Tab", "a" + Bytes({0xC4, 0x04}) + "b\tc", u"a\tb\tc"},
                      StreamCase{"OwnUnits",
                                 Bytes({0xC0, 0x2D, 0x4E, 0xC0, 0x3D, 0xD8, 0xC0, 0x00, 0xDE}),
                                 u"\u4E2D\U0001F600"},
                      StreamCase{"EndsBeforeTheRest", "a" + Bytes({0xC4, 0x00}) + "b", u"a"}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Controls, InkStream,
    ::testing::Values(StreamCase{"SpecialOfTwo", Bytes({0xC4, 0x19, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"SpecialOfSix", Bytes({0xC4, 0x1B, 1, 2, 3, 4, 5, 6, 'a'}), u"a"},
                      StreamCase{"OtherSpecial", Bytes({0xC4, 0x30, 'a'}), u"a"},
                      StreamCase{"Drawing", Bytes({0xC2, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"C3", Bytes({0xC3, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Object", Bytes({0xC5, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Font", Bytes({0xE5, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Size", Bytes({0xE6, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Colour", Bytes({0xE7, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Weight", Bytes({0xE8, 'x', 'y', 'a'}), u"a"},
                      StreamCase{"Italic", Bytes({0xE9, 'x', 'a'}), u"a"},
                      StreamCase{"Underline", Bytes({0xEA, 'x', 'a'}), u"a"},
                      StreamCase{"Strike", Bytes({0xEB, 'x', 'a'}), u"a"},
                      StreamCase{"Highlight", Bytes({0xEC, 'x', 'a'}), u"a"},
                      StreamCase{"EF", Bytes({0xEF, 'x', 'y', 'z', 'a'}), u"a"},
                      StreamCase{"F1", Bytes({0xF1, 1, 2, 3, 4, 5, 6, 7, 'a'}), u"a"},
                      StreamCase{"Unknown", Bytes({0xFA, 'a'}), u"a"},
                      StreamCase{"ParametersThatLookLikeAnEnd", Bytes({0xE5, 0xC4, 0x00, 'a'}),
                                 u"a"}),
    [](const auto& test) { return test.param.name; });

TEST(WriteInkNote, HasTheFormatsZones) {
  const std::string note = WriteInkNote(u"Café").value();
  std::string fonts(16 + 80, '\0');
  fonts[4] = 1;
  for (std::size_t i = 0; i < 6; ++i) fonts[32 + 2 * i] = "Tahoma"[i];
  const std::string stream = "Caf" + Bytes({0xC1, 0xE9, 0xC4, 0x00});
  std::string head = HalfWord(5) + HalfWord(7) + HalfWord(1) + HalfWord(0xFFFF) +
                     std::string(10, '\0') + Bytes({0xFF, 0}) + std::string(4, '\0');
  EXPECT_EQ(note, InkHeader() + InkZone(0x00, 0, fonts) +
                      InkZone(0x40, 0,
                              std::string(24, '\0') + HalfWord(1) + HalfWord(5) + HalfWord(1) +
                                  HalfWord(0)) +
                      InkZone(0x41, 1, head + stream) + InkEnd());
}

TEST(WriteInkNote, CarriesCharactersAsDevicesDo) {
  const std::string note = WriteInkNote(u"\u2019\t\u0100\u3FFF").value();
  EXPECT_NE(note.find(Bytes({0x99, 0x80, 0xC4, 0x04, 0x80, 0x04, 0xBF, 0xFF, 0xC4, 0x00})),
            std::string::npos);
}

TEST(WriteInkNote, MakesAParagraphOfEachLine) {
  const std::string note = WriteInkNote(u"a\r\n\r\nb").value();
  const std::string list =
      InkZone(0x40, 0,
              std::string(24, '\0') + HalfWord(1) + HalfWord(2) + HalfWord(1) + HalfWord(0) +
                  HalfWord(1) + HalfWord(1) + HalfWord(2) + HalfWord(0) + HalfWord(1) +
                  HalfWord(2) + HalfWord(3) + HalfWord(0));
  EXPECT_NE(note.find(list), std::string::npos);
  for (const std::size_t id : {1u, 2u, 3u}) {
    EXPECT_NE(note.find(HalfWord(0x41) + HalfWord(id) + HalfWord(7)), std::string::npos) << id;
  }
}

TEST(WriteInkNote, IsReadAgainUnitByUnit) {
  std::u16string all;
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) all.push_back(static_cast<char16_t>(unit));
  EXPECT_EQ(RoundTrip(all), all);
}

TEST(WriteInkNote, KeepsEveryKindOfLineBreak) {
  for (const std::u16string text :
       {u"", u"\r\n", u"a", u"a\r\n", u"\r\na", u"a\r\n\r\n", u"a\nb", u"a\rb", u"a\r\r\nb",
        u"a\r\n\nb", u"\n", u"\r", u"\n\r", u"\r\n\r"}) {
    EXPECT_EQ(RoundTrip(text), text);
  }
}

TEST(WriteInkNote, CarriesALongParagraphInSeveral) {
  for (const std::size_t length : {19999u, 20000u, 20001u, 40000u, 200000u}) {
    for (const char16_t unit : {u'x', u'\u4E2D'}) {
      const std::u16string text = u"before\r\n" + std::u16string(length, unit) + u"\r\nbehind";
      EXPECT_EQ(RoundTrip(text), text) << length;
    }
  }
  const std::u16string pairs = [] {
    std::u16string text = u"x";
    for (int i = 0; i < 30000; ++i) text += u"\U0001F600";
    return text;
  }();
  EXPECT_EQ(RoundTrip(pairs), pairs);
}

TEST(WriteInkNote, CarriesMoreParagraphsThanAListHolds) {
  for (const int lines : {32763, 32764, 32765, 70000}) {
    std::u16string text;
    for (int i = 0; i < lines; ++i) {
      text += static_cast<char16_t>(u'a' + i % 26);
      text += u"\r\n";
    }
    EXPECT_EQ(RoundTrip(text), text) << lines;
  }
}

TEST(ReadInkNote, JoinsOnlyWhatOurMarkSays) {
  const std::string mark = Bytes({0xC4, 0x1B}) + "joined";
  EXPECT_EQ(ReadInkNote(InkNote({"a", mark + "b"})), u"ab");
  EXPECT_EQ(ReadInkNote(InkNote({mark + "a", "b"})), u"a\r\nb");
  EXPECT_EQ(ReadInkNote(InkNote({"a", "b" + mark})), u"a\r\nb");
  EXPECT_EQ(ReadInkNote(InkNote({"a", Bytes({0xC4, 0x1B}) + "joine!b"})), u"a\r\nb");
}

}  // namespace
}  // namespace corvane
