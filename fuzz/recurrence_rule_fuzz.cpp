// Any bytes as a recurrence rule: the pattern that is found, if any, is valid, has days, and its
// own rule is found to be a pattern of the same days.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "common/calendar/rule.h"

namespace {

using calendar::Pattern;

void Require(bool condition) {
  if (!condition) std::abort();
}

void RequireSameDays(const Pattern& a, const Pattern& b, calendar::local_days start) {
  calendar::DayWalk first(a, start);
  calendar::DayWalk second(b, start);
  for (int i = 0; i < 20; ++i) Require(first.Next() == second.Next());
}

}  // namespace

// The first three bytes are the series' start.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const auto range = static_cast<std::uint32_t>((calendar::kLastDay - calendar::kFirstDay).count());
  const std::uint32_t number = data[0] | data[1] << 8U | data[2] << 16U;
  const auto start = calendar::kFirstDay + std::chrono::days{number % (range + 1)};
  const std::string_view rule(reinterpret_cast<const char*>(data) + 3, size - 3);
  const std::optional<Pattern> pattern = calendar::PatternOfRule(rule, start);
  if (!pattern) return 0;
  Require(calendar::IsValid(*pattern));
  const auto first = calendar::NextDayOf(*pattern, start, start);
  Require(first.has_value());
  const std::optional<Pattern> again = calendar::PatternOfRule(calendar::RuleOf(*pattern), *first);
  Require(again.has_value());
  RequireSameDays(*pattern, *again, *first);
  return 0;
}
