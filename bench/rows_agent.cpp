#include <stdexcept>

#include "bench/client.h"
#include "bench/handheld_copy.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "tests/support/paths.h"

namespace bench {
namespace {

constexpr int kClients = 8;
constexpr int kRequests = 40'000;
constexpr int kStarts = 4;  // a pair
constexpr double kMillis = 1e3;
constexpr double kMebibyte = 1 << 20;

Run MeasureRequests(const Server& server, int count) {
  const double cpu = server.CpuSeconds();
  const double begin = Now();
  AskTheTime(server.port(), kClients, count);
  const double seconds = Now() - begin;
  return {count / seconds, (server.CpuSeconds() - cpu) / count * kMicros, server.PeakKiB()};
}

Result OfFigures(const Row& row, const std::string& unit, double most) {
  Result result{row.name, row.what, 0, unit};
  result.compared = Compared::kFigure;
  result.target = most;
  result.atLeast = false;
  return result;
}

}  // namespace

Result Requests(const Row& row, const Options& options) {
  const int count = options.Count(kRequests);
  const PreparedHandheld empty(options.directory, kContacts, 0);
  Result result{row.name, row.what, count, "/s"};
  result.target = 0.8;
  for (int i = 0; i < options.pairs; ++i) {
    const HandheldCopy copy = empty.Copy();
    result.ours.push_back(MeasureRequests(StartAgent(copy.path()), count));
    result.floor.push_back(MeasureRequests(StartFloor({"request"}), count));
  }
  return result;
}

Result StartTime(const Row& row, const Options& options) {
  const PreparedHandheld empty(options.directory, kContacts, 0);
  const HandheldCopy copy = empty.Copy();
  Result result = OfFigures(row, "ms", 10);
  for (int i = 0; i < kStarts * options.pairs; ++i)
    result.ours.push_back({StartAgent(copy.path()).startSeconds() * kMillis});
  return result;
}

Result IdleMemory(const Row& row, const Options& options) {
  const PreparedHandheld empty(options.directory, kContacts, 0);
  Result result = OfFigures(row, "MiB", 8);
  for (int i = 0; i < options.pairs; ++i) {
    const HandheldCopy copy = empty.Copy();
    const Server agent = StartAgent(copy.path());
    AskTheTime(agent.port(), 1, 1);
    result.ours.push_back({static_cast<double>(agent.ResidentKiB()) / 1024});
  }
  return result;
}

Result StrippedSize(const Row& row, const Options& options) {
  const WorkDirectory work(options.directory);
  const std::filesystem::path stripped = work.path() / "corvane";
  corvane::testing::Process strip(
      "/usr/bin/strip", {"-o", stripped.string(), corvane::testing::ProgramPath("corvane")});
  if (strip.Wait() != 0) throw std::runtime_error("corvane cannot be stripped");
  Result result = OfFigures(row, "MiB", 1);
  result.ours.push_back({static_cast<double>(std::filesystem::file_size(stripped)) / kMebibyte});
  return result;
}

}  // namespace bench
