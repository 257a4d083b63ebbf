#include "agent/pim_export/recurrence_to_xml.h"

#include <gmock/gmock.h>

#include <limits>

#include "handheld/base/fault.h"
#include "tests/support/calendar_test.h"
#include "tests/support/fake_calendar.h"
#include "tests/support/golden.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr LONG kMonday = 2;
constexpr LONG kTuesday = 4;

class RecurrenceToXml : public FakeCalendarTest {
 protected:
  std::string Written(bool withExceptions = true, HRESULT expected = S_OK) {
    const TestDocument document;
    EXPECT_EQ(
        AddRecurrenceToChild(document.document(), document.root(), pattern_.get(), withExceptions),
        expected);
    return document.Inner();
  }
  // Without the tags of RECURRENCE itself.
  std::string Children(bool withExceptions = true) {
    const std::string text = Written(withExceptions);
    const std::string begin = "<RECURRENCE>";
    const std::string end = "</RECURRENCE>";
    if (!text.starts_with(begin) || !text.ends_with(end)) return "no RECURRENCE: " + text;
    return text.substr(begin.size(), text.size() - begin.size() - end.size());
  }
  std::string DaysOf(LONG mask) {
    pattern().RecurrenceType = olRecursWeekly;
    pattern().DayOfWeekMask = mask;
    return Children();
  }
  void EndOn(DATE date, LONG occurrences) {
    pattern().NoEndDate = VARIANT_FALSE;
    pattern().PatternEndDate = date;
    pattern().Occurrences = occurrences;
  }
};

TEST_F(RecurrenceToXml, WritesADailyPatternWithItsTypeAlone) {
  EXPECT_EQ(Children(), "<TYPE>DAILY</TYPE><END_DATE>0</END_DATE>");
}

TEST_F(RecurrenceToXml, WritesAWeeklyPatternWithItsDays) {
  EXPECT_EQ(DaysOf(kMonday),
            "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>0</END_DATE>");
}

TEST_F(RecurrenceToXml, WritesAMonthlyPatternWithTheDayOfTheMonth) {
  pattern().RecurrenceType = olRecursMonthly;
  pattern().DayOfMonth = 31;
  EXPECT_EQ(Children(),
            "<TYPE>MONTHLY_BY_DATE</TYPE><DAY_OF_MONTH>31</DAY_OF_MONTH><END_DATE>0</END_DATE>");
}

TEST_F(RecurrenceToXml, CountsTheWeeksOfAMonthFromZero) {
  pattern().RecurrenceType = olRecursMonthNth;
  pattern().Instance = 2;
  pattern().DayOfWeekMask = kTuesday;
  pattern().Interval = 2;
  EXPECT_EQ(Children(),
            "<TYPE>MONTHLY_BY_DAY</TYPE><WEEK_OF_MONTH>1</WEEK_OF_MONTH>"
            "<DAYS_OF_WEEK>2</DAYS_OF_WEEK><FREQUENCY>2</FREQUENCY><END_DATE>0</END_DATE>");
  pattern().Instance = 1;
  EXPECT_THAT(Children(), HasSubstr("<WEEK_OF_MONTH>0<"));
  pattern().Instance = 5;
  EXPECT_THAT(Children(), HasSubstr("<WEEK_OF_MONTH>4<"));
}

TEST_F(RecurrenceToXml, WritesAWeekThatNoMonthHas) {
  pattern().RecurrenceType = olRecursMonthNth;
  pattern().Instance = 0;
  EXPECT_THAT(Children(), HasSubstr("<WEEK_OF_MONTH>-1<"));
  pattern().Instance = std::numeric_limits<LONG>::min();
  EXPECT_THAT(Children(), HasSubstr("<WEEK_OF_MONTH>2147483647<"));
}

TEST_F(RecurrenceToXml, CallsTheDayOfAYearlyPatternByAnotherName) {
  pattern().RecurrenceType = olRecursYearly;
  pattern().DayOfMonth = 25;
  pattern().MonthOfYear = 12;
  EndOn(DateOf(2012, 12, 25), 5);
  EXPECT_EQ(Children(),
            "<TYPE>YEARLY_BY_DATE</TYPE><DAY>25</DAY><MONTH>12</MONTH>"
            "<END_DATE>20121225T000000</END_DATE><Occurrences>5</Occurrences>");
}

TEST_F(RecurrenceToXml, WritesTheMonthOfAYearlyPatternBetweenWeekAndDays) {
  pattern().RecurrenceType = olRecursYearNth;
  pattern().Instance = 5;
  pattern().MonthOfYear = 10;
  pattern().DayOfWeekMask = 65;
  EXPECT_EQ(Children(),
            "<TYPE>YEARLY_BY_DAY</TYPE><WEEK_OF_MONTH>4</WEEK_OF_MONTH><MONTH>10</MONTH>"
            "<DAYS_OF_WEEK>0, 6</DAYS_OF_WEEK><END_DATE>0</END_DATE>");
}

