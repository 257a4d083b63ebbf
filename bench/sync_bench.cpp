// What a desktop sees of the agent's speed: uploads, downloads and deletes of records, small
// requests, and the agent's peak memory, over loopback against a store on a real disk.
//
//   sync_bench [--directory DIR] [contacts|calendar|tasks|messages|calls] [COUNT…]
//
// Default: the working directory; all of them; 1000 10000 and of contacts also 100000, of messages
// also 50000. Messages and calls are on the handheld from the beginning.
#include <fmt/core.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/bench_records.h"
#include "handheld/directory/handheld.h"
#include "tests/support/paths.h"
#include "tests/support/wire/process.h"
#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace {
namespace fs = std::filesystem;
using bench::Workload;
using corvane::testing::Chunk;
using corvane::testing::Invoke;
using corvane::testing::RawConnection;
using corvane::testing::Record;
using corvane::testing::Word;
using Clock = std::chrono::steady_clock;

constexpr int kRecordsPerChunk = 20;
constexpr int kSmallRequests = 5000;
constexpr std::array kWorkloads = {&bench::kContacts, &bench::kCalendar, &bench::kTasks,
                                   &bench::kMessages, &bench::kCalls};

double SecondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

// A handheld with an agent on it, for one measurement.
class Agent {
 public:
  explicit Agent(const fs::path& parent, const Workload* workload = nullptr, int count = 0) {
    std::string name = (parent / "corvane-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no directory below " + parent.string());
    directory_ = name;
    ce::host::Handheld::Create(directory_, {});
    if (workload && workload->fill) {
      const auto handheld = ce::host::Handheld::Open(directory_, "sync_bench");
      workload->fill(*handheld, count);
    }
    Start();
  }
  ~Agent() {
    process_.reset();
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  RawConnection Connect() const { return RawConnection(port_); }
  // Peak memory is counted from a start.
  void Restart() {
    process_.reset();
    Start();
  }
  // In KiB, as the system counts it.
  long PeakMemory() const {
    std::ifstream status("/proc/" + std::to_string(process_->pid()) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return 0;
  }

 private:
  void Start() {
    const auto begin = Clock::now();
    process_ = std::make_unique<corvane::testing::Process>(
        corvane::testing::ProgramPath("corvane"),
        std::vector<std::string>{"--handheld", directory_.string(), "--listen", "127.0.0.1:0"});
    const std::string line = process_->ReadLine();
    startSeconds_ = SecondsSince(begin);
    if (line.find(':') == std::string::npos) throw std::runtime_error("no agent: " + line);
    port_ = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }

 public:
  double startSeconds_ = 0;

 private:
  fs::path directory_;
  std::unique_ptr<corvane::testing::Process> process_;
  std::uint16_t port_ = 0;
};

double Upload(const Agent& agent, const Workload& workload, int total) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  connection.ReceiveWord();
  for (int sent = 0; sent < total;) {
    std::string document = "<root>";
    int records = 0;
    for (; records < kRecordsPerChunk && sent < total; ++records)
      document += workload.record(++sent);
    connection.Send(Chunk(document + "</root>"));
    const std::string replies = connection.Receive(8 * static_cast<std::size_t>(records));
    for (int i = 0; i < records; ++i)
      if (corvane::testing::WordAt(replies, 8 * i + 4) != 0)
        throw std::runtime_error("a record was refused");
  }
  connection.Send(Word(0));
  connection.ReceiveToEnd();
  return SecondsSince(begin);
}

struct DownloadResult {
  double seconds;
  double megabytes;
};

DownloadResult Download(const Agent& agent, const Workload& workload, int expected) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(Record(
      Invoke{.function = "DownloadAllPIMRecords", .input = Word(workload.kind), .streamFlag = 1}
          .Body()));
  connection.ReceiveWord();
  std::size_t bytes = 0;
  std::size_t records = 0;
  for (std::uint32_t count; (count = connection.ReceiveWord()) != 0;) {
    const std::string document = connection.Receive(count);
    bytes += document.size();
    records += corvane::testing::CountElements(document, workload.element);
  }
  if (connection.ReceiveWord() != 0 || records != static_cast<std::size_t>(expected))
    throw std::runtime_error("the download is not complete");
  return {SecondsSince(begin), static_cast<double>(bytes) / 1e6};
}

