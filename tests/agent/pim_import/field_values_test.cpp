#include "agent/pim_import/field_values.h"

#include <gmock/gmock.h>

#include "agent/time/zone.h"
#include "handheld/base/fault.h"
#include "tests/support/parsed_record.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;

class FieldValues : public PimTest {
 protected:
  static std::string Field(const std::string& text) { return "<R><F>" + text + "</F></R>"; }

  // The value's text, or the status where there is none.
  static std::string Value(const std::string& record) {
    const ParsedRecord parsed(record);
    Variant value;
    const HRESULT status = GetChildValue(parsed.get(), u"F", value.put());
    return status == S_OK ? Narrow(value.text()) : std::to_string(status);
  }
  static std::string Multiline(const std::string& text) {
    const ParsedRecord parsed(Field(text));
    Bstr value;
    EXPECT_EQ(GetChildMultilineText(parsed.get(), u"F", value.put()), S_OK);
    return Narrow(value.view());
  }
  static LONG Bool(const std::string& record, LONG defaultValue) {
    const ParsedRecord parsed(record);
    LONG value = 7;
    EXPECT_EQ(GetChildBool(parsed.get(), u"F", &value, defaultValue), S_OK);
    return value;
  }
  static LONG Long(const std::string& record, HRESULT expected = S_OK) {
    const ParsedRecord parsed(record);
    LONG value = 7;
    EXPECT_EQ(GetChildLong(parsed.get(), u"F", &value), expected);
    return value;
  }
};

TEST_F(FieldValues, AreTheTextOfTheFirstChild) {
  EXPECT_EQ(Value(Field("abc")), "abc");
  EXPECT_EQ(Value("<R><F>a</F><F>b</F></R>"), "a");
  EXPECT_EQ(Value(Field("abc<b/>def")), "abc");
  EXPECT_EQ(Value(Field("<![CDATA[a<b]]>")), "a<b");
  EXPECT_EQ(Value(Field("<!--first-->abc")), "first");
}

TEST_F(FieldValues, AreMissingWithoutTheElementOrItsText) {
  const std::string missing = std::to_string(E_FAIL);
  EXPECT_EQ(Value("<R/>"), missing);
  EXPECT_EQ(Value("<R><F/></R>"), missing);
  EXPECT_EQ(Value("<R><F></F></R>"), missing);
  EXPECT_EQ(Value(Field("<b>x</b>")), missing);
  EXPECT_EQ(Value(Field("<![CDATA[]]>")), missing);
  EXPECT_EQ(Value("<R><G><F>deeper</F></G></R>"), missing);
  EXPECT_EQ(Value("<R><f>other case</f></R>"), missing);
}

TEST_F(FieldValues, FailAsTheDomFails) {
  const ParsedRecord parsed(Field("abc"));
  for (const char* call : {"IXMLDOMNode::selectSingleNode", "IXMLDOMNode::get_firstChild",
                           "IXMLDOMNode::get_nodeValue"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x8000FFFF);
    Variant value;
    EXPECT_EQ(GetChildValue(parsed.get(), u"F", value.put()), E_UNEXPECTED) << call;
    Bstr text;
    EXPECT_EQ(GetChildMultilineText(parsed.get(), u"F", text.put()), E_UNEXPECTED) << call;
    EXPECT_FALSE(text);
  }
}

TEST_F(FieldValues, FindsTheFirstElementOfAName) {
  const ParsedRecord parsed("<R><A/><F>1</F></R>");
  ComPtr<IXMLDOMNode> child;
  EXPECT_EQ(FindChildElement(parsed.get(), u"F", child.put()), S_OK);
  EXPECT_TRUE(child);
  EXPECT_EQ(FindChildElement(parsed.get(), u"G", child.put()), E_FAIL);
  EXPECT_FALSE(child);
}

