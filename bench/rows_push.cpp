#include <sys/resource.h>

#include <stdexcept>

#include "bench/handheld_copy.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "tests/support/paths.h"

namespace bench {
namespace {

namespace fs = std::filesystem;
using corvane::testing::Process;
using corvane::testing::ProgramPath;

constexpr int kFullCount = 50'000;

double SecondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Of the programs that have been waited for.
double CpuOfEnded() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime);
}

struct Expense {
  double seconds;
  double cpu;
};

// A program from its start to its end, which must be a good one.
Expense RunToEnd(const std::string& program, const std::vector<std::string>& arguments) {
  const double cpu = CpuOfEnded();
  const double begin = Now();
  Process process(ProgramPath(program), arguments, {.captureErrors = true});
  const std::string output = process.ReadToEnd();
  if (process.Wait() != 0)
    throw std::runtime_error(program + " failed: " + process.ReadErrors().substr(0, 500));
  return {Now() - begin, CpuOfEnded() - cpu};
}

// People in a vCard file, and an empty handheld to push them to.
class PushCase {
 public:
  PushCase(const fs::path& parent, int count)
      : count_(count), work_(parent), empty_(parent, kContacts, 0) {
    WriteVCards(vCards(), count);
    WriteChunks(chunks(), kContacts, count, kRecordsPerChunk);
  }

  HandheldCopy Handheld() const { return empty_.Copy(); }

  Run MeasureOurs(const HandheldCopy& handheld) const {
    const Server agent = StartAgent(handheld.path());
    ForgetMap();
    return PushTo(agent);
  }

  // Of a second push, with nothing changed: its seconds.
  Run MeasureAgain(const HandheldCopy& handheld) const {
    const Server agent = StartAgent(handheld.path());
    ForgetMap();
    PushTo(agent);
    Run run = PushTo(agent);
    run.figure = count_ / run.figure;
    return run;
  }

  Run MeasureFloor(const HandheldCopy& handheld) const {
    const Expense expense = RunToEnd(
        "bench_floor", {"push", handheld.store().string(), chunks().string(), vCards().string()});
    return {count_ / expense.seconds, expense.cpu / count_ * kMicros, 0};
  }

 private:
  fs::path vCards() const { return work_.path() / "people.vcf"; }
  fs::path chunks() const { return work_.path() / "chunks"; }
  fs::path map() const { return work_.path() / "map" / "map.json"; }
  void ForgetMap() const { fs::remove_all(map().parent_path()); }

  // The CPU is that of both ends.
  Run PushTo(const Server& agent) const {
    const double cpu = agent.CpuSeconds();
    const Expense expense =
        RunToEnd("corvane-desktop", {"--to", "127.0.0.1:" + std::to_string(agent.port()), "push",
                                     "--map", map().string(), vCards().string()});
    return {count_ / expense.seconds, (agent.CpuSeconds() - cpu + expense.cpu) / count_ * kMicros,
            agent.PeakKiB()};
  }

  const int count_;
  const WorkDirectory work_;
  const PreparedHandheld empty_;
};

}  // namespace

Result Push(const Row& row, const Options& options) {
  const int count = options.Count(kFullCount);
  const PushCase push(options.directory, count);
  Result result{row.name, row.what, count, "/s"};
  result.target = 0.4;
  for (int i = 0; i < options.pairs; ++i) {
    const HandheldCopy ours = push.Handheld();
    result.ours.push_back(push.MeasureOurs(ours));
    const HandheldCopy floor = push.Handheld();
    result.floor.push_back(push.MeasureFloor(floor));
    if (i > 0) continue;
    ExpectSameRows(ours, floor, {"contacts", "oid_counter"});
    Tell(row, "the floor's rows are the agent's");
  }
  const PushCase few(options.directory, kFewRecords);
  std::vector<Run> runs;
  for (int i = 0; i < options.pairs; ++i) runs.push_back(few.MeasureOurs(few.Handheld()));
  result.peakKiBOf1000 = MedianPeak(runs);
  return result;
}

Result PushAgain(const Row& row, const Options& options) {
  const int count = options.Count(kFullCount);
  const PushCase push(options.directory, count);
  Result result{row.name, row.what, count, "s"};
  result.compared = Compared::kFigure;
  result.target = 2;
  result.atLeast = false;
  for (int i = 0; i < options.pairs; ++i) result.ours.push_back(push.MeasureAgain(push.Handheld()));
  return result;
}

}  // namespace bench
