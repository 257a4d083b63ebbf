#include "agent/xml/values.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "agent/time/zone.h"
#include "handheld/base/fault.h"
#include "tests/support/test_handheld.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;

class XmlValues : public HandheldTest {
 protected:
  void TearDown() override {
    target_.reset();
    ResetTimeZoneCache();
    HandheldTest::TearDown();
  }
  IXMLDOMDocument* document() { return target_->document(); }
  IXMLDOMElement* root() { return target_->root(); }
  std::string Inner() { return target_->Inner(); }

  std::unique_ptr<TestDocument> target_ = std::make_unique<TestDocument>();
};

TEST_F(XmlValues, StringIsWrittenAsItStands) {
  EXPECT_EQ(AddStringElement(document(), root(), u"LAST_NAME", u"Smith & <Sons> \"x\" 'y'"), S_OK);
  EXPECT_EQ(Inner(), "<LAST_NAME>Smith &amp; &lt;Sons&gt; \"x\" 'y'</LAST_NAME>");
}

TEST_F(XmlValues, EmptyAndNullStringsWriteNothing) {
  EXPECT_EQ(AddStringElement(document(), root(), u"A", u""), S_OK);
  EXPECT_EQ(AddStringElement(document(), root(), u"A", nullptr), S_OK);
  EXPECT_EQ(AddAnsiStringElement(document(), root(), u"A", ""), S_OK);
  EXPECT_EQ(AddAnsiStringElement(document(), root(), u"A", nullptr), S_OK);
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, SingleBlankIsAValue) {
  EXPECT_EQ(AddStringElement(document(), root(), u"A", u" "), S_OK);
  EXPECT_EQ(Inner(), "<A> </A>");
}

TEST_F(XmlValues, KeepsLineBreaksAsTheyAre) {
  EXPECT_EQ(AddStringElement(document(), root(), u"A", u"a\r\nb\nc"), S_OK);
  EXPECT_EQ(Inner(), "<A>a\r\nb\nc</A>");
}

TEST_F(XmlValues, BstrIsWrittenFreedAndNulled) {
  Bstr text(u"Miller");
  EXPECT_EQ(AddBSTRElement(document(), root(), u"A", text.address()), S_OK);
  EXPECT_FALSE(text);
  EXPECT_EQ(Inner(), "<A>Miller</A>");
}

TEST_F(XmlValues, EmptyBstrIsFreedAndNulledWithoutAnElement) {
  Bstr text(u"");
  EXPECT_EQ(AddBSTRElement(document(), root(), u"A", text.address()), S_OK);
  EXPECT_FALSE(text);
  EXPECT_EQ(AddBSTRElement(document(), root(), u"A", text.address()), S_OK);
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, BstrIsFreedWhicheverStepFails) {
  const char* const calls[] = {"IXMLDOMDocument::createElement", "IXMLDOMDocument::createTextNode",
                               "IXMLDOMNode::appendChild"};
  for (const char* call : calls) {
    Bstr text(u"x");
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    EXPECT_EQ(AddBSTRElement(document(), root(), u"A", text.address()), E_FAIL) << call;
    EXPECT_FALSE(text) << call;
  }
  Bstr text(u"x");
  EXPECT_EQ(AddBSTRElement(document(), nullptr, u"A", text.address()), E_POINTER);
  EXPECT_FALSE(text);
}

TEST_F(XmlValues, FailedTextLeavesAnEmptyElement) {
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::appendChild", 2, 0x80004005);
  EXPECT_EQ(AddStringElement(document(), root(), u"A", u"x"), E_FAIL);
  EXPECT_EQ(Inner(), "<A/>");
}

TEST_F(XmlValues, StringThatCannotBeCopiedAnswersTheLastError) {
  const auto plan = FaultPlan::FailCalls("SysAllocString", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(AddStringElement(document(), root(), u"A", u"x"), 8) << "positive: counts as success";
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, EightBitTextIsWidenedWithItsSign) {
  EXPECT_EQ(AddAnsiStringElement(document(), root(), u"A", "a\xE9\x80\x7F"), S_OK);
  EXPECT_EQ(Inner(), "<A>a\xEF\xBF\xA9\xEF\xBE\x80\x7F</A>") << "U+FFE9 and U+FF80";
}

TEST_F(XmlValues, BooleanIsTrueForAnyNonzeroValue) {
  for (const LONG flag : {1, 2, -1, 0}) {
    EXPECT_EQ(AddBoolElement(document(), root(), u"A", flag), S_OK);
  }
  EXPECT_EQ(Inner(), "<A>TRUE</A><A>TRUE</A><A>TRUE</A><A>FALSE</A>");
}

TEST_F(XmlValues, IntegerIsAlwaysWrittenInSignedDecimal) {
  for (const LONG value :
       {0, -1, -30, std::numeric_limits<LONG>::max(), std::numeric_limits<LONG>::min()}) {
    EXPECT_EQ(AddLongElement(document(), root(), u"A", value), S_OK);
  }
  EXPECT_EQ(Inner(), "<A>0</A><A>-1</A><A>-30</A><A>2147483647</A><A>-2147483648</A>");
}

TEST_F(XmlValues, DateIsTheCalendarDateAndSixZeros) {
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 39493.0), S_OK);
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 39493.9), S_OK);
  EXPECT_EQ(Inner(), "<A>20080215T000000</A><A>20080215T000000</A>");
}

