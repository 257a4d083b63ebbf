#include "common/formats/lines/vcard_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace formats {
namespace {

using Lines = std::vector<std::string>;

// "line: text" of each content line.
Lines LinesOf(std::string_view text) {
  Lines lines;
  ContentLineReader reader(text);
  for (ContentLine line; reader.Next(line);) {
    lines.push_back(std::to_string(line.line) + ": " + line.text);
  }
  return lines;
}

// The lines of a card of this version, without its first two and its last.
Lines CardLines(const std::string& version, const std::string& body) {
  Lines lines = LinesOf("BEGIN:VCARD\nVERSION:" + version + "\n" + body + "END:VCARD\n");
  EXPECT_GE(lines.size(), 3u);
  EXPECT_TRUE(lines.back().ends_with("END:VCARD"));
  return Lines(lines.begin() + 2, lines.end() - 1);
}

TEST(ContentLines, EndWithEachKindOfLineBreak) {
  EXPECT_EQ(LinesOf("A:1\r\nB:2\nC:3\rD:4"), (Lines{"1: A:1", "2: B:2", "3: C:3", "4: D:4"}));
}

TEST(ContentLines, EndWithALineBreakThatWasWrittenAsText) {
  EXPECT_EQ(LinesOf("A:1\r\r\nB:2\r\r\n\r\r\nC:3\r\rD:4"),
            (Lines{"1: A:1", "2: B:2", "4: C:3", "6: D:4"}));
  EXPECT_EQ(CardLines("3.0", "PHOTO;ENCODING=b:AAAA\r\r\n BBBB\r\r\n  CCCC\r\r\n"),
            Lines{"3: PHOTO;ENCODING=b:AAAABBBB CCCC"});
}

TEST(ContentLines, SkipEmptyOnesButCountThem) {
  EXPECT_EQ(LinesOf("\r\n\r\n \t\r\nA:1\n\n\nB:2\n"), (Lines{"4: A:1", "7: B:2"}));
  EXPECT_EQ(LinesOf(""), Lines{});
}

TEST(Folding, RemovesOneBlankIn30And40) {
  EXPECT_EQ(CardLines("3.0", "NOTE:ab\n cd\n\tef\n  gh\n"), Lines{"3: NOTE:abcdef gh"});
  EXPECT_EQ(CardLines("4.0", "NOTE:ab\n cd\n"), Lines{"3: NOTE:abcd"});
}

TEST(Folding, KeepsTheBlankIn21) {
  EXPECT_EQ(CardLines("2.1", "NOTE:ab\n cd\n"), Lines{"3: NOTE:ab cd"});
}

TEST(Folding, KnowsAVersionThatComesLate) {
  EXPECT_EQ(LinesOf("BEGIN:VCARD\nNOTE:ab\n cd\nversion : 2.1\nEND:VCARD\n")[1], "2: NOTE:ab cd");
}

TEST(Folding, TakesEachCardByItsOwnVersion) {
  const Lines lines = LinesOf(
      "BEGIN:VCARD\nVERSION:2.1\nNOTE:ab\n cd\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:3.0\nNOTE:ab\n cd\nEND:VCARD\n");
  EXPECT_EQ(lines[2], "3: NOTE:ab cd");
  EXPECT_EQ(lines[6], "8: NOTE:abcd");
}

TEST(Folding, TakesACalendarBehindACardByItsOwnRules) {
  const Lines lines = LinesOf(
      "BEGIN:VCARD\nVERSION:2.1\nEND:VCARD\n"
      "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nSUMMARY:ab\n cd\n");
  EXPECT_EQ(lines.back(), "7: SUMMARY:abcd");
}

TEST(Folding, JoinsAHeader) {
  EXPECT_EQ(CardLines("3.0", "TEL;TYPE=WO\n RK:1\n"), Lines{"3: TEL;TYPE=WORK:1"});
}

TEST(Folding, JoinsALineOfBlanksAlone) {
  EXPECT_EQ(CardLines("3.0", "NOTE:ab\n \n c\n"), Lines{"3: NOTE:abc"});
}

TEST(Folding, NeverJoinsTheEndOfACard) {
  EXPECT_EQ(CardLines("3.0", "NOTE:ab\n"), Lines{"3: NOTE:ab"});
  EXPECT_EQ(CardLines("2.1", "NOTE;QUOTED-PRINTABLE:ab=\n"), Lines{"3: NOTE;QUOTED-PRINTABLE:ab="});
}

TEST(Folding, TakesAWordLikeAnEncodingForNone) {
  EXPECT_EQ(CardLines("3.0", "TEL;TYPE=XQUOTED-PRINTABLE:a=\n b\n"),
            Lines{"3: TEL;TYPE=XQUOTED-PRINTABLE:a=b"});
  EXPECT_EQ(CardLines("3.0", "TEL;\";QUOTED-PRINTABLE\":=\nTEL:1\n"),
            (Lines{"3: TEL;\";QUOTED-PRINTABLE\":=", "4: TEL:1"}));
  EXPECT_EQ(CardLines("3.0", "X-A;TYPE=XBASE64:ab\nX;TYPE=HOME\n"),
            (Lines{"3: X-A;TYPE=XBASE64:ab", "4: X;TYPE=HOME"}));
  EXPECT_EQ(CardLines("3.0", "TEL;TYPE=HOME; encoding=\"quoted-printable\":a=\nb\n"),
            Lines{"3: TEL;TYPE=HOME; encoding=\"quoted-printable\":ab"});
  EXPECT_EQ(CardLines("3.0", "NOTE;ENCODING=Q:a=\nb\n"), Lines{"3: NOTE;ENCODING=Q:ab"});
}

constexpr char kQuoted[] = "NOTE;ENCODING=QUOTED-PRINTABLE:";
Lines Quoted(const std::string& text) {
  return {"3: " + std::string(kQuoted) + text};
}
Lines QuotedLines(const std::string& body) {
  return CardLines("2.1", kQuoted + body);
}

TEST(SoftLineBreak, JoinsTheNextLine) {
  EXPECT_EQ(QuotedLines("ab=\ncd\n"), Quoted("abcd"));
}

TEST(SoftLineBreak, MayHaveBlanksBehindIt) {
  EXPECT_EQ(QuotedLines("ab= \t\ncd\n"), Quoted("abcd"));
}

TEST(SoftLineBreak, JoinsALineThatLooksLikeAProperty) {
  EXPECT_EQ(QuotedLines("ab=\nTEL:cd\n"), Quoted("abTEL:cd"));
}

TEST(SoftLineBreak, DropsIndentationWhenAllLinesHaveIt) {
  EXPECT_EQ(QuotedLines("ab=\n cd=\n\tef\n"), Quoted("abcdef"));
}

TEST(SoftLineBreak, KeepsABlankWhenOtherLinesHaveNone) {
  EXPECT_EQ(QuotedLines("ab=\n cd=\nef\n"), Quoted("ab cdef"));
}

TEST(SoftLineBreak, MayBeALineOfItsOwn) {
  EXPECT_EQ(QuotedLines("ab=\n=\n=\ncd\n"), Quoted("abcd"));
  EXPECT_EQ(QuotedLines("ab=\n=\n=\n cd\n"), Quoted("abcd"));
}

TEST(SoftLineBreak, EndsAtAnEmptyLine) {
  EXPECT_EQ(QuotedLines("ab=\n\nTEL:1\n"),
            (Lines{"3: " + std::string(kQuoted) + "ab", "5: TEL:1"}));
}

TEST(SoftLineBreak, MayBeMissingBeforeAnEncodedLine) {
  EXPECT_EQ(QuotedLines("ab\n=C3=91\nTEL:1\n"),
            (Lines{"3: " + std::string(kQuoted) + "ab=C3=91", "5: TEL:1"}));
}

TEST(SoftLineBreak, IsNoneInOtherEncodings) {
  EXPECT_EQ(CardLines("2.1", "NOTE:ab=\nTEL:1\n"), (Lines{"3: NOTE:ab=", "4: TEL:1"}));
}

TEST(Base64, ReachesToAnEmptyLineOrAProperty) {
  EXPECT_EQ(CardLines("2.1", "PHOTO;BASE64:\n AAAA\n BBBB\n\nTEL:1\n"),
            (Lines{"3: PHOTO;BASE64: AAAA BBBB", "7: TEL:1"}));
  EXPECT_EQ(CardLines("2.1", "PHOTO;ENCODING=BASE64:AAAA\nBBBB\nTEL:1\n"),
            (Lines{"3: PHOTO;ENCODING=BASE64:AAAABBBB", "5: TEL:1"}));
  EXPECT_EQ(CardLines("3.0", "PHOTO;ENCODING=b:AAAA\nTEL;TYPE=HOME\n ,VOICE:1\n"),
            (Lines{"3: PHOTO;ENCODING=b:AAAA", "4: TEL;TYPE=HOME,VOICE:1"}));
  EXPECT_EQ(CardLines("3.0", "PHOTO;ENCODING=b;TYPE=JPEG:AAAA\nBBBB==\nTEL:1\n"),
            (Lines{"3: PHOTO;ENCODING=b;TYPE=JPEG:AAAABBBB==", "5: TEL:1"}));
}

TEST(Base64, IsSeenInAFoldedHeader) {
  EXPECT_EQ(CardLines("3.0", "PHOTO;X=\"a:b\";ENCO\n DING=B:AA\nBB\n"),
            Lines{"3: PHOTO;X=\"a:b\";ENCODING=B:AABB"});
}

TEST(VCardMarkers, AreTakenInAnyCaseAndAfterAByteOrderMark) {
  EXPECT_TRUE(IsVCardBegin("begin:vcard"));
  EXPECT_TRUE(IsVCardBegin("BEGIN : VCARD \t"));
  EXPECT_TRUE(
      IsVCardBegin("\xEF\xBB\xBF"
                   "BEGIN:VCARD"));
  EXPECT_TRUE(IsVCardEnd("End:vCard"));
  EXPECT_FALSE(IsVCardBegin("BEGIN:VCALENDAR"));
  EXPECT_FALSE(IsVCardBegin("BEGIN VCARD"));
  EXPECT_FALSE(IsVCardEnd("ENDED:VCARD"));
}

}  // namespace
}  // namespace formats
