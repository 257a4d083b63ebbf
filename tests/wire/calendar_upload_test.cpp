// Streamed uploads of appointments and tasks, and what a download says of them afterwards.
#include <gtest/gtest.h>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kNoSuchDate = 87;

std::string Tagged(std::string_view name, std::string_view attributes, std::string_view children) {
  return "<" + std::string(name) + std::string(attributes) + ">" + std::string(children) + "</" +
         std::string(name) + ">";
}
std::string Calendar(std::string_view attributes, std::string_view children) {
  return Tagged("CALENDAR", attributes, children);
}
std::string Task(std::string_view attributes, std::string_view children) {
  return Tagged("TASK", attributes, children);
}
std::string Oid(std::uint32_t oid) {
  return " Oid=\"" + std::to_string(static_cast<std::int32_t>(oid)) + "\"";
}

constexpr std::string_view kMeeting =
    "<SUBJECT>Meeting</SUBJECT><LOCATION>Room 1</LOCATION>"
    "<EVENT_START>20080215T100000</EVENT_START><EVENT_END>20080215T110000</EVENT_END>"
    "<BusyStatus>2</BusyStatus>";

std::string Weekly(std::string_view exceptions) {
  return std::string(kMeeting) +
         "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>WEEKLY</TYPE>"
         "<DAYS_OF_WEEK>5</DAYS_OF_WEEK><Occurrences>4</Occurrences>" +
         std::string(exceptions) + "</RECURRENCE>";
}

class CalendarUploadWire : public WireTest {
 protected:
  std::vector<UploadReply> UploadAll(const std::string& records, std::size_t count) {
    return Upload({"<root>" + records + "</root>"}, count);
  }
  UploadReply UploadOne(const std::string& record) { return UploadAll(record, 1).at(0); }
  std::string All(std::uint32_t kind) {
    std::string all;
    for (const auto& document : CallDownload("DownloadAllPIMRecords", Word(kind)).documents) {
      all += document;
    }
    return all;
  }
  bool Holds(std::uint32_t kind, std::string_view text) {
    return All(kind).find(text) != std::string::npos;
  }
};

TEST_F(CalendarUploadWire, AddsAnAppointment) {
  settings_.firstOid = 700;
  EXPECT_EQ(UploadOne(Calendar("", kMeeting)), (UploadReply{700, 0}));
  EXPECT_TRUE(Holds(kAppointments, Calendar(Oid(700), kMeeting)));
}

TEST_F(CalendarUploadWire, AddsASeriesWithItsExceptions) {
  settings_.firstOid = 700;
  const std::string exceptions =
      "<DeletedException>20080222T000000</DeletedException>"
      "<ChangedException><SUBJECT>Moved</SUBJECT><EVENT_START>20080301T090000</EVENT_START>"
      "<EVENT_END>20080301T100000</EVENT_END><BusyStatus>1</BusyStatus>"
      "<OriginalDate>20080229T000000</OriginalDate></ChangedException>";
  EXPECT_EQ(UploadOne(Calendar("", Weekly(exceptions))), (UploadReply{700, 0}));
  EXPECT_TRUE(Holds(kAppointments, exceptions + "</RECURRENCE>"));
  EXPECT_TRUE(Holds(kAppointments,
                    "<END_DATE>20080307T000000</END_DATE>"
                    "<Occurrences>4</Occurrences>"));
}

TEST_F(CalendarUploadWire, ChangesAndDeletesAppointments) {
  const auto added = UploadAll(Calendar("", kMeeting) + Calendar("", kMeeting), 2);
  const auto replies =
      UploadAll(Calendar(Oid(added[1].oid), "<SUBJECT>Changed</SUBJECT>") +
                    Calendar(Oid(added[0].oid) + " Delete=\"1\"", "") +
                    Calendar(Oid(4711) + " Delete=\"1\"", "") + Calendar(" Delete=\"1\"", kMeeting),
                4);
  EXPECT_EQ(replies,
            (std::vector<UploadReply>{{added[1].oid, 0}, {added[0].oid, 0}, {4711, 0}, {0, 0}}));
  EXPECT_EQ(OidsOf(All(kAppointments)), std::vector<std::uint32_t>{added[1].oid});
  EXPECT_TRUE(Holds(kAppointments, "<SUBJECT>Changed</SUBJECT>"));
  EXPECT_FALSE(Holds(kAppointments, "<LOCATION>")) << "what the record lacks is cleared";
}

