#include "desktop/wire/xml_records.h"

#include <gtest/gtest.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <new>

#include "common/text/xml_text.h"
#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

std::string WhyNoRecords(std::string_view document) {
  try {
    ParseRecords(document);
  } catch (const Error& error) {
    return error.what();
  }
  return {};
}

TEST(ParseRecords, TakesTheDeclarationInCapitals) {
  const auto records = ParseRecords(Document("<CONTACT Oid=\"5\"/>"));
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].element.name, "CONTACT");
  EXPECT_EQ(records[0].oid, 5U);
}

TEST(ParseRecords, TakesAByteOrderMarkBeforeIt) {
  EXPECT_EQ(ParseRecords("\xEF\xBB\xBF" + Document("<TASK/>")).size(), 1U);
}

TEST(ParseRecords, ReadsSignedOidsAndTheDeleteFlag) {
  const auto records = ParseRecords(
      R"(<root><CONTACT Oid="-1" Delete="1"/><CONTACT Oid="3" Delete="0"/><CONTACT/></root>)");
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].oid, 0xFFFFFFFFU);
  EXPECT_TRUE(records[0].deletes);
  EXPECT_EQ(records[1].oid, 3U);
  EXPECT_FALSE(records[1].deletes);
  EXPECT_EQ(records[2].oid, std::nullopt);
}

TEST(ParseRecords, KeepsEachRecordsVeryBytes) {
  const std::string first =
      "<CONTACT  Oid='1' note=\"a>b\"><NOTES>x\r\ny &#65; </NOTES><![CDATA[</CONTACT>]]></CONTACT "
      ">";
  const std::string second = "<Contact2/>";
  const std::string third = "<TASK><!-- <TASK> --><SUBJECT>s</SUBJECT><?pi </TASK>?></TASK>";
  const auto records = ParseRecords("<!-- <root> --><root a='>'>\n" + first + "text" + second +
                                    "<!-- <x> -->" + third + "\n</root><!-- </root> -->");
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].bytes, first);
  EXPECT_EQ(records[1].bytes, second);
  EXPECT_EQ(records[2].bytes, third);
}

TEST(ParseRecords, HasNoRecordsUnderAnEmptyRoot) {
  EXPECT_TRUE(ParseRecords(Document("")).empty());
  EXPECT_TRUE(ParseRecords("<root/>").empty());
}

TEST(ParseRecords, TurnsOtherEncodingsIntoUtf8) {
  const auto latin =
      ParseRecords("<?xml version='1.0' encoding='ISO-8859-1'?><r><CONTACT>\xE9</CONTACT></r>");
  ASSERT_EQ(latin.size(), 1U);
  EXPECT_EQ(latin[0].bytes, "<CONTACT>\xC3\xA9</CONTACT>");

  std::string wide = "\xFF\xFE";
  for (const char c : std::string("<r><CONTACT a=\"1\"/></r>")) wide += {c, '\0'};
  const auto utf16 = ParseRecords(wide);
  ASSERT_EQ(utf16.size(), 1U);
  EXPECT_EQ(utf16[0].bytes, "<CONTACT a=\"1\"/>");
}

TEST(ParseRecords, LeavesOutAnOidOfZero) {
  const auto records = ParseRecords("<r><CONTACT Oid=\"0\"><COMPANY>C</COMPANY></CONTACT></r>");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].bytes, "<CONTACT><COMPANY>C</COMPANY></CONTACT>");
}

TEST(ParseRecords, GivesTextWithLineFeedsAlone) {
  const auto records =
      ParseRecords("<r><CONTACT><NOTES>a\r\nb&#13;\nc&#13;d</NOTES></CONTACT></r>");
  EXPECT_EQ(records.at(0).element.ChildText("NOTES"), "a\nb\nc\nd");
}

TEST(ParseRecords, NamesTheLineOfWhatIsMalformed) {
  EXPECT_EQ(WhyNoRecords("<root>\n<CONTACT>\n</root>").substr(0, 7), "line 3:");
  EXPECT_NE(WhyNoRecords(""), "");
  EXPECT_NE(WhyNoRecords("BEGIN:VCARD"), "");
  EXPECT_NE(WhyNoRecords("<root/><root/>"), "");
}

TEST(ParseRecords, RefusesADocumentTypeAndReadsNothingOutside) {
  EXPECT_EQ(WhyNoRecords("<!DOCTYPE root [<!ENTITY e SYSTEM \"/etc/hostname\">]>"
                         "<root><CONTACT><NOTES>&e;</NOTES></CONTACT></root>"),
            "a document type declaration is not accepted");
}

TEST(ParseRecords, RefusesADepthThatNoRecordHas) {
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "<a>";
  for (int i = 0; i < 5000; ++i) deep += "</a>";
  EXPECT_NE(WhyNoRecords(deep), "");
}

TEST(WithOid, PutsItBehindTheName) {
  EXPECT_EQ(WithOid("<CONTACT><A/></CONTACT>", 0x80000000U),
            "<CONTACT Oid=\"-2147483648\"><A/></CONTACT>");
  EXPECT_EQ(WithOid("<CONTACT/>", 1), "<CONTACT Oid=\"1\"/>");
  EXPECT_EQ(WithOid("<CONTACT\ta='1'/>", 1), "<CONTACT Oid=\"1\"\ta='1'/>");
}

