#include "desktop/commands/clock_text.h"

#include "common/calendar/wall_time.h"
#include "common/text/little_endian.h"

namespace desktop {
namespace {

using namespace std::chrono;

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

}  // namespace

std::optional<UtcTime> ParseTime(std::string_view text) {
  const std::optional<formats::IsoTime> parsed = formats::ParseIsoTime(text);
  return parsed ? std::optional<UtcTime>(parsed->Utc()) : std::nullopt;
}

std::string FormatTime(UtcTime time) {
  return formats::IsoDateTime(local_seconds{floor<seconds>(time).time_since_epoch()}) + "Z";
}

std::optional<std::string> SystemTimeBytes(UtcTime time) {
  const auto date = floor<days>(time);
  const year_month_day day{date};
  const int y = static_cast<int>(day.year());
  if (y < kFirstYear || y > kLastYear) return std::nullopt;
  const hh_mm_ss clock{time - date};
  std::string bytes;
  text::PutHalfWord(bytes, static_cast<unsigned>(y));
  text::PutHalfWord(bytes, static_cast<unsigned>(day.month()));
  text::PutHalfWord(bytes, weekday{date}.c_encoding());
  text::PutHalfWord(bytes, static_cast<unsigned>(day.day()));
  text::PutHalfWord(bytes, static_cast<unsigned>(clock.hours().count()));
  text::PutHalfWord(bytes, static_cast<unsigned>(clock.minutes().count()));
  text::PutHalfWord(bytes, static_cast<unsigned>(clock.seconds().count()));
  text::PutHalfWord(bytes, static_cast<unsigned>(clock.subseconds().count()));
  return bytes;
}

std::optional<UtcTime> TimeFromSystemTime(std::string_view bytes) {
  if (bytes.size() != 16) return std::nullopt;
  const auto field = [&](std::size_t index) {
    return static_cast<int>(text::HalfWordAt(bytes, 2 * index));
  };
  if (field(0) < kFirstYear || field(0) > kLastYear) return std::nullopt;
  // The third field is the weekday, which the date says as well.
  const year_month_day date = year{field(0)} / field(1) / field(3);
  if (!date.ok() || field(4) > 23 || field(5) > 59 || field(6) > 59 || field(7) > 999) {
    return std::nullopt;
  }
  return sys_days{date} + hours{field(4)} + minutes{field(5)} + seconds{field(6)} +
         milliseconds{field(7)};
}

}  // namespace desktop
