#include "common/formats/lines/vcard_property.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

using Strings = std::vector<std::string>;

Property Parse(std::string text, VCardDialect dialect = VCardDialect::k30) {
  std::optional<Property> property = ParseProperty({1, dialect, std::move(text)});
  EXPECT_TRUE(property.has_value());
  return property.value_or(Property{});
}

Strings ValuesOf(const Property& property, std::string_view name) {
  Strings values;
  for (const auto& [key, value] : property.parameters) {
    if (key == name) values.push_back(value);
  }
  return values;
}

TEST(ParseProperty, TakesNameGroupAndValueApart) {
  const Property property = Parse("item1.Tel;type=work:12:34;5");
  EXPECT_EQ(property.group, "ITEM1");
  EXPECT_EQ(property.name, "TEL");
  EXPECT_EQ(property.value, "12:34;5");
  EXPECT_TRUE(property.HasType("WORK"));
  EXPECT_FALSE(property.HasType("HOME"));
}

TEST(ParseProperty, RefusesWhatIsNone) {
  for (const char* text : {"no colon", ":value", "two words:value", "a.:x", "=41:x", "é:x", ""}) {
    EXPECT_FALSE(ParseProperty({1, VCardDialect::k30, text}).has_value()) << text;
  }
}

TEST(ParseProperty, ReadsListsOfParameterValues) {
  EXPECT_EQ(ValuesOf(Parse("TEL;TYPE=WORK,FAX;TYPE=pref:1"), "TYPE"),
            (Strings{"WORK", "FAX", "pref"}));
  EXPECT_EQ(ValuesOf(Parse("TEL;TYPE=\"work,voice\":1"), "TYPE"), (Strings{"work", "voice"}));
}

TEST(ParseProperty, ReadsSeparatorsInQuotationMarks) {
  const Property property = Parse("X;P=\"a;b:c,d\",e;Q=f:v");
  EXPECT_EQ(ValuesOf(property, "P"), (Strings{"a;b:c,d", "e"}));
  EXPECT_EQ(ValuesOf(property, "Q"), Strings{"f"});
  EXPECT_EQ(property.value, "v");
}

TEST(ParseProperty, ReadsAQuotationMarkThatNothingCloses) {
  const Property property = Parse("X;P=\"a:v");
  EXPECT_EQ(property.value, "v");
  EXPECT_EQ(ValuesOf(property, "P"), Strings{"a"});
}

TEST(ParseProperty, DecodesCarets) {
  EXPECT_EQ(ValuesOf(Parse("ADR;LABEL=\"^'A^'^n^^b^c^\":x"), "LABEL"), Strings{"\"A\"\n^b^c^"});
  EXPECT_EQ(ValuesOf(Parse("X;P=^n:x", VCardDialect::k21), "P"), Strings{"^n"});
}

TEST(ParseProperty, SortsBareWordsIntoTypesAndEncodings) {
  const Property property = Parse("TEL;WORK;Quoted-Printable:=41", VCardDialect::k21);
  EXPECT_EQ(ValuesOf(property, "TYPE"), Strings{"WORK"});
  EXPECT_EQ(property.value, "A");
}

TEST(ParseProperty, DecodesBase64Text) {
  EXPECT_EQ(Parse("NOTE;ENCODING=b:TWFu").value, "Man");
}

TEST(ParseProperty, MakesLineBreaksLineFeeds) {
  EXPECT_EQ(Parse("NOTE;QUOTED-PRINTABLE:a=0D=0Ab=0Dc=0Ad", VCardDialect::k21).value, "a\nb\nc\nd");
}

TEST(ParseProperty, FollowsTheCharset) {
  const Property property = Parse("N;CHARSET=Shift_JIS:\x83\x5C;x", VCardDialect::k21);
  EXPECT_EQ(property.value, "ソ;x");  // the second byte is a backslash in ASCII
  EXPECT_EQ(property.problem, "");
}

TEST(ParseProperty, SaysWhatIsWrongWithTheBytes) {
  const Property undeclared = Parse("N:M\xFCller");
  EXPECT_EQ(undeclared.value, "Müller");
  EXPECT_EQ(undeclared.problem, "not UTF-8, read as Windows-1252");
  const Property unknown = Parse("N;CHARSET=x-own:M\xFCller");
  EXPECT_EQ(unknown.value, "Müller");
  EXPECT_EQ(unknown.problem, "unknown character set x-own, read as Windows-1252");
  const Property unknownButFine = Parse("N;CHARSET=x-own:Müller");
  EXPECT_EQ(unknownButFine.value, "Müller");
  EXPECT_EQ(unknownButFine.problem, "");
  const Property damaged = Parse("N;CHARSET=UTF-8:a\x80");
  EXPECT_EQ(damaged.value, "a\uFFFD");
  EXPECT_EQ(damaged.problem, "bytes that are no UTF-8 were replaced");
}