TEST(XmlText, EscapesAndLeavesOutWhatXmlCannotCarry) {
  EXPECT_EQ(text::XmlText("a<b>&c\"'"), "a&lt;b&gt;&amp;c\"'");
  EXPECT_EQ(text::XmlText(std::string_view("a\0b\x01\x1F\tc\nd", 10)), "ab\tc\nd");
  EXPECT_EQ(text::XmlText("a\r\nb\rc"), "a\nb\nc");
  EXPECT_EQ(text::XmlText("\xEF\xBF\xBF\xEF\xBF\xBEx"), "x");
}

TEST(XmlText, ReplacesBytesThatAreNotUtf8) {
  EXPECT_EQ(text::XmlText("\xC3\xA9\xF0\x9F\x98\x80"), "\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(text::XmlText("\xE9"), "\xEF\xBF\xBD");
  EXPECT_EQ(text::XmlText("\xC0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(text::XmlText("\xED\xA0\x80").find('\xED'), std::string::npos);
  EXPECT_EQ(text::XmlText("\xF4\x90\x80\x80").find('\xF4'), std::string::npos);
}

// Moving what follows each would be as many bytes as the square of that.
TEST(ParseRecords, TakesAnyNumberOfLineBreaksInAText) {
  std::string breaks;
  for (int i = 0; i < 400000; ++i) breaks += "&#13;&#10;";
  const std::string document = "<root><TASK><NOTES>" + breaks + "</NOTES></TASK></root>";
  EXPECT_EQ(ParseRecords(document).at(0).element.ChildText("NOTES"), std::string(400000, '\n'));
}

// The parser's allocations: which of the next ones is refused, 0 for none.
int g_refused = 0;
bool IsRefused() {
  return g_refused > 0 && --g_refused == 0;
}
void* Allocate(std::size_t size) {
  return IsRefused() ? nullptr : std::malloc(size);
}
void* Reallocate(void* block, std::size_t size) {
  return IsRefused() ? nullptr : std::realloc(block, size);
}
char* Duplicate(const char* text) {
  return IsRefused() ? nullptr : strdup(text);
}

class ParseRecordsWithoutMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(xmlMemGet(&free_, &allocate_, &reallocate_, &duplicate_), 0);
    ASSERT_EQ(xmlMemSetup(free_, Allocate, Reallocate, Duplicate), 0);
  }
  void TearDown() override {
    g_refused = 0;
    EXPECT_EQ(xmlMemSetup(free_, allocate_, reallocate_, duplicate_), 0);
  }

 private:
  xmlFreeFunc free_ = nullptr;
  xmlMallocFunc allocate_ = nullptr;
  xmlReallocFunc reallocate_ = nullptr;
  xmlStrdupFunc duplicate_ = nullptr;
};

TEST_F(ParseRecordsWithoutMemory, LosesNoText) {
  const std::string document = Document(
      "<CONTACT Oid=\"5\"><FIRSTNAME>Ada</FIRSTNAME><BODY>a &amp; " + std::string(700, 'b') +
      "&#10;</BODY><OTHER><![CDATA[c]]></OTHER></CONTACT><CONTACT Oid=\"6\" Delete=\"1\"/>");
  const auto whole = ParseRecords(document);
  int refusals = 0;
  for (bool refused = true; refused; ++refusals) {
    SCOPED_TRACE(refusals);
    g_refused = refusals + 1;
    try {
      const auto records = ParseRecords(document);
      refused = g_refused == 0;
      ASSERT_EQ(records.size(), whole.size());
      for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_EQ(records[i].element, whole[i].element);
        EXPECT_EQ(records[i].oid, whole[i].oid);
        EXPECT_EQ(records[i].deletes, whole[i].deletes);
        EXPECT_EQ(records[i].bytes, whole[i].bytes);
      }
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(g_refused, 0);
    }
  }
  EXPECT_GT(refusals, 20);
}

TEST(ParseOid, TakesSignedAndUnsignedDecimalsAndHexadecimal) {
  EXPECT_EQ(ParseOid("12"), 12U);
  EXPECT_EQ(ParseOid("-1"), 0xFFFFFFFFU);
  EXPECT_EQ(ParseOid("-2147483648"), 0x80000000U);
  EXPECT_EQ(ParseOid("4294967295"), 0xFFFFFFFFU);
  EXPECT_EQ(ParseOid("0x80000001"), 0x80000001U);
}

TEST(ParseOid, RefusesZeroOtherTextAndWhatIsTooLarge) {
  for (const char* text : {"", "0", "-0", "12 ", "1x", "0x", "0x-1", "4294967296", "-2147483649"}) {
    EXPECT_EQ(ParseOid(text), std::nullopt) << text;
  }
}

TEST(OidAttribute, IsSigned) {
  EXPECT_EQ(OidAttribute(12), "12");
  EXPECT_EQ(OidAttribute(0x80000000U), "-2147483648");
}

}  // namespace
}  // namespace desktop::testing
