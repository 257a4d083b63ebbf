#include "desktop/commands/commands_agent.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "common/text/little_endian.h"
#include "desktop/commands/result.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

// The agent reads the request at once; on some systems it never closes the connection.
constexpr std::chrono::milliseconds kReadByThen{1000};

}  // namespace

int SetLogging(const ConnectionOptions& connection, LoggingLevel level, const Console& console) {
  return RunGuarded(console, [&] {
    std::string input;
    text::PutWord(input, static_cast<std::uint32_t>(level));
    const Reply reply = Invoke(connection, kResetLoggingState, input);
    if (reply.status != 0) {
      throw Error(
          fmt::format("the handheld did not keep the setting: {}", StatusText(reply.status)));
    }
    const char* const state = level == LoggingLevel::kOff       ? "off"
                              : level == LoggingLevel::kVerbose ? "verbose"
                                                                : "on";
    TellResult(console, {{"logging", state}}, fmt::format("logging is {}", state));
    return kDone;
  });
}

int Quit(const ConnectionOptions& connection, const Console& console) {
  return RunGuarded(console, [&] {
    {
      Connection request(connection);
      request.Send(QuitRecord());
      request.FinishAndAwaitEnd(std::min(kReadByThen, connection.timeout));
    }
    try {
      const Connection wake(connection);
    } catch (const Interrupted&) {
      throw;
    } catch (const Error&) {
      // It has ended without being woken.
    }
    const std::string address = ToString(connection.target);
    TellResult(console, {{"asked", address}},
               fmt::format("the agent at {} has been asked to end", address));
    return kDone;
  });
}

}  // namespace desktop
