#include "handheld/base/com_object.h"
#include "tests/agent/messages/call_log_support.h"
#include "tests/support/fault_runs.h"
#include "tests/support/ink_note_bytes.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::StoredCall;

// Their failure leaves a positive last error, which is no failure by its sign: what they were to
// make is missing from the document.
bool LeavesAGap(const std::string& call) {
  return call.starts_with("SysAllocString") || call.starts_with("GetDateFormat") ||
         call.starts_with("GetTimeFormat") || call == "FileTimeToSystemTime" ||
         call == "CreateFileW" || call == "GetFileSize" || call == "ReadFile" ||
         call == "LocalAlloc" || call == "GetForegroundWindow" || call == "CreateWindowExW" ||
         call == "SendMessageW";
}

bool IsOfTheConnection(const std::string& call) {
  return call == "send" || call == "closesocket";
}

// The library that a failing FreeLibrary keeps loaded is freed by the next who asks.
void FreePhone() {
  while (const HMODULE module = GetModuleHandleW(u"Phone.dll")) FreeLibrary(module);
}

TEST_F(CallLogTest, EndsHonestlyWhicheverCallFails) {
  MakeFile("call.pwi", InkNote({"Milk"}));
  filler_->AddMany(2);
  StoredCall call = CallWithNote(u"\\call.pwi");
  filler_->Add(call);
  const DownloadAnswer whole = Export();
  ASSERT_EQ(whole.status, S_OK);
  ASSERT_EQ(whole.documents.size(), 2u);
  const LONG objects = host::LiveComObjects();
  const auto calls = FailEachCall(
      ERROR_NOT_ENOUGH_MEMORY,
      [] {
        ResetRichInk();
        return Export();
      },
      [&](const DownloadAnswer& answer, const std::string& failed) {
        EXPECT_EQ(host::LiveComObjects(), objects);
        if (failed == "FreeLibrary") FreePhone();
        EXPECT_EQ(GetModuleHandleW(u"Phone.dll"), nullptr);
        if (IsOfTheConnection(failed)) return;
        ASSERT_TRUE(answer.complete) << "every download ends with its trailer";
        EXPECT_EQ(answer.status, answer.returned);
        if (answer.status >= 0) {
          EXPECT_EQ(answer.documents.size(), whole.documents.size());
        }
        ASSERT_LE(answer.documents.size(), whole.documents.size());
        if (LeavesAGap(failed)) return;
        for (std::size_t index = 0; index < answer.documents.size(); ++index) {
          EXPECT_EQ(Body(answer.documents[index]), Body(whole.documents[index]));
        }
      });
  EXPECT_GT(calls, 100u);
}

}  // namespace
}  // namespace corvane::testing
