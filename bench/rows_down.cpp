#include <future>
#include <stdexcept>

#include "bench/client.h"
#include "bench/handheld_copy.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "tests/support/wire/wire_bytes.h"

namespace bench {
namespace {

constexpr int kManyDownloads = 16;
constexpr int kRecordsOfMany = 20'000;

Server StartFloorOn(const HandheldCopy& handheld, const Workload& workload) {
  return StartFloor({"down", workload.name, handheld.store().string()});
}

// A download that is all there.
Run MeasureDownload(const Server& server, const Workload& workload, int count,
                    std::uint64_t expectedBytes) {
  const double cpu = server.CpuSeconds();
  const double begin = Now();
  const std::uint64_t bytes = DrainDownload(server.port(), workload);
  const double seconds = Now() - begin;
  if (bytes != expectedBytes) throw std::runtime_error("a download is not complete");
  return {count / seconds, (server.CpuSeconds() - cpu) / count * kMicros, server.PeakKiB()};
}

Run MeasureOurs(const PreparedHandheld& handheld, const Workload& workload,
                std::uint64_t expectedBytes) {
  const HandheldCopy copy = handheld.Copy();
  return MeasureDownload(StartAgent(copy.path()), workload, handheld.count(), expectedBytes);
}

Run MeasureFloor(const PreparedHandheld& handheld, const Workload& workload,
                 std::uint64_t expectedBytes) {
  const HandheldCopy copy = handheld.Copy();
  return MeasureDownload(StartFloorOn(copy, workload), workload, handheld.count(), expectedBytes);
}

std::string DownloadOnce(const PreparedHandheld& handheld, const Workload& workload) {
  const HandheldCopy copy = handheld.Copy();
  return ReadDownload(StartAgent(copy.path()).port(), workload);
}

// How many bytes a download has; that the floor's are the same.
std::uint64_t CompareBytes(const PreparedHandheld& handheld, const Workload& workload) {
  const std::string ours = DownloadOnce(handheld, workload);
  if (corvane::testing::CountElements(ours, workload.element) !=
      static_cast<std::size_t>(handheld.count()))
    throw std::runtime_error("the agent does not send all records");
  const HandheldCopy copy = handheld.Copy();
  if (ours != ReadDownload(StartFloorOn(copy, workload).port(), workload))
    throw std::runtime_error("the floor's bytes are not the agent's");
  return ours.size();
}

long PeakOfFewDownloaded(const Options& options, const Workload& workload) {
  const PreparedHandheld handheld(options.directory, workload, kFewRecords);
  const std::uint64_t bytes = DownloadOnce(handheld, workload).size();
  std::vector<Run> runs;
  for (int i = 0; i < options.pairs; ++i) runs.push_back(MeasureOurs(handheld, workload, bytes));
  return MedianPeak(runs);
}

Result CompareDownloads(const Row& row, const Options& options, const Workload& workload,
                        int fullCount, double target) {
  const int count = options.Count(fullCount);
  Tell(row, "preparing the store");
  const PreparedHandheld handheld(options.directory, workload, count);
  const std::uint64_t bytes = CompareBytes(handheld, workload);
  Tell(row, "the floor's bytes are the agent's");
  Result result{row.name, row.what, count, "/s"};
  result.target = target;
  for (int i = 0; i < options.pairs; ++i) {
    result.ours.push_back(MeasureOurs(handheld, workload, bytes));
    result.floor.push_back(MeasureFloor(handheld, workload, bytes));
  }
  result.peakKiBOf1000 = PeakOfFewDownloaded(options, workload);
  return result;
}

// All of them together.
Run MeasureMany(const PreparedHandheld& handheld, const Workload& workload, int downloads,
                std::uint64_t expectedBytes) {
  const HandheldCopy copy = handheld.Copy();
  const Server agent = StartAgent(copy.path());
  const double cpu = agent.CpuSeconds();
  const double begin = Now();
  std::vector<std::future<std::uint64_t>> clients;
  for (int i = 0; i < downloads; ++i)
    clients.push_back(
        std::async(std::launch::async, [&] { return DrainDownload(agent.port(), workload); }));
  bool complete = true;
  for (auto& client : clients) complete = client.get() == expectedBytes && complete;
  const double seconds = Now() - begin;
  if (!complete) throw std::runtime_error("a download is not complete");
  const double records = static_cast<double>(downloads) * handheld.count();
  return {records / seconds, (agent.CpuSeconds() - cpu) / records * kMicros, agent.PeakKiB()};
}

// The median of many: one alone is soon over.
Run MeasureCostOfFew(const PreparedHandheld& handheld, std::uint64_t expectedBytes) {
  const HandheldCopy copy = handheld.Copy();
  const Server agent = StartAgent(copy.path());
  std::vector<Run> runs;
  for (int i = 0; i < kRunsOfFew; ++i)
    runs.push_back(OfCost(MeasureDownload(agent, kContacts, handheld.count(), expectedBytes)));
  return MedianRun(runs);
}

}  // namespace

Result DownloadContacts(const Row& row, const Options& options) {
  return CompareDownloads(row, options, kContacts, 100'000, 0.5);
}

Result DownloadTasks(const Row& row, const Options& options) {
  return CompareDownloads(row, options, kTasks, 100'000, 0.4);
}

Result DownloadAppointments(const Row& row, const Options& options) {
  return CompareDownloads(row, options, kAppointments, 20'000, 0.4);
}

Result DownloadMessages(const Row& row, const Options& options) {
  return CompareDownloads(row, options, kMessages, 50'000, 0.4);
}

Result DownloadCalls(const Row& row, const Options& options) {
  return CompareDownloads(row, options, kCalls, 50'000, 0.4);
}

Result DownloadsAtOnce(const Row& row, const Options& options) {
  const int count = options.Count(kRecordsOfMany);
  Tell(row, "preparing the store");
  const PreparedHandheld handheld(options.directory, kContacts, count);
  const std::uint64_t bytes = DownloadOnce(handheld, kContacts).size();
  Result result{row.name, row.what, count, "/s"};
  result.target = 1.6;
  for (int i = 0; i < options.pairs; ++i) {
    result.ours.push_back(MeasureMany(handheld, kContacts, kManyDownloads, bytes));
    result.floor.push_back(MeasureMany(handheld, kContacts, 1, bytes));
  }
  return result;
}

Result CostOfDownload(const Row& row, const Options& options) {
  const int count = options.Count(kManyRecords);
  Tell(row, "preparing the stores");
  const PreparedHandheld many(options.directory, kContacts, count);
  const PreparedHandheld few(options.directory, kContacts, kFewRecords);
  const std::uint64_t manyBytes = DownloadOnce(many, kContacts).size();
  const std::uint64_t fewBytes = DownloadOnce(few, kContacts).size();
  Result result = OfCosts(row, count);
  for (int i = 0; i < options.pairs; ++i) {
    result.ours.push_back(OfCost(MeasureOurs(many, kContacts, manyBytes)));
    result.floor.push_back(MeasureCostOfFew(few, fewBytes));
  }
  result.peakKiBOf1000 = MedianPeak(result.floor);
  return result;
}

}  // namespace bench
