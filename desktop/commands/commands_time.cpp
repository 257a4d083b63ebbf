#include "desktop/commands/commands_time.h"

#include <fmt/format.h>

#include "desktop/commands/result.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

// Nobody's daylight saving is less; an exchange takes less by far.
constexpr std::chrono::minutes kMoved{5};

UtcTime Now() {
  return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

void Put(const ConnectionOptions& connection, UtcTime time) {
  const std::optional<std::string> bytes = SystemTimeBytes(time);
  if (!bytes) throw Error(fmt::format("{} is no year for a clock", FormatTime(time)));
  const Reply reply = Invoke(connection, kSetSystemTime, *bytes);
  if (reply.status != 0) {
    throw Error(fmt::format("the handheld did not set its clock: {}", StatusText(reply.status)));
  }
}

}  // namespace

UtcTime AskTime(const ConnectionOptions& connection) {
  const Reply reply = Invoke(connection, kGetSystemTime, {});
  if (reply.status != 0) {
    throw Error(fmt::format("the handheld does not tell its time: {}", StatusText(reply.status)));
  }
  const std::optional<UtcTime> time = TimeFromSystemTime(reply.output);
  if (!time) {
    throw Error(fmt::format("the answer to {} makes no sense: {} bytes that are no time",
                            kGetSystemTime, reply.output.size()));
  }
  return *time;
}

int GetTime(const ConnectionOptions& connection, bool json, const Console& console) {
  return RunGuarded(console, [&] {
    const std::string time = FormatTime(AskTime(connection));
    if (json)
      PrintJson({{"time", time}}, console);
    else
      console.out << time << '\n';
    FlushOutput(console);
    return kDone;
  });
}

int SetTime(const ConnectionOptions& connection, std::optional<UtcTime> time,
            const Console& console) {
  return RunGuarded(console, [&] {
    Put(connection, time ? *time : Now());
    UtcTime wanted = time ? *time : Now();
    UtcTime shown = AskTime(connection);
    if (shown < wanted - kMoved || shown > wanted + kMoved) {
      Put(connection, time ? *time : Now());
      shown = AskTime(connection);
    }
    wanted = time ? *time : Now();
    TellResult(console, {{"time", FormatTime(shown)}}, FormatTime(shown));
    if (shown < wanted - kMoved || shown > wanted + kMoved) {
      console.err << fmt::format(
          "corvane-desktop: the handheld was told {} and took another time\n", FormatTime(wanted));
      return kFailed;
    }
    return kDone;
  });
}

}  // namespace desktop
