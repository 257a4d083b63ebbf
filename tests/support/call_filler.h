// The call log of a handheld, for a test to fill and to look at.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "handheld/directory/handheld.h"
#include "handheld/store/call_log.h"

namespace corvane::testing {

// 2008-02-15 13:45:01 as file time, and what a minute is there.
inline constexpr std::int64_t kSampleStart = 128475567010000000;
inline constexpr std::int64_t kMinute = 600000000;

// An answered call of one minute, with number, name and kind of number.
ce::host::StoredCall SampleCall();

// Fails the test when the store does not answer.
class CallFiller {
 public:
  explicit CallFiller(ce::host::Handheld& handheld);

  ce::host::CallLog& box() { return *box_; }
  std::int64_t Add(const ce::host::StoredCall& call);
  // Calls with the numbers "1", "2" and so on, each a minute older than the one before, stored in
  // one go.
  void AddMany(int count);
  // All of them, newest first.
  std::vector<ce::host::StoredCall> Calls();
  std::int64_t Count();

 private:
  std::unique_ptr<ce::host::CallLog> box_;
};

}  // namespace corvane::testing