double DeleteAll(const Agent& agent, const Workload& workload) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(
      Record(Invoke{.function = "DeleteAllPIMRecords", .input = Word(workload.kind)}.Body()));
  if (corvane::testing::WordAt(connection.Receive(20), 8) != 0)
    throw std::runtime_error("the delete failed");
  return SecondsSince(begin);
}

double SmallRequestsPerSecond(const Agent& agent) {
  const std::string record = Record(Invoke{.function = "CVCeGetSystemTime"}.Body());
  const auto begin = Clock::now();
  for (int i = 0; i < kSmallRequests; ++i) {
    RawConnection connection = agent.Connect();
    connection.Send(record);
    if (connection.Receive(36).size() != 36) throw std::runtime_error("a request was not answered");
  }
  return kSmallRequests / SecondsSince(begin);
}

void Measure(const fs::path& parent, const Workload& workload, int count) {
  Agent agent(parent, &workload, count);
  const double upload = workload.record ? Upload(agent, workload, count) : 0;
  const long uploadPeak = agent.PeakMemory();
  agent.Restart();
  const DownloadResult download = Download(agent, workload, count);
  const long downloadPeak = agent.PeakMemory();
  const double deletion = workload.canBeDeleted ? DeleteAll(agent, workload) : 0;
  fmt::print("{:>9} {:>8} {:>8.2f} {:>8.0f} {:>9} {:>8.3f} {:>8.0f} {:>7.1f} {:>9} {:>9.3f}\n",
             workload.name, count, upload, upload > 0 ? count / upload : 0, uploadPeak,
             download.seconds, count / download.seconds, download.megabytes, downloadPeak,
             deletion);
}

struct Options {
  fs::path directory = fs::current_path();
  std::vector<const Workload*> workloads;
  std::vector<int> counts;
};

Options ParseArguments(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--directory" && i + 1 < argc) {
      options.directory = argv[++i];
      continue;
    }
    bool named = false;
    for (const Workload* workload : kWorkloads) {
      if (argument != workload->name) continue;
      options.workloads.push_back(workload);
      named = true;
    }
    if (!named) options.counts.push_back(std::stoi(argument));
  }
  if (options.workloads.empty()) options.workloads.assign(kWorkloads.begin(), kWorkloads.end());
  return options;
}

std::vector<int> DefaultCounts(const Workload& workload) {
  if (&workload == &bench::kContacts) return {1000, 10000, 100000};
  if (&workload == &bench::kMessages) return {1000, 10000, 50000};
  return {1000, 10000};
}

void Run(const Options& options) {
  {
    const Agent agent(options.directory);
    fmt::print("start to listening: {:.1f} ms, idle peak memory: {} KiB\n",
               agent.startSeconds_ * 1e3, agent.PeakMemory());
    fmt::print("CVCeGetSystemTime: {:.0f} requests/s ({} requests, a connection each)\n\n",
               SmallRequestsPerSecond(agent), kSmallRequests);
  }
  fmt::print("{:>9} {:>8} {:>8} {:>8} {:>9} {:>8} {:>8} {:>7} {:>9} {:>9}\n", "records", "count",
             "up s", "up /s", "peak KiB", "down s", "down /s", "MB", "peak KiB", "delete s");
  for (const Workload* workload : options.workloads) {
    for (const int count : options.counts.empty() ? DefaultCounts(*workload) : options.counts)
      Measure(options.directory, *workload, count);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(ParseArguments(argc, argv));
  } catch (const std::exception& error) {
    fmt::print(stderr, "sync_bench: {}\n", error.what());
    return 1;
  }
}