TEST_F(CalendarUploadWire, AddsChangesAndDeletesTasks) {
  settings_.firstOid = 0xFFFFFFF0;
  EXPECT_EQ(UploadOne(Task("",
                           "<SUBJECT>Tax</SUBJECT><DUE_DATE>20080301T000000</DUE_DATE>"
                           "<HAS_REMINDER>TRUE</HAS_REMINDER>"
                           "<ReminderMinutes>60</ReminderMinutes><PRIORITY>1</PRIORITY>")),
            (UploadReply{0xFFFFFFF0, 0}));
  EXPECT_TRUE(Holds(kTasks, Task(Oid(0xFFFFFFF0),
                                 "<SUBJECT>Tax</SUBJECT><DUE_DATE>20080301T000000</DUE_DATE>"
                                 "<HAS_REMINDER>TRUE</HAS_REMINDER>"
                                 "<ReminderTime>20080229T230000</ReminderTime>"
                                 "<ReminderMinutes>60</ReminderMinutes><PRIORITY>2</PRIORITY>")));
  EXPECT_EQ(UploadOne(Task(" Oid=\"-16\"", "<SUBJECT>Paid</SUBJECT>")),
            (UploadReply{0xFFFFFFF0, 0}));
  EXPECT_TRUE(
      Holds(kTasks, Task(Oid(0xFFFFFFF0), "<SUBJECT>Paid</SUBJECT><PRIORITY>3</PRIORITY>")));
  EXPECT_EQ(UploadOne(Task(" Oid=\"-16\" Delete=\"1\"", "")), (UploadReply{0xFFFFFFF0, 0}));
  EXPECT_EQ(CountElements(All(kTasks), "TASK"), 0u);
}

TEST_F(CalendarUploadWire, AnswersEveryKindInDocumentOrder) {
  settings_.firstOid = 10;
  const auto replies = UploadAll(Task("", "<SUBJECT>t</SUBJECT>") + Calendar("", kMeeting) +
                                     "<CONTACT><FIRST_NAME>Ada</FIRST_NAME></CONTACT>",
                                 3);
  EXPECT_EQ(replies, (std::vector<UploadReply>{{10, 0}, {11, 0}, {12, 0}}));
  EXPECT_EQ(OidsOf(All(kTasks)), std::vector<std::uint32_t>{10});
  EXPECT_EQ(OidsOf(All(kAppointments)), std::vector<std::uint32_t>{11});
  EXPECT_EQ(OidsOf(All(kContacts)), std::vector<std::uint32_t>{12});
}

TEST_F(CalendarUploadWire, GoesOnBehindRecordsThatFail) {
  const auto replies =
      UploadAll(Calendar("", "<EVENT_START>soon</EVENT_START>") +
                    Calendar("", "<EVENT_START>20080230T100000</EVENT_START>") +
                    Calendar("", std::string(kMeeting) + "<IS_RECURRING>TRUE</IS_RECURRING>") +
                    Calendar("", Weekly("<DeletedException>soon</DeletedException>")) +
                    Task("", "<DUE_DATE>soon</DUE_DATE>") + Calendar("", kMeeting) + Task("", ""),
                7);
  const std::vector<std::uint32_t> results = {
      kInvalidArgument, kNoSuchDate, kFail, kInvalidArgument, kInvalidArgument, 0, 0};
  for (std::size_t index = 0; index < results.size(); ++index) {
    EXPECT_EQ(replies[index].result, results[index]) << index;
    EXPECT_EQ(replies[index].oid == 0, results[index] != 0) << index;
  }
  EXPECT_EQ(OidsOf(All(kAppointments)), std::vector<std::uint32_t>{replies[5].oid})
      << "a new appointment that fails is not left behind";
  EXPECT_EQ(OidsOf(All(kTasks)), std::vector<std::uint32_t>{replies[6].oid});
}

