#include "bench/rows.h"

#include <fmt/core.h>

#include <algorithm>

namespace bench {

const std::vector<Row>& Rows() {
  static const std::vector<Row> kRows = {
      {"down.contacts", "download of contacts, 18 filled fields", DownloadContacts},
      {"down.tasks", "download of tasks", DownloadTasks},
      {"down.appointments", "download of appointments, half recurring", DownloadAppointments},
      {"down.messages", "download of text messages", DownloadMessages},
      {"down.calls", "download of calls", DownloadCalls},
      {"up.contacts", "upload of contacts, chunks of 50", UploadContacts},
      {"up.single", "upload of contacts, one a chunk, awaiting each answer", UploadOneByOne},
      {"up.appointments", "upload of appointments, half recurring with two exceptions",
       UploadAppointments},
      {"down.16", "16 downloads of contacts at once, against one", DownloadsAtOnce},
      {"push", "corvane-desktop push of contacts", Push},
      {"push.again", "a second push with nothing changed", PushAgain},
      {"request", "CVCeGetSystemTime, 8 clients", Requests},
      {"cost.down", "a contact's download among 1,000,000 against among 1,000", CostOfDownload,
       true},
      {"cost.up", "a contact's upload among 1,000,000 against among 1,000", CostOfUpload, true},
      {"start", "start to listening", StartTime},
      {"idle", "idle memory", IdleMemory},
      {"size", "stripped size of corvane", StrippedSize},
  };
  return kRows;
}

std::vector<Result> MemoryResults(const std::vector<Result>& results) {
  Result most{"memory", "peak memory of the agent in any row", 0, "MiB"};
  Result growth{"memory.growth", "the same against 1,000 records", 0, "x"};
  for (const Result& result : results) {
    if (!result.peakKiBOf1000) continue;
    const auto peak = static_cast<double>(MedianPeak(result.ours));
    most.ours.push_back({peak / 1024});
    growth.ours.push_back({peak / static_cast<double>(*result.peakKiBOf1000)});
  }
  if (most.ours.empty()) return {};
  for (Result* each : {&most, &growth}) {
    each->compared = Compared::kFigure;
    each->atLeast = false;
    // The worst alone counts.
    const auto worst = std::max_element(
        each->ours.begin(), each->ours.end(),
        [](const Run& left, const Run& right) { return left.figure < right.figure; });
    each->ours = {*worst};
  }
  most.target = 24;
  growth.target = 1.2;
  return {most, growth};
}

Run OfCost(const Run& run) {
  return {kMicros / run.figure, run.cpuMicros, run.peakKiB};
}

Result OfCosts(const Row& row, int records) {
  Result result{row.name, row.what, records, "us"};
  result.target = 1.15;
  result.atLeast = false;
  return result;
}

void Tell(const Row& row, const std::string& what) {
  fmt::print(stderr, "{}: {}\n", row.name, what);
}

}  // namespace bench