struct PreferenceCase {
  const char* header;
  int preference;
};
TEST(Preference, IsReadFromEachForm) {
  for (const PreferenceCase& c :
       {PreferenceCase{"TEL", 101}, PreferenceCase{"TEL;TYPE=home", 101},
        PreferenceCase{"TEL;TYPE=PREF", 1}, PreferenceCase{"TEL;TYPE=home,pref", 1},
        PreferenceCase{"TEL;PREF=7", 7}, PreferenceCase{"TEL;PREF=100", 100},
        PreferenceCase{"TEL;PREF=500", 1}, PreferenceCase{"TEL;PREF=x", 1}}) {
    EXPECT_EQ(Parse(std::string(c.header) + ":1").Preference(), c.preference) << c.header;
  }
  EXPECT_EQ(Parse("TEL;PREF:1", VCardDialect::k21).Preference(), 1);
}

struct EscapeCase {
  const char* name;
  VCardDialect dialect;
  const char* line;
  const char* text;
};
class EscapeTest : public ::testing::TestWithParam<EscapeCase> {};

TEST_P(EscapeTest, IsUndone) {
  EXPECT_EQ(TextOf(Parse(GetParam().line, GetParam().dialect)), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    TextOf, EscapeTest,
    ::testing::Values(
        EscapeCase{"Separators", VCardDialect::k30, "NOTE:a\\,b\\;c\\:d\\\\e", "a,b;c:d\\e"},
        EscapeCase{"LineBreaks", VCardDialect::k30, "NOTE:a\\nb\\Nc", "a\nb\nc"},
        EscapeCase{"BackslashThenN", VCardDialect::k40, "NOTE:a\\\\nb", "a\\nb"},
        EscapeCase{"Unescaped", VCardDialect::k30, "NOTE:a,b;c:d", "a,b;c:d"},
        EscapeCase{"QuotationMark", VCardDialect::k30, "NOTE:\\\"a\\\"", "\"a\""},
        EscapeCase{"ForgottenBackslash", VCardDialect::k30, "NOTE:C:\\temp", "C:\\temp"},
        EscapeCase{"BackslashAtTheEnd", VCardDialect::k30, "NOTE:a\\", "a\\"},
        EscapeCase{"BlanksStayIn30", VCardDialect::k30, "NOTE: a ", " a "},
        EscapeCase{"BlanksGoIn21", VCardDialect::k21, "NOTE: a ", "a"},
        EscapeCase{"ControlCharacters", VCardDialect::k30,
                   "NOTE:a\x1B\x7F\tc\\\x01"
                   "d",
                   "a\tcd"},
        EscapeCase{"NulInQuotedPrintable", VCardDialect::k21, "NOTE;QUOTED-PRINTABLE:=00a=08b",
                   "ab"},
        EscapeCase{"SeparatorIn21", VCardDialect::k21, "NOTE:a\\;b,c", "a;b,c"},
        EscapeCase{"LineBreakIn21", VCardDialect::k21, "NOTE:a\\nb", "a\nb"},
        EscapeCase{"NoLineBreakInQuotedPrintable21", VCardDialect::k21,
                   "NOTE;ENCODING=QUOTED-PRINTABLE:C:\\new=0D=0Ab", "C:\\new\nb"},
        EscapeCase{"NotedLineBreaks", VCardDialect::k30, "NOTE;X-LINE-BREAKS=crlf:a\\nb\\nc",
                   "a\r\nb\r\nc"},
        EscapeCase{"MixedLineBreaks", VCardDialect::k40,
                   "NOTE;X-LINE-BREAKS=crlf,lf,cr:\\n\\n\\n\\n", "\r\n\n\r\r"},
        EscapeCase{"UnknownLineBreaks", VCardDialect::k40, "NOTE;X-LINE-BREAKS=x:a\\nb", "a\nb"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ComponentsOf, SplitsAtSemicolonsThatAreNotEscaped) {
  EXPECT_EQ(ComponentsOf(Parse("N:a\\;b;c,d;;e\\\\;f")), (Strings{"a;b", "c,d", "", "e\\", "f"}));
  EXPECT_EQ(ComponentsOf(Parse("N:")), Strings{""});
}

TEST(ComponentsOf, SplitsQuotedPrintableBeforeItIsDecoded) {
  EXPECT_EQ(ComponentsOf(Parse("N;QUOTED-PRINTABLE:a=3Bb;c", VCardDialect::k21)),
            (Strings{"a;b", "c"}));
}

TEST(ComponentsOf, SplitsAtEncodedSeparatorsWhenThereAreNoOthers) {
  EXPECT_EQ(ComponentsOf(Parse("N;QUOTED-PRINTABLE:=44=3B=4A", VCardDialect::k21)),
            (Strings{"D", "J"}));
}

}  // namespace
}  // namespace formats
