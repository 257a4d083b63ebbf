#include "bench/rows.h"

#include <fmt/core.h>

#include <algorithm>

namespace bench {

const std::vector<Row>& Rows() {
  static const std::vector<Row> kRows = {
      // First: a start begins with a fork of this process, which is slow once that has grown.
      {"start", "start to listening", StartTime},
      {"idle", "idle memory", IdleMemory},
      {"size", "stripped size of corvane", StrippedSize},
      {"down.contacts", "download of contacts, 18 filled fields", DownloadContacts},
      {"down.tasks", "download of tasks", DownloadTasks},
      {"down.appointments", "download of appointments, half recurring", DownloadAppointments},
      {"down.messages", "download of text messages", DownloadMessages},
      {"down.calls", "download of calls", DownloadCalls},
      {"up.contacts", "upload of contacts, chunks of 50", UploadContacts},
      {"up.single", "upload of contacts, one a chunk, awaiting each answer", UploadOneByOne},
      {"up.appointments", "upload of appointments, half recurring with two exceptions",
       UploadAppointments},
      {"up.series", "upload of a daily series with 3,000 exceptions", UploadSeries},
      {"down.16", "16 downloads of contacts at once, against one", DownloadsAtOnce},
      {"push", "corvane-desktop push of contacts", Push},
      {"push.again", "a second push with nothing changed", PushAgain},
      {"request", "CVCeGetSystemTime, 8 clients", Requests},
      {"cost.down", "a contact's download among 1,000,000 against among 1,000", CostOfDownload,
       true},
      {"cost.up", "a contact's upload among 1,000,000 against among 1,000", CostOfUpload, true},
  };
  return kRows;
}

std::vector<Result> MemoryResults(const std::vector<Result>& results) {
  double most = 0;
  double growth = 0;
  for (const Result& result : results) {
    const auto peak = static_cast<double>(MedianPeak(result.ours));
    most = std::max(most, peak / 1024);
    if (result.peakKiBOf1000)
      growth = std::max(growth, peak / static_cast<double>(*result.peakKiBOf1000));
  }
  std::vector<Result> memory;
  const auto add = [&](const char* row, const char* what, const char* unit, double figure,
                       double target) {
    if (figure == 0) return;
    Result result{row, what, 0, unit, {{figure}}};
    result.compared = Compared::kFigure;
    result.target = target;
    result.atLeast = false;
    memory.push_back(std::move(result));
  };
  add("memory", "peak memory of the agent in any row", "MiB", most, 24);
  add("memory.growth", "the most of it against 1,000 records", "x", growth, 1.2);
  return memory;
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