TEST_F(RecurrenceToXml, WritesNoTypeForANumberThatStandsForNone) {
  pattern().Interval = 3;
  pattern().DayOfWeekMask = 127;
  pattern().AddDeleted(DateOf(2008, 2, 15));
  for (const LONG type : {4, 7, -1}) {
    pattern().RecurrenceType = type;
    EXPECT_EQ(Children(),
              "<END_DATE>0</END_DATE><DeletedException>20080215T000000</DeletedException>")
        << type;
  }
}

TEST_F(RecurrenceToXml, NeverWritesTheIntervalOfAYearlyPattern) {
  pattern().Interval = 4;
  for (const LONG type : {olRecursYearly, olRecursYearNth}) {
    pattern().RecurrenceType = type;
    EXPECT_THAT(Children(), Not(HasSubstr("FREQUENCY"))) << type;
  }
  const auto plan = FaultPlan::FailCalls("IRecurrencePattern::get_Interval", 0x80004005);
  Children();
  EXPECT_FALSE(plan.fired());
}

TEST_F(RecurrenceToXml, WritesEveryIntervalButOne) {
  for (const LONG interval : {0, 2, 999, -1}) {
    pattern().Interval = interval;
    EXPECT_THAT(Children(), HasSubstr("<FREQUENCY>" + std::to_string(interval) + "</FREQUENCY>"));
  }
}

TEST_F(RecurrenceToXml, ListsTheDaysOfTheWeek) {
  const auto list = [](const std::string& days) {
    return "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>" + days + "</DAYS_OF_WEEK><END_DATE>0</END_DATE>";
  };
  EXPECT_EQ(DaysOf(1), list("0"));
  EXPECT_EQ(DaysOf(64), list("6"));
  EXPECT_EQ(DaysOf(42), list("1, 3, 5"));
  EXPECT_EQ(DaysOf(127), list("0, 1, 2, 3, 4, 5, 6"));
}

TEST_F(RecurrenceToXml, WritesNoListForAMaskWithoutADay) {
  EXPECT_EQ(DaysOf(0), "<TYPE>WEEKLY</TYPE><END_DATE>0</END_DATE>");
  EXPECT_EQ(DaysOf(128), "<TYPE>WEEKLY</TYPE><END_DATE>0</END_DATE>");
}

TEST_F(RecurrenceToXml, KeepsTheOccurrencesOfAnEndThatIsNoDate) {
  EndOn(kNoDate, 3);
  EXPECT_EQ(Children(), "<TYPE>DAILY</TYPE><Occurrences>3</Occurrences>");
}

TEST_F(RecurrenceToXml, DoesNotReadTheEndOfAPatternWithoutOne) {
  for (const char* call : {"get_PatternEndDate", "get_Occurrences"}) {
    const auto plan = FaultPlan::FailCalls(std::string("IRecurrencePattern::") + call, 0x80004005);
    Children();
    EXPECT_FALSE(plan.fired()) << call;
  }
}

TEST_F(RecurrenceToXml, WritesTheExceptionsInTheirOrder) {
  FakeAppointment& changed = pattern().AddChanged(DateOf(2008, 2, 16, 13, 45));
  changed.Subject = u"Moved";
  changed.Start = DateOf(2008, 2, 17, 10);
  changed.End = DateOf(2008, 2, 17, 11);
  changed.Categories = u"not in an exception";
  changed.ReminderSet = VARIANT_TRUE;
  pattern().AddDeleted(DateOf(2008, 2, 18, 13, 45));
  pattern().AddChanged(DateOf(2008, 2, 19)).Body = u"Noted";
  const TestDocument document;
  EXPECT_EQ(AddRecurrenceToChild(document.document(), document.root(), pattern_.get(), true), S_OK);
  EXPECT_TRUE(EqualsGolden("recurrence_exceptions.xml", document.Text()));
}

TEST_F(RecurrenceToXml, KeepsOnlyTheDateOfAnOriginalDate) {
  pattern().AddChanged(DateOf(2008, 2, 16, 23, 59));
  EXPECT_THAT(Children(), HasSubstr("<OriginalDate>20080216T000000</OriginalDate>"));
}