TEST_F(FieldValues, MultilineTextGetsItsCarriageReturns) {
  // The parser itself turns every line end into a line feed, so a carriage return that is to arrive
  // is written as a reference.
  EXPECT_EQ(Multiline("a\nb&#13;&#10;c"), "a\r\nb\r\nc");
  EXPECT_EQ(Multiline("a\r\nb\rc"), "a\r\nb\r\nc");
  EXPECT_EQ(Multiline("&#10;a"), "\r\na");
  EXPECT_EQ(Multiline("a\n\nb"), "a\r\n\r\nb");
  EXPECT_EQ(Multiline("a&#13;&#13;\nb"), "a\r\r\nb");
  EXPECT_EQ(Multiline("a&#13;b"), "a\rb");
  EXPECT_EQ(Multiline("a\n"), "a\r\n");
  EXPECT_EQ(Multiline("plain"), "plain");
}

TEST_F(FieldValues, MultilineTextIsMissingAsAnyOther) {
  const ParsedRecord parsed("<R><F/></R>");
  Bstr text;
  EXPECT_EQ(GetChildMultilineText(parsed.get(), u"F", text.put()), E_FAIL);
  EXPECT_FALSE(text);
}

TEST_F(FieldValues, BooleanIsReadExactly) {
  EXPECT_EQ(Bool(Field("TRUE"), 0), 1);
  EXPECT_EQ(Bool(Field("FALSE"), 1), 0);
  for (const char* text : {"true", "True", "1", "TRUE ", "x"}) {
    EXPECT_EQ(Bool(Field(text), 0), 0) << text;
    EXPECT_EQ(Bool(Field(text), 5), 5) << text;
  }
  EXPECT_EQ(Bool("<R/>", 5), 5);
}

TEST_F(FieldValues, IntegerIsReadUpToTheFirstNonDigit) {
  EXPECT_EQ(Long(Field("12abc")), 12);
  EXPECT_EQ(Long(Field("abc")), 0);
  EXPECT_EQ(Long(Field(" -30")), -30);
}

TEST_F(FieldValues, MissingIntegerLeavesTheOutputAlone) {
  EXPECT_EQ(Long("<R/>", E_FAIL), 7);
  EXPECT_EQ(Long("<R><F/></R>", E_FAIL), 7);
}

TEST_F(FieldValues, IntegerFallsBackToTheDefault) {
  for (const char* record : {"<R/>", "<R><F/></R>"}) {
    const ParsedRecord parsed(record);
    LONG value = 7;
    EXPECT_EQ(GetChildLongDefault(parsed.get(), u"F", &value, 3), S_OK);
    EXPECT_EQ(value, 3);
  }
  const ParsedRecord parsed(Field("15"));
  LONG value = 7;
  EXPECT_EQ(GetChildLongDefault(parsed.get(), u"F", &value, 3), S_OK);
  EXPECT_EQ(value, 15);
}

class DateValues : public FieldValues {
 protected:
  void TearDown() override {
    ResetTimeZoneCache();
    FieldValues::TearDown();
  }
  struct Outcome {
    HRESULT status;
    DATE date;
    friend bool operator==(const Outcome&, const Outcome&) = default;
  };
  static constexpr DATE kUntouched = -1.0;

  static Outcome Date(const std::string& record) {
    const ParsedRecord parsed(record);
    Outcome outcome{S_OK, kUntouched};
    outcome.status = GetChildDate(parsed.get(), u"F", &outcome.date);
    return outcome;
  }
  static Outcome DateTime(const std::string& text) {
    const ParsedRecord parsed(Field(text));
    Outcome outcome{S_OK, kUntouched};
    outcome.status = GetChildDateTime(parsed.get(), u"F", &outcome.date);
    return outcome;
  }
};

TEST_F(DateValues, DateIsTakenAsItStands) {
  handheld_.SetZone("Asia/Tokyo");
  ResetTimeZoneCache();
  EXPECT_EQ(Date(Field("20080215")), (Outcome{S_OK, 39493.0}));
  EXPECT_EQ(Date(Field("20080215T000000")), (Outcome{S_OK, 39493.0}));
  EXPECT_EQ(Date(Field("20080215T1030")), (Outcome{S_OK, 39493.0}));
}

