// corvane: the synchronisation agent, on a virtual handheld.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "agent/core/listener.h"
#include "agent/log/log.h"
#include "common/command_line/description.h"
#include "handheld/directory/handheld.h"
#include "handheld/network/awaited_requests.h"
#include "handheld/network/end_signals.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/service_manager.h"
#include "handheld/network/socket_watcher.h"
#include "handheld/store/store_check.h"
#include "handheld/system/memory.h"
#include "handheld/system/threads.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// For the request of a connection that came last, perhaps still on its way.
constexpr std::chrono::seconds kTimeToSpeak{1};

struct Options {
  std::string handheld;
  std::string listen = "127.0.0.1:2005";
  std::vector<std::string> allow;
  ce::LONG idle = corvane::kSelectPeriod.tv_sec;
  bool stay = false;
};

using ce::host::Severity;

void SayProblem(const std::string& message) {
  SayLine(stderr, Severity::kError, "corvane: " + message);
}

[[noreturn]] void FailToListen(const std::string& message) {
  SayProblem(message);
  std::fflush(nullptr);
  // The agent itself would go on without a listener; nobody could ever reach it.
  std::_Exit(kExitFailed);
}

[[noreturn]] void FailToUnderstand(const char* option, const std::string& value,
                                   const std::string& problem) {
  SayProblem(std::string(option) + " " + value + ": " + problem);
  std::exit(kExitUsage);
}

ce::host::ListenOptions ListenOptionsOf(const Options& options) {
  ce::host::ListenOptions listen;
  std::string error;
  if (!ce::host::ParseListenAddress(options.listen, &listen.address, &listen.port, &error))
    FailToUnderstand("--listen", options.listen, error);
  std::string allowed;
  for (const std::string& network : options.allow) {
    const auto range = ce::host::AddressRange::Parse(network, &error);
    if (!range) FailToUnderstand("--allow", network, error);
    listen.allowed.push_back(*range);
    allowed += (allowed.empty() ? "" : ", ") + network;
  }
  listen.keepListening = options.stay;
  listen.onOpenToNetwork = [allowed](const std::string& address) {
    SayLine(stderr, Severity::kWarning,
            "corvane: " + address + " is open to the network, without password or encryption, to " +
                (allowed.empty() ? "everybody" : allowed));
  };
  listen.onListening = [](const std::string& address) {
    SayLine(stdout, Severity::kInformation, "corvane: listening on " + address);
    ce::host::TellServiceManager("READY=1");
  };
  listen.onRefusal = [](const std::string& address) {
    SayLine(stderr, Severity::kWarning, "corvane: " + address + " may not connect");
  };
  listen.onFailure = FailToListen;
  return listen;
}

int RunAgent(const Options& options) {
  ce::host::KeepFreedMemory();
  ce::host::SetListenOptions(ListenOptionsOf(options));
  ce::host::EndSelectsOnSignals([] { corvane::QuitRequested = 1; });
  corvane::IdleSeconds = options.idle;
  const auto handheld = ce::host::Handheld::Open(options.handheld, "corvane");
  ce::host::Handheld::MakeCurrent(handheld.get());
  if (const std::string problem = ce::host::DescribeStoreProblem(*handheld); !problem.empty())
    throw ce::host::HandheldError(problem);

  int result = 0;
  do {
    corvane::ResetAgent();
    result = corvane::WinMain(1, 0, nullptr, 0);
    if (!options.stay) ce::host::TellServiceManager("STOPPING=1");
    ce::host::EndAwaitedRequests(kTimeToSpeak);
    ce::host::WaitForRequestThreads();
    corvane::CloseLog();
  } while (result == 0 && options.stay && !corvane::QuitByRequest() && !ce::host::EndedBySignal());

  ce::host::CloseKeptListener();
  ce::host::StopSocketWatcher();
  ce::host::Handheld::MakeCurrent(nullptr);
  return result;
}

int ParseAndRun(int argc, char** argv) {
  Options options;
  CLI::App app("The synchronisation agent of a handheld: serves a desktop over TCP.", "corvane");
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  command_line::AddDescription(app);
  app.add_option("--handheld", options.handheld, "The handheld's directory")
      ->required()
      ->type_name("DIR");
  app.add_option("--listen", options.listen,
                 "Where to listen, an IPv4 address or a host's name: 0.0.0.0 for every address, "
                 "port 0 for any free one")
      ->capture_default_str()
      ->type_name("ADDR[:PORT]");
  app.add_option("--allow", options.allow,
                 "Who may connect, an address or a network such as 192.168.1.0/24; may be given "
                 "several times (default: everybody)")
      ->type_name("CIDR")
      ->allow_extra_args(false);
  app.add_option("--idle", options.idle, "Seconds without a request after which it ends")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 1000000).description(""));
  app.add_flag("--stay", options.stay, "Start afresh when that time has passed, instead of ending");
  app.footer(
      "Ends by itself when nothing has come for that time, or when the desktop asks it to.\n"
      "SIGTERM or SIGINT ends it when the requests under way are done, a second one at once.\n"
      "Exit codes: 0 ended as asked, 1 failed, 2 wrong use.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kExitUsage;
  }
  return RunAgent(options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("corvane: out of memory\n", stderr);
    return kExitFailed;
  } catch (const std::exception& error) {
    SayProblem(error.what());
    return kExitFailed;
  }
}
