// Calendar items that store nothing and list what is done to them, for tests of the order of steps.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "handheld/base/com_object.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane::testing {

// "2008-02-15 13:45:01", or "none".
std::string TextOfDate(ce::DATE date);

// What was done, and what is to be answered. Getters of plain values are not listed.
class CallList {
 public:
  // S_OK unless the call's name has an answer.
  ce::HRESULT Note(const std::string& call, const std::string& argument = {});

  std::map<std::string, ce::HRESULT> answers;  // by name, such as "put_Subject"
  std::vector<std::string> calls;              // "put_Subject text"

  // What the items hold.
  ce::INT exceptions = 0;
  std::u16string body;
  bool hasOccurrences = false;
};

// New ones; the list must outlive them.
ce::ComPtr<ce::IAppointment> MakeRecordingAppointment(CallList& list);
ce::ComPtr<ce::ITask> MakeRecordingTask(CallList& list);
ce::ComPtr<ce::IRecurrencePattern> MakeRecordingPattern(CallList& list);
// Whatever is looked up or added is `item`.
ce::ComPtr<ce::IPOutlookApp> MakeRecordingApp(CallList& list, ce::IDispatch* item);

}  // namespace corvane::testing
