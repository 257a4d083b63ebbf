#include "desktop/commands/clock_text.h"

#include <fmt/format.h>

#include "common/formats/items/iso_time.h"
#include "desktop/wire/words.h"

namespace desktop {
namespace {

using namespace std::chrono;

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

std::optional<UtcTime> Compose(int y, int mo, int d, int h, int mi, int s, int ms) {
  const year_month_day date{year{y}, month{static_cast<unsigned>(mo)},
                            day{static_cast<unsigned>(d)}};
  if (!date.ok() || h > 23 || mi > 59 || s > 59 || ms > 999) return std::nullopt;
  return sys_days{date} + hours{h} + minutes{mi} + seconds{s} + milliseconds{ms};
}

}  // namespace

std::optional<UtcTime> ParseTime(std::string_view text) {
  const std::optional<formats::IsoTime> parsed = formats::ParseIsoTime(text);
  if (!parsed) return std::nullopt;
  const auto local = Compose(parsed->date.year, parsed->date.month, parsed->date.day, parsed->hour,
                             parsed->minute, parsed->second, 0);
  if (!local) return std::nullopt;
  return *local - minutes{parsed->offsetMinutes.value_or(0)};
}

std::string FormatTime(UtcTime time) {
  const auto date = floor<days>(time);
  const year_month_day day{date};
  const hh_mm_ss clock{time - date};
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                     clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

std::optional<std::string> SystemTimeBytes(UtcTime time) {
  const auto date = floor<days>(time);
  const year_month_day day{date};
  const int y = static_cast<int>(day.year());
  if (y < kFirstYear || y > kLastYear) return std::nullopt;
  const hh_mm_ss clock{time - date};
  std::string bytes;
  PutHalfWord(bytes, static_cast<unsigned>(y));
  PutHalfWord(bytes, static_cast<unsigned>(day.month()));
  PutHalfWord(bytes, weekday{date}.c_encoding());
  PutHalfWord(bytes, static_cast<unsigned>(day.day()));
  PutHalfWord(bytes, static_cast<unsigned>(clock.hours().count()));
  PutHalfWord(bytes, static_cast<unsigned>(clock.minutes().count()));
  PutHalfWord(bytes, static_cast<unsigned>(clock.seconds().count()));
  PutHalfWord(bytes, static_cast<unsigned>(clock.subseconds().count()));
  return bytes;
}

std::optional<UtcTime> TimeFromSystemTime(std::string_view bytes) {
  if (bytes.size() != 16) return std::nullopt;
  const auto field = [&](std::size_t index) {
    return static_cast<int>(HalfWordAt(bytes, 2 * index));
  };
  if (field(0) < kFirstYear || field(0) > kLastYear) return std::nullopt;
  // The third field is the weekday, which the date says as well.
  return Compose(field(0), field(1), field(3), field(4), field(5), field(6), field(7));
}

}  // namespace desktop
