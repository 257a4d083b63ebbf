#include "common/formats/items/message_time.h"

#include <fmt/format.h>

#include "common/calendar/wall_time.h"

namespace formats {
namespace {

using std::chrono::milliseconds;
namespace ch = std::chrono;

constexpr ch::sys_days kFirstDay = ch::sys_days(ch::year(1601) / 1 / 1);
constexpr ch::sys_days kDayAfter = ch::sys_days(ch::year(10000) / 1 / 1);
constexpr std::int64_t kTicks = 10'000;  // in a millisecond

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes ".250" behind "2008-02-15T13:45:01" out of the text.
milliseconds TakeFraction(std::string& text) {
  constexpr std::size_t kSecondsEnd = 19;
  if (text.size() < kSecondsEnd + 2 || (text[kSecondsEnd] != '.' && text[kSecondsEnd] != ','))
    return {};
  std::size_t end = kSecondsEnd + 1;
  int thousandths = 0;
  int weight = 100;
  for (; end < text.size() && IsDigit(text[end]); ++end) {
    thousandths += weight * (text[end] - '0');
    weight /= 10;
  }
  if (end > kSecondsEnd + 1) text.erase(kSecondsEnd, end - kSecondsEnd);
  return milliseconds(thousandths);
}

}  // namespace

bool IsKeepableTime(MessageTime time) {
  return time >= kFirstDay && time < kDayAfter;
}

std::optional<MessageTime> TimeFromMilliseconds(std::int64_t sinceEpoch) {
  const MessageTime time{milliseconds(sinceEpoch)};
  return IsKeepableTime(time) ? std::optional(time) : std::nullopt;
}

std::optional<MessageTime> TimeFromFileTime(std::int64_t fileTime) {
  if (fileTime < 0) return std::nullopt;
  const MessageTime time = kFirstDay + milliseconds(fileTime / kTicks);
  return IsKeepableTime(time) ? std::optional(time) : std::nullopt;
}

std::int64_t ToFileTime(MessageTime time) {
  return (time - kFirstDay).count() * kTicks;
}

std::string FormatMessageTime(MessageTime time) {
  if (!IsKeepableTime(time)) return {};
  const auto whole = ch::floor<ch::seconds>(time);
  std::string text = IsoDateTime(local_seconds(whole.time_since_epoch()));
  if (time != whole) text += fmt::format(".{:03}", (time - whole).count());
  return text + "Z";
}

std::optional<MessageTime> ParseMessageTime(std::string_view text) {
  std::string whole(text);
  const milliseconds fraction = TakeFraction(whole);
  const std::optional<IsoTime> iso = ParseIsoTime(whole);
  if (!iso) return std::nullopt;
  const MessageTime time = iso->Utc() + fraction;
  return IsKeepableTime(time) ? std::optional(time) : std::nullopt;
}

}  // namespace formats