TEST_F(RecurrenceToXml, WritesNoExceptionsUnlessAskedFor) {
  pattern().AddDeleted(DateOf(2008, 2, 16));
  pattern().AddChanged(DateOf(2008, 2, 17));
  const auto plan = FaultPlan::FailCalls("IRecurrencePattern::get_Exceptions", 0x80004005);
  EXPECT_EQ(Children(false), "<TYPE>DAILY</TYPE><END_DATE>0</END_DATE>");
  EXPECT_FALSE(plan.fired());
}

TEST_F(RecurrenceToXml, AppendsNothingWhenAReadFails) {
  pattern().RecurrenceType = olRecursYearNth;
  pattern().DayOfWeekMask = kMonday;
  EndOn(DateOf(2009, 1, 1), 2);
  pattern().AddChanged(DateOf(2008, 2, 16));
  const auto expectNothing = [&](const std::string& call) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    EXPECT_EQ(Written(true, E_FAIL), "") << call;
    EXPECT_TRUE(plan.fired()) << call;
  };
  for (const char* call :
       {"get_RecurrenceType", "get_Instance", "get_MonthOfYear", "get_DayOfWeekMask",
        "get_NoEndDate", "get_PatternEndDate", "get_Occurrences", "get_Exceptions"}) {
    expectNothing(std::string("IRecurrencePattern::") + call);
  }
  for (const char* call : {"IExceptions::get_Count", "IExceptions::Item", "IException::get_Deleted",
                           "IException::get_OriginalDate", "IException::get_AppointmentItem",
                           "IAppointment::get_Subject"}) {
    expectNothing(call);
  }
  pattern().RecurrenceType = olRecursMonthly;
  expectNothing("IRecurrencePattern::get_DayOfMonth");
  expectNothing("IRecurrencePattern::get_Interval");
}

TEST_F(RecurrenceToXml, GoesOnBehindADeletedOccurrenceThatCannotBeWritten) {
  pattern().AddDeleted(1.0e9);  // no date at all
  pattern().AddDeleted(DateOf(2008, 2, 18));
  EXPECT_EQ(Children(),
            "<TYPE>DAILY</TYPE><END_DATE>0</END_DATE>"
            "<DeletedException>20080218T000000</DeletedException>");
}

TEST_F(RecurrenceToXml, FailsForAChangedOccurrenceThatCannotBeWritten) {
  pattern().AddChanged(1.0e9);
  EXPECT_EQ(Written(true, E_UNEXPECTED), "");
}

TEST_F(RecurrenceToXml, FailsForAChangedOccurrenceWithoutAnItem) {
  pattern().AddChanged(DateOf(2008, 2, 16));
  pattern().Exceptions->items[0]->AppointmentItem.reset();
  EXPECT_EQ(Written(true, E_POINTER), "");
}

TEST_F(RecurrenceToXml, RefusesNullPointers) {
  const TestDocument document;
  EXPECT_EQ(AddRecurrenceToChild(document.document(), document.root(), nullptr, true),
            E_UNEXPECTED);
  EXPECT_EQ(AddRecurrenceToChild(document.document(), nullptr, pattern_.get(), true), E_POINTER);
  EXPECT_EQ(AddRecurrenceToChild(nullptr, document.root(), pattern_.get(), true), E_POINTER);
  EXPECT_EQ(document.Inner(), "");
}

TEST_F(RecurrenceToXml, LogsTheTypeInWordsOfItsOwn) {
  SwitchLogOn();
  for (const LONG type : {0, 1, 2, 3, 4, 5, 6}) {
    pattern().RecurrenceType = type;
    Written();
  }
  const std::string entry = "AddRecurrenceToChild";
  EXPECT_THAT(LogMessages(), ElementsAre(entry, "Daily", entry, "Weekly", entry, "Monthly", entry,
                                         "MonthNth", entry, entry, "Yearly", entry, "YearNth"));
}

TEST_F(RecurrenceToXml, LogsWhatItIsAskedAlsoWithoutAPattern) {
  SwitchLogOn();
  const TestDocument document;
  EXPECT_EQ(AddRecurrenceToChild(document.document(), document.root(), nullptr, false),
            E_UNEXPECTED);
  EXPECT_THAT(LogMessages(), ElementsAre("AddRecurrenceToChild"));
}

TEST_F(RecurrenceToXml, LogsEveryChangedOccurrenceButNoDeletedOne) {
  pattern().AddDeleted(DateOf(2008, 2, 15));
  pattern().AddChanged(DateOf(2008, 2, 16)).Subject = u"Moved";
  SwitchLogOn();
  Written();
  EXPECT_THAT(LogMessages(), ElementsAre("AddRecurrenceToChild", "Daily", "get_AppointmentItem",
                                         "Got Subject Moved"));
}

}  // namespace
}  // namespace corvane::testing