TEST_F(XmlValues, DateZeroIsWritten) {
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 0.0), S_OK);
  EXPECT_EQ(Inner(), "<A>18991230T000000</A>");
}

TEST_F(XmlValues, NoDateWritesNothingAndItsNeighbourDoes) {
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 949998.0), S_OK);
  EXPECT_EQ(AddDateTimeElement(document(), root(), u"A", 949998.0), S_OK);
  EXPECT_EQ(Inner(), "");
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 949998.0 + 1e-9), S_OK);
  EXPECT_EQ(Inner(), "<A>45010101T000000</A>");
}

TEST_F(XmlValues, DateOutsideTheCalendarIsUnexpected) {
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 1e9), E_UNEXPECTED);
  EXPECT_EQ(AddDateTimeElement(document(), root(), u"A", -1e9), E_UNEXPECTED);
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, SystemTimeHasTwoDigitFieldsAndTwentyFourHours) {
  EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 2, 0, 15, 9, 5, 7, 900}), S_OK);
  EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 2, 0, 15, 23, 59, 0, 0}), S_OK);
  EXPECT_EQ(Inner(), "<A>20080215T090507</A><A>20080215T235900</A>");
}

TEST_F(XmlValues, TimeThatCannotBeFormattedLeavesNoElement) {
  EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 13, 0, 1, 0, 0, 0, 0}), S_OK);
  EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 1, 0, 1, 24, 0, 0, 0}), S_OK);
  for (const char* call : {"GetDateFormatW", "GetTimeFormatW"}) {
    const auto plan = FaultPlan::FailCalls(call, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 1, 0, 1, 0, 0, 0, 0}), S_OK);
    EXPECT_TRUE(plan.fired());
  }
  const auto plan = FaultPlan::FailCalls("GetDateFormatW", ERROR_INVALID_PARAMETER);
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 39493.0), S_OK);
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, FormattingThatFailsWithANegativeCodeIsAFailure) {
  const auto plan = FaultPlan::FailCalls("GetDateFormatW", 0x80004005);
  EXPECT_EQ(AddSystemTimeElement(document(), root(), u"A", {2008, 1, 0, 1, 0, 0, 0, 0}), E_FAIL);
  EXPECT_EQ(AddDateElement(document(), root(), u"A", 1.0), E_FAIL);
}

TEST_F(XmlValues, DateTimeIsConvertedToUtc) {
  handheld_.SetZone("America/New_York");
  ResetTimeZoneCache();
  EXPECT_EQ(AddDateTimeElement(document(), root(), u"A", 39493.5), S_OK);        // winter
  EXPECT_EQ(AddDateTimeElement(document(), root(), u"A", 39493.5 + 150), S_OK);  // summer
  EXPECT_EQ(Inner(), "<A>20080215T170000</A><A>20080714T160000</A>");
}

TEST_F(XmlValues, FileTimeIsNotConvertedBetweenZones) {
  handheld_.SetZone("America/New_York");
  ResetTimeZoneCache();
  const SYSTEMTIME time{2008, 2, 0, 15, 13, 45, 1, 0};
  FILETIME ticks{};
  ASSERT_TRUE(SystemTimeToFileTime(&time, &ticks));
  EXPECT_EQ(AddFileTimeElement(document(), root(), u"A", ticks), S_OK);
  EXPECT_EQ(Inner(), "<A>20080215T134501</A>");
}

TEST_F(XmlValues, FileTimeThatDoesNotConvertLeavesNoElement) {
  EXPECT_EQ(AddFileTimeElement(document(), root(), u"A", {0, 0x80000000}), S_OK);
  EXPECT_EQ(Inner(), "");
}

TEST_F(XmlValues, LongTextEndsWithAZero) {
  EXPECT_EQ(std::u16string(LongText(7).data()), u"7");
  EXPECT_EQ(std::u16string(LongText(std::numeric_limits<LONG>::min()).data()), u"-2147483648");
}

}  // namespace
}  // namespace corvane::testing
