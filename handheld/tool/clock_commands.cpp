#include "handheld/tool/clock_commands.h"

#include <fmt/core.h>

#include "common/calendar/wall_time.h"
#include "common/formats/items/message_time.h"
#include "common/text/unicode.h"
#include "handheld/clock/handheld_clock.h"
#include "handheld/tool/result.h"
#include "platform/clock.h"

namespace tool {
namespace {

std::string TimeText(const ce::SYSTEMTIME& time, char between = ' ') {
  return fmt::format("{:04}-{:02}-{:02}{}{:02}:{:02}:{:02}", time.wYear, time.wMonth, time.wDay,
                     between, time.wHour, time.wMinute, time.wSecond);
}

}  // namespace

Outcome ShowClock(Session& session, const Report& report) {
  ce::SYSTEMTIME utc{};
  ce::SYSTEMTIME local{};
  ce::GetSystemTime(&utc);
  ce::GetLocalTime(&local);
  const std::u16string zone = session.handheld().Text(ce::host::setting::kZone, u"UTC");
  const std::string zoneName = text::ToUtf8Lossy(zone);
  if (report.json)
    TellJson(
        report,
        {{"utc", TimeText(utc, 'T') + "Z"}, {"local", TimeText(local, 'T')}, {"zone", zoneName}});
  else
    Tell(report.out, "UTC    {}\nlocal  {}  {}\n", TimeText(utc), TimeText(local), zoneName);
  return Outcome::kDone;
}

Outcome SetClock(Session& session, const std::string& time, const Report& report) {
  const auto parsed = formats::ParseIsoTime(time);
  if (!parsed) {
    throw UsageError(fmt::format(
        "\"{}\" is no time; write 2008-02-15T13:45:00Z or 2008-02-15T14:45+01:00", time));
  }
  const ce::LONGLONG ticks = formats::ToFileTime(parsed->Utc());
  const bool representable =
      formats::IsKeepableTime(std::chrono::sys_seconds{parsed->local.time_since_epoch()});
  const ce::DWORD error = representable && ticks >= 0 ? session.handheld().clock().Set(ticks)
                                                      : ce::ERROR_INVALID_PARAMETER;
  if (error != 0) {
    Tell(report.err, "corvane-device: the clock cannot be set to {}: {}\n", time,
         error == ce::ERROR_INVALID_PARAMETER ? "its years are 1601 to 30827"
                                              : fmt::format("error {}", error));
    return Outcome::kFailed;
  }
  return report.verbosity == Verbosity::kErrors ? Outcome::kDone : ShowClock(session, report);
}

Outcome ResetClock(Session& session, const Report& report) {
  session.handheld().Set(ce::host::setting::kClockOffset, u"0");
  TellResult(report, {{"reset", true}}, "The clock goes with this computer's again.\n");
  return Outcome::kDone;
}

}  // namespace tool
