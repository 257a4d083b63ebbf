// What an upload of appointments leaves in the store.
#include <gmock/gmock.h>

#include "tests/support/calendar_upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

const std::string kEveryField =
    Element("LOCATION", "l") + Element("CATEGORIES", "<CATEGORY><Name>A</Name></CATEGORY>") +
    Element("ReminderMinutes", "30") + Element("HAS_REMINDER", "TRUE") +
    Element("Private", "TRUE") + TimedEvent() + Element("BusyStatus", "3") + Element("NOTES", "n") +
    Element("SUBJECT", "s");

class AppointmentFromXml : public CalendarUpload {
 protected:
  LONG AddWithSubject(std::u16string_view subject) { return appointments().AddNamed(subject); }
  std::string Subject(LONG oid) {
    return TextOf(*appointments().Get(oid).get(), &IAppointment::get_Subject);
  }
};

const std::string kSeriesWithExceptions =
    TimedEvent() + Recurring(Daily(Element("DeletedException", "20080216") +
                                   Element("DeletedException", "20080217")));

TEST_F(AppointmentFromXml, StoresEveryField) {
  const auto appointment = AddedAppointment(kEveryField);
  IAppointment& item = *appointment.get();
  EXPECT_EQ(TextOf(item, &IAppointment::get_Subject), "s");
  EXPECT_EQ(TextOf(item, &IAppointment::get_Body), "n");
  EXPECT_EQ(TextOf(item, &IAppointment::get_Location), "l");
  EXPECT_EQ(TextOf(item, &IAppointment::get_Categories), "A");
  EXPECT_EQ(ValueOf(item, &IAppointment::get_AllDayEvent), VARIANT_FALSE);
  EXPECT_EQ(ValueOf(item, &IAppointment::get_BusyStatus), olOutOfOffice);
  EXPECT_EQ(DateTextOf(item, &IAppointment::get_Start), "2008-02-15 10:00:00");
  EXPECT_EQ(DateTextOf(item, &IAppointment::get_End), "2008-02-15 11:00:00");
  EXPECT_EQ(ValueOf(item, &IAppointment::get_Sensitivity), olPrivate);
  EXPECT_EQ(ValueOf(item, &IAppointment::get_ReminderSet), VARIANT_TRUE);
  EXPECT_EQ(ValueOf(item, &IAppointment::get_ReminderMinutesBeforeStart), 30);
  EXPECT_EQ(ValueOf(item, &IAppointment::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(AppointmentFromXml, GoesByTheZoneOfTheHandheldAtThisUpload) {
  AddedAppointment(TimedEvent());  // by UTC, which is then known
  handheld_.SetZone("Asia/Tokyo");
  const auto appointment = AddedAppointment(TimedEvent());
  EXPECT_EQ(DateTextOf(*appointment.get(), &IAppointment::get_Start), "2008-02-15 19:00:00");
}

TEST_F(AppointmentFromXml, StoresAWholeDay) {
  const auto appointment = AddedAppointment(AllDayEvent("20080301", "20080301"));
  EXPECT_EQ(ValueOf(*appointment.get(), &IAppointment::get_AllDayEvent), VARIANT_TRUE);
  EXPECT_EQ(ValueOf(*appointment.get(), &IAppointment::get_Duration), 1440);
}

TEST_F(AppointmentFromXml, StoresASeries) {
  const auto appointment = AddedAppointment(
      TimedEvent() + Recurring(Element("TYPE", "WEEKLY") + Element("DAYS_OF_WEEK", "1, 3, 5") +
                               Element("FREQUENCY", "2") + Element("Occurrences", "4")));
  const auto pattern = PatternOf(*appointment.get());
  EXPECT_EQ(ValueOf(*appointment.get(), &IAppointment::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_RecurrenceType), olRecursWeekly);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_DayOfWeekMask), 42);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_Interval), 2);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_Occurrences), 4);
  EXPECT_EQ(DateTextOf(*pattern.get(), &IRecurrencePattern::get_PatternEndDate),
            "2008-02-29 00:00:00");
}

