// Any bytes as a recurrence rule: the pattern that is found, if any, is valid, has days, and its
// own rule is found to be a pattern of the same days.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/formats/icalendar/pattern_rule.h"
#include "fuzz/require.h"

namespace {

using calendar::Pattern;
using fuzz::Require;

std::optional<Pattern> PatternOf(std::string_view text, calendar::local_days start) {
  const std::optional<formats::RecurrenceRule> rule = formats::RecurrenceRule::Parse(text);
  return rule ? formats::PatternOfRule(*rule, {}, start) : std::nullopt;
}

}  // namespace

// The first three bytes are the series' start.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const auto range = static_cast<std::uint32_t>((calendar::kLastDay - calendar::kFirstDay).count());
  const std::uint32_t number = data[0] | data[1] << 8U | data[2] << 16U;
  const auto start = calendar::kFirstDay + std::chrono::days{number % (range + 1)};
  const std::string_view rule(reinterpret_cast<const char*>(data) + 3, size - 3);
  const std::optional<Pattern> pattern = PatternOf(rule, start);
  if (!pattern) return 0;
  Require(calendar::IsValid(*pattern));
  const auto first = calendar::NextDayOf(*pattern, start, start);
  Require(first.has_value());
  const std::optional<Pattern> again = PatternOf(formats::RuleOf(*pattern), *first);
  Require(again.has_value());
  const calendar::SeriesDays days(*pattern, *first);
  const calendar::SeriesDays same(*again, *first);
  Require(days.size() == same.size());
  for (int n = 0; n < 20 && n < days.size(); ++n) Require(days[n] == same[n]);
  return 0;
}
