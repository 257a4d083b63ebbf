// Uploads of appointments and tasks for tests, and what became of them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "handheld/base/fault.h"
#include "tests/support/calendar_test.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {

inline std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

inline std::string AppointmentRecord(const std::string& children,
                                     const std::string& attributes = {}) {
  return "<CALENDAR " + attributes + ">" + children + "</CALENDAR>";
}
inline std::string TaskRecord(const std::string& children, const std::string& attributes = {}) {
  return "<TASK " + attributes + ">" + children + "</TASK>";
}

// One record; the reply to it.
inline RecordReply UploadRecord(const std::string& record) {
  const UploadAnswer answer = Upload({RootOf(record)});
  EXPECT_EQ(answer.replies.size(), 1u);
  return answer.replies.empty() ? RecordReply{} : answer.replies[0];
}
inline RecordReply UploadAppointment(const std::string& children,
                                     const std::string& attributes = {}) {
  return UploadRecord(AppointmentRecord(children, attributes));
}
inline RecordReply UploadTask(const std::string& children, const std::string& attributes = {}) {
  return UploadRecord(TaskRecord(children, attributes));
}

// From 10:00 to 11:00 UTC on 2008-02-15, a Friday.
inline std::string TimedEvent() {
  return Element("EVENT_START", "20080215T100000") + Element("EVENT_END", "20080215T110000");
}
inline std::string AllDayEvent(const std::string& first, const std::string& last) {
  return Element("ALL_DAY_EVENT", "TRUE") + Element("EVENT_START", first) +
         Element("EVENT_END", last);
}
inline std::string Recurring(const std::string& recurrence) {
  return Element("IS_RECURRING", "TRUE") + Element("RECURRENCE", recurrence);
}
inline std::string Daily(const std::string& more = {}) {
  return Element("TYPE", "DAILY") + more;
}

// Without those of a document that a test has loaded.
inline std::vector<std::string> ReaderMessages(std::vector<std::string> messages) {
  std::erase_if(messages, [](const std::string& message) {
    return message.starts_with("pDoc->") || message.starts_with("get_firstChild returned");
  });
  return messages;
}

// A property's value, and a text of it.
template <typename Item, typename Value>
Value ValueOf(Item& item, ce::HRESULT (Item::*get)(Value*)) {
  Value value{};
  EXPECT_EQ((item.*get)(&value), ce::S_OK);
  return value;
}
template <typename Item>
std::string TextOf(Item& item, ce::HRESULT (Item::*get)(ce::BSTR*)) {
  ce::Bstr text;
  EXPECT_EQ((item.*get)(text.put()), ce::S_OK);
  return Narrow(text.view());
}
template <typename Item>
std::string DateTextOf(Item& item, ce::HRESULT (Item::*get)(ce::DATE*)) {
  return TextOfDate(ValueOf(item, get));
}
template <typename Item>
ce::ComPtr<ce::IRecurrencePattern> PatternOf(Item& item) {
  ce::ComPtr<ce::IRecurrencePattern> pattern;
  EXPECT_EQ(item.GetRecurrencePattern(pattern.put()), ce::S_OK);
  return pattern;
}

// "2008-02-16 10:00:00 deleted", "2008-02-17 10:00:00 -> 2008-02-18 09:00:00", in their order.
inline std::vector<std::string> ExceptionsOf(ce::IAppointment& appointment) {
  ce::ComPtr<ce::IExceptions> exceptions;
  EXPECT_EQ(PatternOf(appointment)->get_Exceptions(exceptions.put()), ce::S_OK);
  std::vector<std::string> texts;
  ce::INT count = 0;
  EXPECT_EQ(exceptions->get_Count(&count), ce::S_OK);
  for (ce::INT index = 1; index <= count; ++index) {
    ce::ComPtr<ce::IException> exception;
    EXPECT_EQ(exceptions->Item(index, exception.put()), ce::S_OK);
    std::string text = DateTextOf(*exception.get(), &ce::IException::get_OriginalDate);
    ce::ComPtr<ce::IAppointment> item;
    const ce::HRESULT status = exception->get_AppointmentItem(item.put());
    EXPECT_EQ(status, item ? ce::S_OK : ce::S_FALSE);
    text += item ? " -> " + DateTextOf(*item.get(), &ce::IAppointment::get_Start) : " deleted";
    texts.push_back(std::move(text));
  }
  return texts;
}

// A handheld in UTC.
class CalendarUpload : public CalendarTest {
 protected:
  CalendarUpload() { UseZone("UTC"); }

  ce::ComPtr<ce::IAppointment> AddedAppointment(const std::string& children) {
    const RecordReply reply = UploadAppointment(children);
    EXPECT_EQ(reply.result, ce::S_OK);
    return appointments().Get(reply.oid);
  }
  ce::ComPtr<ce::ITask> AddedTask(const std::string& children) {
    const RecordReply reply = UploadTask(children);
    EXPECT_EQ(reply.result, ce::S_OK);
    return tasks().Get(reply.oid);
  }
};

}  // namespace corvane::testing
