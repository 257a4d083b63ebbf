// What the tests of the note conversion share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "agent/device/ink_convert.h"
#include "agent/request_handler.h"
#include "handheld/windows/windows.h"
#include "platform/memory.h"
#include "tests/support/ink_note_bytes.h"
#include "tests/support/logged_test.h"

namespace corvane::testing {

inline constexpr ce::DWORD kText = 1;
inline constexpr ce::DWORD kRich = 2;
inline constexpr ce::DWORD kUnicode = 17;
inline constexpr ce::DWORD kInkNote = 67586;

// What a conversion or a request gave.
struct InkOutcome {
  ce::HRESULT status = 0;
  bool hasOutput = false;
  std::string bytes;
};

// Takes over the block.
inline InkOutcome Outcome(ce::HRESULT status, ce::BYTE* block, ce::DWORD count) {
  InkOutcome outcome{status, block != nullptr, {}};
  if (block) outcome.bytes.assign(reinterpret_cast<const char*>(block), count);
  if (!block) {
    EXPECT_EQ(count, 0u) << "a count without a block";
  }
  ce::LocalFree(block);
  return outcome;
}

inline const ce::BYTE* BytePointer(std::string_view bytes) {
  return reinterpret_cast<const ce::BYTE*>(bytes.data());
}

inline std::string Utf16Bytes(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += HalfWord(unit);
  return bytes;
}

inline std::string Le32(std::size_t word) {
  return HalfWord(word & 0xFFFF) + HalfWord(word >> 16);
}

// A handheld whose RichInk library has not been tried; fails a test that leaves a window behind.
class InkTest : public LoggedTest {
 protected:
  void SetUp() override {
    ResetRichInk();
    windowsBefore_ = ce::host::WindowsOfThread();
  }
  void TearDown() override {
    EXPECT_EQ(Windows(), windowsLeft_);
    ResetRichInk();
    LoggedTest::TearDown();
  }

  void WithoutRichInk() { handheld_->Set(u"RichInk", ce::DWORD{0}); }
  void MakeFile(const std::string& name, const std::string& content);
  bool HasFile(const std::string& name) const;
  // Made since the test began, and not destroyed.
  std::size_t Windows() const { return ce::host::WindowsOfThread() - windowsBefore_; }

  std::size_t windowsLeft_ = 0;  // a test that keeps a window from being destroyed says so

 private:
  std::size_t windowsBefore_ = 0;
};

}  // namespace corvane::testing
