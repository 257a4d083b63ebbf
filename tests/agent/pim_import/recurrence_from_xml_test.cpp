#include "agent/pim_import/recurrence_from_xml.h"

#include <gmock/gmock.h>

#include "tests/support/calendar_upload_runs.h"
#include "tests/support/fake_calendar.h"
#include "tests/support/parsed_record.h"

namespace corvane::testing {
namespace {

using namespace ce;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;

class RecurrenceFromXml : public FakeCalendarTest {
 protected:
  // What these children set in a pattern.
  std::vector<std::string> Parsed(const std::string& children, HRESULT expected = S_OK) {
    list_.calls.clear();
    const ParsedRecord element(Element("RECURRENCE", children));
    EXPECT_EQ(ParseXMLRecurrence(element.get(), &pattern()), expected) << children;
    return list_.calls;
  }
  // The same of a daily pattern's end alone.
  std::vector<std::string> ParsedEnd(const std::string& children, HRESULT expected = S_OK) {
    std::vector<std::string> calls = Parsed(Daily(children), expected);
    calls.erase(calls.begin(), calls.begin() + 2);
    return calls;
  }
  // The mask that a list of days sets.
  std::string Mask(std::u16string_view days) {
    list_.calls.clear();
    EXPECT_EQ(ParseDaysOfWeek(days, &pattern()), S_OK);
    EXPECT_EQ(list_.calls.size(), 1u);
    return list_.calls.at(0);
  }
};

struct TypeCase {
  const char* name;
  std::string children;
  std::vector<std::string> calls;
};

TEST_F(RecurrenceFromXml, SetsThePropertiesOfEachTypeInOrder) {
  const std::string number = Element("DAYS_OF_WEEK", "1, 3, 5") + Element("WEEK_OF_MONTH", "1") +
                             Element("MONTH", "12") + Element("DAY", "25") +
                             Element("DAY_OF_MONTH", "31") + Element("FREQUENCY", "2");
  const TypeCase kCases[] = {
      {"DAILY", number, {"put_RecurrenceType 0", "put_Interval 2"}},
      {"WEEKLY", number, {"put_RecurrenceType 1", "put_DayOfWeekMask 42", "put_Interval 2"}},
      {"MONTHLY_BY_DATE", number, {"put_RecurrenceType 2", "put_DayOfMonth 31", "put_Interval 2"}},
      {"MONTHLY_BY_DAY",
       number,
       {"put_RecurrenceType 3", "put_Instance 2", "put_DayOfWeekMask 42", "put_Interval 2"}},
      {"YEARLY_BY_DATE",
       number,
       {"put_RecurrenceType 5", "put_DayOfMonth 25", "put_MonthOfYear 12"}},
      {"YEARLY_BY_DAY",
       number,
       {"put_RecurrenceType 6", "put_Instance 2", "put_MonthOfYear 12", "put_DayOfWeekMask 42"}},
  };
  for (const TypeCase& type : kCases) {
    std::vector<std::string> expected = type.calls;
    expected.push_back("put_NoEndDate TRUE");
    EXPECT_THAT(Parsed(Element("TYPE", type.name) + type.children), ElementsAreArray(expected))
        << type.name;
  }
}

TEST_F(RecurrenceFromXml, HasAnIntervalOfOneWithoutAFrequency) {
  EXPECT_THAT(Parsed(Daily()),
              ElementsAre("put_RecurrenceType 0", "put_Interval 1", "put_NoEndDate TRUE"));
  EXPECT_THAT(Parsed(Daily("<FREQUENCY/>")), Contains("put_Interval 1"));
}

TEST_F(RecurrenceFromXml, CountsWeeksOfTheMonthFromZero) {
  const std::string days = Element("TYPE", "MONTHLY_BY_DAY") + Element("DAYS_OF_WEEK", "2");
  EXPECT_THAT(Parsed(days + Element("WEEK_OF_MONTH", "0")), Contains("put_Instance 1"));
  EXPECT_THAT(Parsed(days + Element("WEEK_OF_MONTH", "4")), Contains("put_Instance 5"));
}

TEST_F(RecurrenceFromXml, HandsOnNumbersAsTheyAre) {
  EXPECT_THAT(Parsed(Daily(Element("FREQUENCY", "0"))), Contains("put_Interval 0"));
  EXPECT_THAT(Parsed(Daily(Element("FREQUENCY", "-1"))), Contains("put_Interval -1"));
  EXPECT_THAT(Parsed(Daily(Element("FREQUENCY", "99999999999"))),
              Contains("put_Interval 2147483647"));
  EXPECT_THAT(Parsed(Element("TYPE", "MONTHLY_BY_DAY") + Element("WEEK_OF_MONTH", "99999999999") +
                     Element("DAYS_OF_WEEK", "1")),
              Contains("put_Instance -2147483648"));
}

TEST_F(RecurrenceFromXml, FailsWithoutAType) {
  EXPECT_THAT(Parsed("", E_FAIL), IsEmpty());
  EXPECT_THAT(Parsed("<TYPE/>" + Element("Occurrences", "2"), E_FAIL), IsEmpty());
}

TEST_F(RecurrenceFromXml, RejectsTypesThatAreNotExactlyTheSame) {
  for (const char* type : {"Daily", "Weekly", "weekly", "WEEKLY ", "YEARLY", "MONTHLY", "1"}) {
    EXPECT_THAT(Parsed(Element("TYPE", type) + Element("DAYS_OF_WEEK", "1"), E_FAIL), IsEmpty());
  }
}

TEST_F(RecurrenceFromXml, FailsWithoutANumberThatItsTypeNeeds) {
  const std::pair<const char*, std::vector<const char*>> kNeeds[] = {
      {"WEEKLY", {"DAYS_OF_WEEK"}},
      {"MONTHLY_BY_DATE", {"DAY_OF_MONTH"}},
      {"MONTHLY_BY_DAY", {"WEEK_OF_MONTH", "DAYS_OF_WEEK"}},
      {"YEARLY_BY_DATE", {"DAY", "MONTH"}},
      {"YEARLY_BY_DAY", {"WEEK_OF_MONTH", "MONTH", "DAYS_OF_WEEK"}},
  };
  for (const auto& [type, needs] : kNeeds) {
    for (const std::string missing : needs) {
      std::string children = Element("TYPE", type);
      for (const std::string need : needs) {
        children += Element(need, need == missing ? "" : "1");
      }
      EXPECT_THAT(Parsed(children, E_FAIL), Not(Contains("put_NoEndDate TRUE")))
          << type << " without " << missing;
    }
  }
}

TEST_F(RecurrenceFromXml, StopsAtThePropertyThatRefusesItsValue) {
  list_.answers["put_DayOfWeekMask"] = E_INVALIDARG;
  EXPECT_THAT(Parsed(Element("TYPE", "WEEKLY") + Element("DAYS_OF_WEEK", "6,6"), E_INVALIDARG),
              ElementsAre("put_RecurrenceType 1", "put_DayOfWeekMask 128"));
}

TEST_F(RecurrenceFromXml, EndsAfterItsOccurrences) {
  EXPECT_THAT(ParsedEnd(Element("Occurrences", "10")),
              ElementsAre("put_NoEndDate FALSE", "put_Occurrences 10"));
}

TEST_F(RecurrenceFromXml, PrefersOccurrencesToAnEndDate) {
  EXPECT_THAT(ParsedEnd(Element("END_DATE", "20080301T000000") + Element("Occurrences", "3")),
              ElementsAre("put_NoEndDate FALSE", "put_Occurrences 3"));
}

TEST_F(RecurrenceFromXml, HasNoEndForLessThanOneOccurrence) {
  for (const char* count : {"0", "-5", "abc"}) {
    EXPECT_THAT(ParsedEnd(Element("END_DATE", "20080301") + Element("Occurrences", count)),
                ElementsAre("put_NoEndDate TRUE"))
        << count;
  }
}

TEST_F(RecurrenceFromXml, EndsOnItsEndDateWithoutOccurrences) {
  EXPECT_THAT(ParsedEnd(Element("END_DATE", "20080301T235959") + "<Occurrences/>"),
              ElementsAre("put_NoEndDate FALSE", "put_PatternEndDate 2008-03-01 00:00:00"));
}

TEST_F(RecurrenceFromXml, HasNoEndWithoutAnEndDate) {
  for (const char* end : {"", "<END_DATE/>", "<END_DATE>0</END_DATE>", "<END_DATE>x</END_DATE>"}) {
    EXPECT_THAT(ParsedEnd(end), ElementsAre("put_NoEndDate TRUE")) << end;
  }
}

TEST_F(RecurrenceFromXml, FailsAtAnEndDateThatDoesNotScan) {
  EXPECT_THAT(ParsedEnd(Element("END_DATE", "5"), E_INVALIDARG),
              ElementsAre("put_NoEndDate FALSE"));
}

TEST_F(RecurrenceFromXml, FailsAtAnEndDateThatDoesNotExist) {
  EXPECT_THAT(ParsedEnd(Element("END_DATE", "20080230"), ERROR_INVALID_PARAMETER),
              ElementsAre("put_NoEndDate FALSE"));
}

TEST_F(RecurrenceFromXml, DoesNotTakeAnUnreadableEndForNone) {
  const ParsedRecord element(Element("RECURRENCE", Daily(Element("Occurrences", "2"))));
  // TYPE, FREQUENCY, Occurrences.
  const auto plan = host::FaultPlan::FailNthCall("IXMLDOMNode::selectSingleNode", 3, 8);
  EXPECT_LT(ParseXMLRecurrence(element.get(), &pattern()), 0);
  EXPECT_THAT(list_.calls, Not(Contains("put_NoEndDate TRUE")));
}

TEST_F(RecurrenceFromXml, LogsItsType) {
  const std::pair<const char*, const char*> kTraces[] = {
      {"DAILY", "Daily"},
      {"WEEKLY", "Weekly"},
      {"MONTHLY_BY_DATE", "Monthly By Date"},
      {"MONTHLY_BY_DAY", "Monthly By Day"},
      {"YEARLY_BY_DATE", "Yearly By Date"},
      {"YEARLY_BY_DAY", "Yearly By Day"},
  };
  SwitchLogOn();
  std::vector<std::string> expected;
  for (const auto& [type, trace] : kTraces) {
    const bool complete = type == std::string("DAILY");
    Parsed(Element("TYPE", type), complete ? S_OK : E_FAIL);
    expected.push_back(trace);
    expected.push_back(complete ? "returning 0" : "returning 80004005");
  }
  Parsed(Element("TYPE", "Weekly"), E_FAIL);
  expected.push_back("Unmatched Type");
  expected.push_back("returning 80004005");
  EXPECT_THAT(ReaderMessages(LogMessages()), ElementsAreArray(expected));
}

TEST_F(RecurrenceFromXml, LogsNothingWithoutAType) {
  SwitchLogOn();
  Parsed("", E_FAIL);
  Parsed("<TYPE/>" + Element("Occurrences", "2"), E_FAIL);
  EXPECT_THAT(ReaderMessages(LogMessages()), IsEmpty());
}

using DaysOfWeek = RecurrenceFromXml;

TEST_F(DaysOfWeek, HaveTheWeightsOfTheMask) {
  const char16_t* const kDays[] = {u"0", u"1", u"2", u"3", u"4", u"5", u"6"};
  for (int day = 0; day < 7; ++day) {
    EXPECT_EQ(Mask(kDays[day]), "put_DayOfWeekMask " + std::to_string(1 << day));
  }
}

TEST_F(DaysOfWeek, AreSeparatedByBlanksCommasOrBoth) {
  for (const auto* days : {u"1 3 5", u"1,3,5", u"1, 3, 5", u"5,1,3", u"1x 3y 5z"}) {
    EXPECT_EQ(Mask(days), "put_DayOfWeekMask 42") << Narrow(days);
  }
}

TEST_F(DaysOfWeek, AreLostBeforeABlankThatComesLater) {
  EXPECT_EQ(Mask(u"1,2 3"), "put_DayOfWeekMask 10");
  EXPECT_EQ(Mask(u"1,2,3,4 5,6"), "put_DayOfWeekMask 98");
}

TEST_F(DaysOfWeek, AreSundayBetweenTwoSeparators) {
  EXPECT_EQ(Mask(u"1,,2"), "put_DayOfWeekMask 7");
  EXPECT_EQ(Mask(u",1"), "put_DayOfWeekMask 3");
  EXPECT_EQ(Mask(u"abc"), "put_DayOfWeekMask 1");
  EXPECT_EQ(Mask(u"1, "), "put_DayOfWeekMask 2");
}

TEST_F(DaysOfWeek, CountAnewAtEveryBlankBeforeThem) {
  EXPECT_EQ(Mask(u" 1"), "put_DayOfWeekMask 4");
  EXPECT_EQ(Mask(u"  1"), "put_DayOfWeekMask 6");
  EXPECT_EQ(Mask(u"3  1"), "put_DayOfWeekMask 12");
  EXPECT_EQ(Mask(u"1  "), "put_DayOfWeekMask 3");
}

TEST_F(DaysOfWeek, AreAddedUpWhenTheyAreRepeated) {
  EXPECT_EQ(Mask(u"0,0"), "put_DayOfWeekMask 2");
  EXPECT_EQ(Mask(u"6,6"), "put_DayOfWeekMask 128");
}

TEST_F(DaysOfWeek, LeaveOutOtherNumbers) {
  EXPECT_EQ(Mask(u"7,-1,8,3,4294967297"), "put_DayOfWeekMask 8");
  EXPECT_EQ(Mask(u"9"), "put_DayOfWeekMask 0");
  EXPECT_EQ(Mask(u""), "put_DayOfWeekMask 0");
}

// Whichever way a reader is made to look ahead.
TEST_F(DaysOfWeek, OfAnyLengthAreReadInOneGo) {
  const std::size_t kMany = 1'000'000;
  std::u16string commas;
  std::u16string mixed;
  for (std::size_t index = 0; index < kMany; ++index) {
    commas += u"6,";
    mixed += u" \t";
  }
  EXPECT_EQ(Mask(commas), "put_DayOfWeekMask 64000000");
  EXPECT_EQ(Mask(std::u16string(kMany, u' ') + u"1"), "put_DayOfWeekMask 2000002");
  EXPECT_EQ(Mask(mixed + u"1"), "put_DayOfWeekMask 2000002");
  EXPECT_EQ(Mask(std::u16string(kMany, u' ') + std::u16string(kMany, u'0') + u"1"),
            "put_DayOfWeekMask 2000002");
}

TEST_F(DaysOfWeek, AreLogged) {
  SwitchLogOn();
  Mask(u"1, 3");
  EXPECT_THAT(ReaderMessages(LogMessages()),
              ElementsAre("ParseDaysOfWeek enter 1, 3", "ParseDaysOfWeek exit"));
}

}  // namespace
}  // namespace corvane::testing