TEST_F(DateValues, MissingDateIsNeitherReadNorScanned) {
  EXPECT_EQ(Date("<R/>"), (Outcome{E_FAIL, kUntouched}));
  EXPECT_EQ(Date("<R><F/></R>"), (Outcome{E_FAIL, kUntouched}));
}

TEST_F(DateValues, TextThatDoesNotScanIsInvalid) {
  SwitchLogOn();
  EXPECT_EQ(Date(Field("2008")), (Outcome{E_INVALIDARG, kUntouched}));
  EXPECT_EQ(Date(Field("yesterday")), (Outcome{E_INVALIDARG, kUntouched}));
  EXPECT_THAT(LogMessages(), ::testing::IsSupersetOf({"swscanf returned 1", "swscanf returned 0"}));
}

TEST_F(DateValues, DateThatDoesNotExistFailsInTheConversionWithAPositiveCode) {
  SwitchLogOn();
  EXPECT_EQ(Date(Field("2008-02-15")), (Outcome{87, kUntouched}));
  EXPECT_EQ(Date(Field("20080230")), (Outcome{87, kUntouched}));
  EXPECT_THAT(LogMessages(), ::testing::Contains("SystemTimeToVariantTime hr = 87"));
}

TEST_F(DateValues, DateFromNoTextIsInvalid) {
  SwitchLogOn();
  DATE date = kUntouched;
  EXPECT_EQ(GetDateFromString(nullptr, &date), E_INVALIDARG);
  EXPECT_EQ(GetDateFromString(u"", &date), E_INVALIDARG);
  EXPECT_EQ(date, kUntouched);
  EXPECT_THAT(LogMessages(),
              ElementsAre("GetDateFromString passed NULL pString", "swscanf returned -1"));
}

TEST_F(DateValues, ConversionThatFailsHandsItsErrorOnAndNoDate) {
  const auto plan = FaultPlan::FailCalls("SystemTimeToVariantTime", ERROR_INVALID_PARAMETER);
  DATE date = kUntouched;
  EXPECT_EQ(GetDateFromString(u"20080215", &date), 87);
  EXPECT_EQ(date, kUntouched);
}

TEST_F(DateValues, DateTimeIsConvertedFromUtc) {
  handheld_.SetZone("America/New_York");
  ResetTimeZoneCache();
  EXPECT_EQ(DateTime("20080215T170000"), (Outcome{S_OK, 39493.5}));
  EXPECT_EQ(DateTime("20080714T160000"), (Outcome{S_OK, 39643.5}));
  EXPECT_EQ(DateTime("20080216T030000"), (Outcome{S_OK, 39493.0 + 22.0 / 24}));
}

TEST_F(DateValues, DateTimeWantsAllSixNumbers) {
  SwitchLogOn();
  EXPECT_EQ(DateTime("20080215T1030"), (Outcome{E_INVALIDARG, kUntouched}));
  EXPECT_EQ(DateTime("20080215"), (Outcome{E_INVALIDARG, kUntouched}));
  EXPECT_EQ(DateTime(""), (Outcome{E_FAIL, kUntouched}));
  EXPECT_THAT(LogMessages(), ::testing::IsSupersetOf({"swscanf returned 5", "swscanf returned 3"}));
}

TEST_F(DateValues, DateTimeThatDoesNotExistHasAPositiveCode) {
  EXPECT_EQ(DateTime("20080230T000000"), (Outcome{87, kUntouched}));
  EXPECT_EQ(DateTime("20080215T250000"), (Outcome{87, kUntouched}));
  EXPECT_EQ(DateTime("01000215T000000"), (Outcome{87, kUntouched}));
}

}  // namespace
}  // namespace corvane::testing
