#include "tests/agent/messages/call_log_support.h"
#include "tests/support/download_faults.h"
#include "tests/support/ink_note_bytes.h"

namespace corvane::testing {
namespace {

using namespace ce;

// A note that cannot be read or converted is left out.
bool MayLackItsNote(const std::string& call) {
  return LeavesATextOut(call) || call == "CreateFileW" || call == "GetFileSize" ||
         call == "ReadFile" || call == "LocalAlloc" || call == "GetForegroundWindow" ||
         call == "CreateWindowExW" || call == "SendMessageW";
}

// The library that a failing FreeLibrary keeps loaded is freed by the next who asks.
void ExpectNoPhone(const std::string& call) {
  if (call == "FreeLibrary" || call == kEveryCall) {
    while (const HMODULE module = GetModuleHandleW(u"Phone.dll")) FreeLibrary(module);
  }
  EXPECT_EQ(GetModuleHandleW(u"Phone.dll"), nullptr);
}

TEST_F(CallLogTest, EndsHonestlyWhicheverCallFails) {
  MakeFile("call.pwi", InkNote({"Milk"}));
  filler_->AddMany(2);
  filler_->Add(CallWithNote(u"\\call.pwi"));
  EXPECT_GT(ExpectHonestDownload({.run =
                                      [] {
                                        ResetRichInk();
                                        return Export();
                                      },
                                  .mayLack = MayLackItsNote,
                                  .after = ExpectNoPhone}),
            100u);
}

}  // namespace
}  // namespace corvane::testing
