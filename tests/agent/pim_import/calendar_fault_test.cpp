// Uploads of appointments and tasks, each platform call failed in turn.
#include <gmock/gmock.h>

#include <algorithm>

#include "handheld/base/com_object.h"
#include "tests/support/calendar_upload_runs.h"
#include "tests/support/fault_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using ::testing::ElementsAre;

bool StartsWithOneOf(std::string_view call, std::initializer_list<std::string_view> names) {
  return std::ranges::any_of(names, [&](std::string_view name) { return call.starts_with(name); });
}

// What cannot be looked up counts as absent: the record then is a new one.
bool IsOfALookup(std::string_view call) {
  return StartsWithOneOf(call, {"IXMLDOMNamedNodeMap::getNamedItem", "IPOutlookApp::GetItemFromOid",
                                "QueryInterface", "sqlite3_prepare", "sqlite3_step:read"});
}

// A flag or a number that cannot be read has its default, and a present note is none.
bool IsOfAValue(std::string_view call) {
  return StartsWithOneOf(call, {"IXMLDOMNode::selectSingleNode", "IXMLDOMNode::get_firstChild",
                                "IXMLDOMNode::get_nodeValue", "SysAllocString",
                                "IAppointment::get_Body", "ITask::get_Body"});
}

// What a task does without (its pattern stays as it is), and what a reminder is counted from.
bool IsForgivenOfATask(std::string_view call) {
  return StartsWithOneOf(
      call, {"ITask::GetRecurrencePattern", "GetLocalTime", "VariantTimeToSystemTime"});
}

const std::string kNext = ContactRecord("<FIRST_NAME>next</FIRST_NAME>");

const std::string kNewSeries =
    Element("SUBJECT", "new") + Element("NOTES", "n") + TimedEvent() +
    Element("CATEGORIES", "<CATEGORY><Name>A</Name></CATEGORY>") +
    Recurring(Element("TYPE", "WEEKLY") + Element("DAYS_OF_WEEK", "5") +
              Element("Occurrences", "5") + Element("DeletedException", "20080222") +
              Element("ChangedException", Element("EVENT_START", "20080301T090000") +
                                              Element("EVENT_END", "20080301T100000") +
                                              Element("OriginalDate", "20080229")));
const std::string kNewTask = Element("SUBJECT", "new") + Element("NOTES", "n") +
                             Element("DUE_DATE", "20080301") + Element("HAS_REMINDER", "TRUE") +
                             Element("ReminderMinutes", "60") +
                             Element("CATEGORIES", "<CATEGORY><Name>A</Name></CATEGORY>") +
                             Recurring(Daily(Element("END_DATE", "20080401")));

class CalendarUploadFaults : public CalendarUpload {
 protected:
  // Both stores live as long as the test, which counts objects.
  CalendarUploadFaults() {
    appointments();
    tasks();
  }

  // Uploads the record, and a contact behind it, failing each call in turn. `check(reply, call)`
  // looks at a record that was answered, `restore()` makes the store as it was.
  template <typename Check, typename Restore>
  void FailEachCallOf(const std::string& record, Check check, Restore restore) {
    const std::string bytes = ChunkBytes(RootOf(record + kNext)) + Word(0);
    restore();
    const LONG objects = host::LiveComObjects();
    const auto calls = FailEachCall(
        ERROR_NOT_ENOUGH_MEMORY, [&] { return RunStreamed(UploadPIMRecords, {}, {bytes}); },
        [&](const StreamedAnswer& streamed, const std::string& call) {
          EXPECT_EQ(host::LiveComObjects(), objects);
          if (call != "send") ExpectHonestReplies(ReadUpload(streamed), call, check);
          restore();
        });
    EXPECT_GT(calls, 150u);
  }

  template <typename Check>
  void ExpectHonestReplies(const UploadAnswer& answer, const std::string& call, Check check) {
    ASSERT_LE(answer.replies.size(), 2u);
    if (answer.replies.size() < 2) {
      EXPECT_NE(answer.status, S_OK) << "a request that ends early says so";
    }
    if (answer.replies.empty()) return;
    const RecordReply& reply = answer.replies[0];
    if (reply.result != S_OK) {
      EXPECT_EQ(reply.oid, 0);
      ASSERT_EQ(answer.replies.size(), 2u) << "the next record is read";
      EXPECT_EQ(answer.replies[1].result, S_OK);
      EXPECT_TRUE(store_->Get(answer.replies[1].oid));
    }
    check(reply, call);
  }