TEST_F(AppointmentFromXml, MakesASeriesSingleAgain) {
  const LONG oid = UploadAppointment(kSeriesWithExceptions).oid;
  EXPECT_EQ(UploadAppointment(TimedEvent(), OidTag(oid)), (RecordReply{oid, S_OK}));
  EXPECT_EQ(ValueOf(*appointments().Get(oid).get(), &IAppointment::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(AppointmentFromXml, DropsTheOldExceptionsOfASeriesThatChanges) {
  const LONG oid = UploadAppointment(kSeriesWithExceptions).oid;
  ASSERT_EQ(ExceptionsOf(*appointments().Get(oid).get()).size(), 2u);
  EXPECT_EQ(
      UploadAppointment(TimedEvent() + Recurring(Daily(Element("DeletedException", "20080220"))),
                        OidTag(oid)),
      (RecordReply{oid, S_OK}));
  EXPECT_THAT(ExceptionsOf(*appointments().Get(oid).get()),
              ElementsAre("2008-02-20 10:00:00 deleted"));
}

TEST_F(AppointmentFromXml, NeedsTheRecurrenceOfASeries) {
  EXPECT_EQ(UploadAppointment(TimedEvent() + Element("IS_RECURRING", "TRUE")),
            (RecordReply{0, E_FAIL}));
  EXPECT_THAT(appointments().Oids(), IsEmpty());
}

TEST_F(AppointmentFromXml, HasDroppedTheOldExceptionsWhenTheRecurrenceIsMissing) {
  const LONG oid = UploadAppointment(Element("SUBJECT", "old") + kSeriesWithExceptions).oid;
  EXPECT_EQ(
      UploadAppointment(Element("SUBJECT", "new") + TimedEvent() + Element("IS_RECURRING", "TRUE"),
                        OidTag(oid)),
      (RecordReply{0, E_FAIL}));
  EXPECT_EQ(ValueOf(*appointments().Get(oid).get(), &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(Subject(oid), "new");
}

TEST_F(AppointmentFromXml, KeepsTheSeriesThatHasNoExceptionsWhenTheRecurrenceIsMissing) {
  const LONG oid = UploadAppointment(TimedEvent() + Recurring(Daily())).oid;
  EXPECT_EQ(UploadAppointment(TimedEvent() + Element("IS_RECURRING", "TRUE"), OidTag(oid)),
            (RecordReply{0, E_FAIL}));
  EXPECT_EQ(ValueOf(*appointments().Get(oid).get(), &IAppointment::get_IsRecurring), VARIANT_TRUE);
}

TEST_F(AppointmentFromXml, LeavesWhatTheWireNeverCarries) {
  const LONG oid = appointments().Add([](IAppointment& item) { SetInk(item, kInkNote); });
  UploadAppointment(Element("BodyInk", "FALSE") + TimedEvent(), OidTag(oid));
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  const auto appointment = appointments().Get(oid);
  ASSERT_EQ(appointment->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(block), bytes), kInkNote);
}

const std::string kBadException =
    TimedEvent() +
    Recurring(Daily(Element("DeletedException", "20080216") + Element("DeletedException", "soon")));

using AppointmentDecision = AppointmentFromXml;

TEST_F(AppointmentDecision, DeletesANewAppointmentWhoseExceptionsFail) {
  EXPECT_EQ(UploadAppointment(kBadException), (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(UploadAppointment(kBadException, "Oid='0'"), (RecordReply{0, E_INVALIDARG}));
  EXPECT_THAT(appointments().Oids(), IsEmpty());
}

TEST_F(AppointmentDecision, DeletesANewAppointmentWhoseExceptionIsOnNoDate) {
  EXPECT_EQ(
      UploadAppointment(TimedEvent() + Recurring(Daily(Element("DeletedException", "20080231")))),
      (RecordReply{0, ERROR_INVALID_PARAMETER}));
  EXPECT_THAT(appointments().Oids(), IsEmpty());
}

TEST_F(AppointmentDecision, LeavesAChangedAppointmentSavedWhoseExceptionsFail) {
  const LONG oid = AddWithSubject(u"old");
  EXPECT_EQ(UploadAppointment(Element("SUBJECT", "new") + kBadException, OidTag(oid)),
            (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(Subject(oid), "new");
  EXPECT_THAT(ExceptionsOf(*appointments().Get(oid).get()),
              ElementsAre("2008-02-16 10:00:00 deleted"));
}

TEST_F(AppointmentDecision, DeletesNothingWhenTheRecordHadAnIdentifier) {
  EXPECT_EQ(UploadAppointment(kBadException, "Oid='77'"), (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(appointments().Oids().size(), 1u);
}

TEST_F(AppointmentDecision, StoresNothingOfANewAppointmentThatFailsBefore) {
  EXPECT_EQ(UploadAppointment(Element("EVENT_START", "soon")), (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(UploadAppointment(Element("EVENT_START", "20080231T000000")),
            (RecordReply{0, ERROR_INVALID_PARAMETER}));
  EXPECT_THAT(appointments().Oids(), IsEmpty());
}

TEST_F(AppointmentDecision, LeavesAChangedAppointmentThatFailsBeforeAsItWas) {
  const LONG oid = AddWithSubject(u"old");
  EXPECT_EQ(
      UploadAppointment(Element("SUBJECT", "new") + Element("EVENT_START", "soon"), OidTag(oid)),
      (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(Subject(oid), "old");
}

TEST_F(AppointmentDecision, NeedsTheFolderOnlyToAdd) {
  const LONG oid = AddWithSubject(u"one");
  const auto plan = FaultPlan::FailCalls("IPOutlookApp::GetDefaultFolder", 0x80004005);
  EXPECT_EQ(UploadAppointment("", OidTag(oid)), (RecordReply{oid, S_OK}));
  EXPECT_EQ(UploadAppointment(""), (RecordReply{0, E_FAIL}));
}

TEST_F(AppointmentDecision, DeletesTheAppointment) {
  const LONG oid = AddWithSubject(u"one");
  EXPECT_EQ(UploadAppointment("", OidTag(oid) + " Delete='1'"), (RecordReply{oid, S_OK}));
  EXPECT_EQ(UploadAppointment("", OidTag(oid) + " Delete='1'"), (RecordReply{oid, S_OK}));
  EXPECT_THAT(appointments().Oids(), IsEmpty());
}

TEST_F(AppointmentDecision, TakesAnotherKindsIdentifierForAnUnknownOne) {
  const LONG contact = store_->AddNamed(u"Ada");
  const LONG task = tasks().AddNamed(u"task");
  for (const LONG oid : {contact, task}) {
    EXPECT_EQ(UploadAppointment("", OidTag(oid) + " Delete='1'"), (RecordReply{oid, S_OK}));
    EXPECT_NE(UploadAppointment("", OidTag(oid)).oid, oid);
  }
  EXPECT_EQ(store_->Oids().size(), 1u);
  EXPECT_EQ(tasks().Oids().size(), 1u);
  EXPECT_EQ(appointments().Oids().size(), 2u);
}

TEST_F(AppointmentDecision, GoesOnBehindARecordThatFails) {
  const UploadAnswer answer =
      Upload({RootOf(AppointmentRecord(kBadException) + AppointmentRecord(TimedEvent()))});
  ASSERT_EQ(answer.replies.size(), 2u);
  EXPECT_EQ(answer.replies[0], (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(answer.replies[1].result, S_OK);
  EXPECT_THAT(appointments().Oids(), ElementsAre(answer.replies[1].oid));
}

TEST_F(AppointmentFromXml, LogsItsSteps) {
  SwitchLogOn();
  const RecordReply reply = UploadAppointment(TimedEvent());
  EXPECT_EQ(reply.oid, 1);
  const std::vector<std::string> messages = LogMessages();
  const auto begin = std::ranges::find(messages, "Entering ParseXMLAppointment");
  ASSERT_NE(begin, messages.end());
  EXPECT_THAT(std::vector<std::string>(begin, messages.end()),
              ElementsAre("Entering ParseXMLAppointment", "getNamedItem returned 1",
                          "Found something to Add", "Save must have worked",
                          "Writing oid 0x00000001, hr = 0", "Exiting ParseXMLAppointment hr = 0",
                          "returning with hr = 0"));
}

TEST_F(AppointmentFromXml, LogsItsFailure) {
  SwitchLogOn();
  UploadAppointment(kBadException);
  const std::vector<std::string> messages = LogMessages();
  EXPECT_THAT(messages, IsSupersetOf({"Writing oid 0x00000000, hr = -2147024809",
                                      "Exiting ParseXMLAppointment hr = -2147024809"}));
  EXPECT_THAT(messages, Not(Contains("Save must have worked")));
}

struct Refused {
  const char* name;
  std::string children;
};

// Whatever is sent, the record fails as a whole and the agent goes on.
TEST_F(AppointmentFromXml, RefusesValuesThatNoAppointmentHas) {
  const auto series = [](const std::string& recurrence) {
    return TimedEvent() + Recurring(recurrence);
  };
  const auto typed = [&](const std::string& type, const std::string& more) {
    return series(Element("TYPE", type) + more);
  };
  const Refused kCases[] = {
      {"start", Element("EVENT_START", "18991231T100000")},
      {"late start", Element("EVENT_START", "30010101T100000")},
      {"end", Element("EVENT_END", "30010101T100000")},
      {"duration", AllDayEvent("20080301", "20080201")},
      {"duration beyond the days", AllDayEvent("29991231", "30050101")},
      {"interval 0", series(Daily(Element("FREQUENCY", "0")))},
      {"interval 1000", series(Daily(Element("FREQUENCY", "1000")))},
      {"interval -1", series(Daily(Element("FREQUENCY", "-1")))},
      {"huge interval", series(Daily(Element("FREQUENCY", "4294967297")))},
      {"no day", typed("WEEKLY", Element("DAYS_OF_WEEK", "9"))},
      {"mask 128", typed("WEEKLY", Element("DAYS_OF_WEEK", "6,6"))},
      {"instance 6",
       typed("MONTHLY_BY_DAY", Element("WEEK_OF_MONTH", "5") + Element("DAYS_OF_WEEK", "1"))},
      {"instance 0",
       typed("MONTHLY_BY_DAY", Element("WEEK_OF_MONTH", "-1") + Element("DAYS_OF_WEEK", "1"))},
      {"huge instance", typed("MONTHLY_BY_DAY", Element("WEEK_OF_MONTH", "2147483647") +
                                                    Element("DAYS_OF_WEEK", "1"))},
      {"day 0", typed("MONTHLY_BY_DATE", Element("DAY_OF_MONTH", "0"))},
      {"day 32", typed("MONTHLY_BY_DATE", Element("DAY_OF_MONTH", "32"))},
      {"month 13", typed("YEARLY_BY_DATE", Element("DAY", "1") + Element("MONTH", "13"))},
      {"month 0", typed("YEARLY_BY_DATE", Element("DAY", "1") + Element("MONTH", "0"))},
      {"ended before", series(Daily(Element("END_DATE", "20080214")))},
      {"no end date", series(Daily(Element("END_DATE", "30010101")))},
      {"long subject", Element("SUBJECT", std::string(5000, 's'))},
      {"long location", Element("LOCATION", std::string(1024, 'l'))},
      {"long notes", Element("NOTES", std::string(40000, 'n'))},
  };
  for (const Refused& refused : kCases) {
    const RecordReply reply = UploadAppointment(refused.children);
    EXPECT_LT(reply.result, 0) << refused.name;
    EXPECT_EQ(reply.oid, 0) << refused.name;
    EXPECT_THAT(appointments().Oids(), IsEmpty()) << refused.name;
  }
}

TEST_F(AppointmentFromXml, DoesNotLookIntoNestedElements) {
  std::string deep = Element("SUBJECT", "deep");
  for (int level = 0; level < 100; ++level) {
    deep = Element("ChangedException", Element("RECURRENCE", deep));
  }
  const auto appointment = AddedAppointment(deep + TimedEvent());
  EXPECT_EQ(TextOf(*appointment.get(), &IAppointment::get_Subject), "");
  EXPECT_EQ(UploadAppointment(TimedEvent() + Recurring(Daily(deep))).result, E_FAIL)
      << "a change without an original date";
}

}  // namespace
}  // namespace corvane::testing
