#include "desktop/commands/commands_sync.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "desktop/commands/sync_session.h"
#include "desktop/commands/sync_watch.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

int StatusOfAll(const std::vector<int>& codes) {
  const bool same = std::ranges::all_of(codes, [&](int code) { return code == codes.front(); });
  return same ? codes.front() : kPartlyDone;
}

std::string HeadlineOf(const SyncTarget& target) {
  return fmt::format("{}: {}, {}", target.pair, ToString(target.connection.target),
                     target.sync.folder.string());
}

void PrintJson(const SyncSession& session, const Console& console) {
  console.out << session.json() << '\n';
}

int SyncOne(SyncTarget target, const SyncCommand& command, const Console& console) {
  SyncSession session(std::move(target), command, console, {});
  const int code = session.Run();
  if (command.json) PrintJson(session, console);
  FlushOutput(console);
  return code;
}

int SyncAll(std::vector<SyncTarget> targets, const SyncCommand& command, const Console& console) {
  const ConnectionOptions connection = targets.front().connection;
  std::vector<int> codes(targets.size(), kFailed);
  std::vector<std::string> json;
  try {
    for (std::size_t i = 0; i < targets.size(); ++i) {
      Pause(connection, std::chrono::milliseconds(0));
      std::string headline = HeadlineOf(targets[i]);
      SyncSession session(std::move(targets[i]), command, console, std::move(headline));
      codes[i] = session.Run();
      json.push_back(session.json());
      FlushOutput(console);
    }
  } catch (const Interrupted& problem) {
    TellProblem(console, problem.what());
  }
  if (command.json) console.out << fmt::format("{}\n", fmt::join(json, "\n"));
  FlushOutput(console);
  return StatusOfAll(codes);
}

int WatchAll(std::vector<SyncTarget> targets, const SyncCommand& command, const Console& console) {
  const WatchOptions options{command.every, targets.front().connection.interruptFd, {}};
  std::vector<WatchedPlace> places;
  const bool several = targets.size() > 1;
  for (SyncTarget& target : targets) {
    WatchedPlace place{target.sync.folder, PartsOf(target.sync.kinds), {}, {}};
    std::string headline = several ? HeadlineOf(target) : std::string();
    const auto session =
        std::make_shared<SyncSession>(std::move(target), command, console, std::move(headline));
    place.run = [session, &command, &console] {
      const int code = session->Run();
      if (command.json) PrintJson(*session, console);
      FlushOutput(console);
      return code;
    };
    place.tell = [session](const std::string& line) { session->Tell(line); };
    places.push_back(std::move(place));
  }
  return StatusOfAll(WatchPlaces(std::move(places), options));
}

int SyncTargets(std::vector<SyncTarget> targets, const SyncCommand& command,
                const Console& console) {
  if (command.watch) return WatchAll(std::move(targets), command, console);
  if (command.what) return SyncOne(std::move(targets.front()), command, console);
  return SyncAll(std::move(targets), command, console);
}

int RefuseAll(const Console& console, const char* why) {
  TellProblem(console, why);
  return kUsage;
}

int SyncPairs(const ConnectionOptions& connection, const PlaceOptions& place,
              const SyncCommand& command, const Console& console) {
  if (place.addressGiven) return RefuseAll(console, "--to needs a pair's name or a folder");
  std::vector<SyncTarget> targets = AllTargets(connection, place, command.choices);
  if (targets.empty()) {
    return RefuseAll(console, "there is no pair: name a folder, or make one with \"pair\"");
  }
  return SyncTargets(std::move(targets), command, console);
}

}  // namespace

int Sync(const ConnectionOptions& connection, const PlaceOptions& place, const SyncCommand& command,
         const Console& console) {
  return RunGuarded(console, [&] {
    if (!command.what) return SyncPairs(connection, place, command, console);
    return SyncTargets({TargetOf(*command.what, connection, place, command.choices, console)},
                       command, console);
  });
}

}  // namespace desktop