  void ExpectNewSeries(LONG oid, const std::string& call) {
    const ComPtr<IAppointment> appointment = appointments().Get(oid);
    ASSERT_TRUE(appointment);
    if (IsOfAValue(call)) return;
    EXPECT_EQ(TextOf(*appointment.get(), &IAppointment::get_Subject), "new");
    EXPECT_THAT(
        ExceptionsOf(*appointment.get()),
        ElementsAre("2008-02-22 10:00:00 deleted", "2008-02-29 10:00:00 -> 2008-03-01 09:00:00"));
  }
  void ExpectNewTask(LONG oid, const std::string& call) {
    const ComPtr<ITask> task = tasks().Get(oid);
    ASSERT_TRUE(task);
    if (IsOfAValue(call) || IsForgivenOfATask(call)) return;
    EXPECT_EQ(TextOf(*task.get(), &ITask::get_Subject), "new");
    EXPECT_EQ(ValueOf(*task.get(), &ITask::get_IsRecurring), VARIANT_TRUE);
    EXPECT_EQ(DateTextOf(*task.get(), &ITask::get_ReminderTime), "2008-02-29 23:00:00");
  }

  void DeleteAppointments() {
    for (const LONG oid : appointments().Oids()) {
      EXPECT_EQ(appointments().Get(oid)->Delete(), S_OK);
    }
  }
  void DeleteTasks() {
    for (const LONG oid : tasks().Oids()) EXPECT_EQ(tasks().Get(oid)->Delete(), S_OK);
  }
};

TEST_F(CalendarUploadFaults, LeaveNoNewAppointmentBehind) {
  FailEachCallOf(
      AppointmentRecord(kNewSeries),
      [&](const RecordReply& reply, const std::string& call) {
        if (reply.result == S_OK) {
          ExpectNewSeries(reply.oid, call);
        } else {
          EXPECT_TRUE(appointments().Oids().empty());
        }
      },
      [&] { DeleteAppointments(); });
}

TEST_F(CalendarUploadFaults, LeaveAChangedAppointmentThere) {
  const std::string before = Element("SUBJECT", "old") + TimedEvent() +
                             Recurring(Daily(Element("DeletedException", "20080217")));
  const LONG oid = UploadAppointment(before).oid;
  FailEachCallOf(
      AppointmentRecord(kNewSeries, OidTag(oid)),
      [&](const RecordReply& reply, const std::string& call) {
        if (IsOfALookup(call)) return;
        ASSERT_TRUE(appointments().Get(oid));
        if (reply.result == S_OK) {
          EXPECT_EQ(reply.oid, oid);
          ExpectNewSeries(oid, call);
        } else {
          const auto appointment = appointments().Get(oid);
          const std::string subject = TextOf(*appointment.get(), &IAppointment::get_Subject);
          EXPECT_TRUE(subject == "old" || subject == "new");
        }
      },
      [&] {
        EXPECT_EQ(UploadAppointment(before, OidTag(oid)), (RecordReply{oid, S_OK}));
      });
}

TEST_F(CalendarUploadFaults, StoreANewTaskWholeOrNotAtAll) {
  FailEachCallOf(
      TaskRecord(kNewTask),
      [&](const RecordReply& reply, const std::string& call) {
        if (reply.result == S_OK) {
          ExpectNewTask(reply.oid, call);
        } else if (call != "ITask::get_Oid") {
          EXPECT_TRUE(tasks().Oids().empty());
        }
      },
      [&] { DeleteTasks(); });
}

TEST_F(CalendarUploadFaults, ChangeATaskWholeOrNotAtAll) {
  const LONG oid = UploadTask(Element("SUBJECT", "old")).oid;
  FailEachCallOf(
      TaskRecord(kNewTask, OidTag(oid)),
      [&](const RecordReply& reply, const std::string& call) {
        if (IsOfALookup(call)) return;
        ASSERT_TRUE(tasks().Get(oid));
        if (reply.result == S_OK) {
          EXPECT_EQ(reply.oid, oid);
          ExpectNewTask(oid, call);
        } else if (call != "ITask::get_Oid") {
          EXPECT_EQ(TextOf(*tasks().Get(oid).get(), &ITask::get_Subject), "old");
        }
      },
      [&] {
        EXPECT_EQ(UploadTask(Element("SUBJECT", "old"), OidTag(oid)), (RecordReply{oid, S_OK}));
      });
}

}  // namespace
}  // namespace corvane::testing