TEST_F(CalendarUploadWire, LeavesAChangedAppointmentSavedWhoseExceptionsFail) {
  const std::uint32_t oid = UploadOne(Calendar("", kMeeting)).oid;
  EXPECT_EQ(UploadOne(Calendar(Oid(oid), Weekly("<DeletedException>20080231</DeletedException>"))),
            (UploadReply{0, kNoSuchDate}));
  EXPECT_EQ(OidsOf(All(kAppointments)), std::vector<std::uint32_t>{oid});
  EXPECT_TRUE(Holds(kAppointments, "<TYPE>WEEKLY</TYPE>"));
}

TEST_F(CalendarUploadWire, TakesAnotherKindsIdentifierForAnUnknownOne) {
  const std::uint32_t contact = AddContacts(1)[0];
  const std::uint32_t task = UploadOne(Task("", "")).oid;
  const auto replies = UploadAll(Calendar(Oid(contact), kMeeting) + Calendar(Oid(task), kMeeting) +
                                     Task(Oid(contact) + " Delete=\"1\"", ""),
                                 3);
  EXPECT_EQ(replies[2], (UploadReply{contact, 0}));
  EXPECT_EQ(CountElements(All(kAppointments), "CALENDAR"), 2u);
  EXPECT_EQ(OidsOf(All(kContacts)), std::vector<std::uint32_t>{contact});
  EXPECT_EQ(OidsOf(All(kTasks)), std::vector<std::uint32_t>{task});
}

TEST_F(CalendarUploadWire, ConvertsTimesInTheHandheldsZone) {
  settings_.zone = "Europe/Berlin";
  UploadAll(Calendar("", kMeeting) + Calendar("",
                                              "<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT>"
                                              "<EVENT_START>20080715T000000</EVENT_START>"
                                              "<EVENT_END>20080716T000000</EVENT_END>"),
            2);
  const std::string all = All(kAppointments);
  EXPECT_NE(all.find("<EVENT_START>20080215T100000</EVENT_START>"), std::string::npos);
  EXPECT_NE(all.find("<EVENT_START>20080715T000000</EVENT_START>"
                     "<EVENT_END>20080716T000000</EVENT_END>"),
            std::string::npos);
}

TEST_F(CalendarUploadWire, CountsDaysByTheSystemsVersion) {
  settings_.osMajor = 4;
  const std::string days =
      "<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>20080301T000000</EVENT_START>"
      "<EVENT_END>20080302T000000</EVENT_END>";
  const std::string series =
      "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>DAILY</TYPE></RECURRENCE>";
  EXPECT_EQ(UploadOne(Calendar("", days + series)).result, 0u);
  EXPECT_TRUE(Holds(kAppointments, "<EVENT_END>20080302T000000</EVENT_END>"))
      << "one day, told as on that version";
}

TEST_F(CalendarUploadWire, KeepsServingAfterHostileRecords) {
  std::string deep = "x";
  for (int level = 0; level < 200; ++level) deep = Tagged("RECURRENCE", "", deep);
  const std::string records =
      Calendar("", std::string(kMeeting) + "<IS_RECURRING>TRUE</IS_RECURRING>" + deep) +
      Calendar("", Weekly("<FREQUENCY>99999999999</FREQUENCY>")) +
      Calendar("",
               "<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>19000101</EVENT_START>"
               "<EVENT_END>99991231</EVENT_END>") +
      Task("", "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>" +
                   std::string(100'000, ' ') + "6,6</DAYS_OF_WEEK></RECURRENCE>");
  for (const UploadReply& reply : UploadAll(records, 4)) {
    EXPECT_NE(reply.result, 0u);
    EXPECT_EQ(reply.oid, 0u);
  }
  EXPECT_EQ(CountElements(All(kAppointments), "CALENDAR"), 0u);
  ExpectServing();
}

}  // namespace
}  // namespace corvane::testing
