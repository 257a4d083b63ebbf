#include "common/text/text.h"
#include "common/text/code_page.h"
#include "common/text/unicode.h"

#include <gtest/gtest.h>

#include "common/text/transfer_encoding.h"

namespace text {
namespace {

TEST(EqualsNoCase, ComparesAsciiLettersOnly) {
  EXPECT_TRUE(text::EqualsNoCase("Tel", "tEL"));
  EXPECT_FALSE(text::EqualsNoCase("Tel", "Te"));
  EXPECT_FALSE(text::EqualsNoCase("\xC3\x84", "\xC3\xA4"));
}

TEST(Excerpt, IsShortAndOnOneLine) {
  EXPECT_EQ(text::Excerpt("a\r\nb\x1B\x7F"), "a  b  ");
  EXPECT_EQ(text::Excerpt(std::string(60, 'x')), std::string(60, 'x'));
  EXPECT_EQ(text::Excerpt(std::string(61, 'x')), std::string(60, 'x') + "…");
  EXPECT_EQ(text::Excerpt(std::string(58, 'x') + "éé"), std::string(58, 'x') + "é…");
  EXPECT_EQ(text::Excerpt(std::string(59, 'x') + "é"), std::string(59, 'x') + "…");
}

TEST(Shown, HasNothingThatSteersATerminalOrTurnsAroundItsOrder) {
  EXPECT_EQ(Shown("a\x1B[31mb\tc\x7F"), "a [31mb c ");
  EXPECT_EQ(Shown("\xC2\x9B"
                  "2J"),
            " 2J");  // U+009B
  EXPECT_EQ(Shown("gpj.\xE2\x80\xAE"
                  "exe"),
            "gpj. exe");  // U+202E
  EXPECT_EQ(Shown("\xE2\x81\xA6\xD8\x9C\xE2\x80\x8B\xEF\xBB\xBF"), "    ");
  EXPECT_EQ(Shown("\xF3\xA0\x81\x81"), " ");  // a tag that is not to be seen
  EXPECT_EQ(Shown("\x9B"
                  "2J"),
            "\xEF\xBF\xBD"
            "2J");
}

TEST(Shown, LeavesEverythingElseAsItIs) {
  const std::string text = "M\xC3\xBCller, \xE6\x9D\x8E\nsecond \xF0\x9F\x98\x80";
  EXPECT_EQ(Shown(text), text);
  EXPECT_EQ(OnOneLine("a\nb"), "a b");
}

TEST(NormalizeLineBreaks, MakesThemLineFeeds) {
  EXPECT_EQ(text::NormalizeLineBreaks("a\r\nb\rc\nd\r\r\n"), "a\nb\nc\nd\n\n");
}

TEST(DecodeQuotedPrintable, LeavesBrokenSequencesAsTheyAre) {
  EXPECT_EQ(text::DecodeQuotedPrintable("=41=4a=4Z=5", false), "AJ=4Z=5");
  EXPECT_EQ(text::DecodeQuotedPrintable("a=", false), "a");
}

TEST(DecodeQuotedPrintable, TellsAWrittenSemicolonFromASeparator) {
  EXPECT_EQ(text::DecodeQuotedPrintable("a=3Bb;c", true), "a\\;b;c");
  EXPECT_EQ(text::DecodeQuotedPrintable("a=5C=3Bb;c", true), "a\\;b;c");
  EXPECT_EQ(text::DecodeQuotedPrintable("a=3Bb", false), "a;b");
}

TEST(DecodeBase64, SkipsWhatDoesNotBelong) {
  EXPECT_EQ(text::DecodeBase64("TWFu"), "Man");
  EXPECT_EQ(text::DecodeBase64(" T W\tF u\r\nTWE="), "ManMa");
  EXPECT_EQ(text::DecodeBase64("TQ==TWFu"), "M");
  EXPECT_EQ(text::DecodeBase64(""), "");
}

}  // namespace
}  // namespace text
