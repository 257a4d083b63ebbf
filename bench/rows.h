// The rows of the comparison. Each prepares its handhelds, runs ours and the floor's in turn, and
// throws std::runtime_error when one of them does not do the work.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "bench/result.h"

namespace bench {

// How little the memory and the cost of many records are held against.
inline constexpr int kFewRecords = 1000;
inline constexpr int kRunsOfFew = 25;  // which are soon over
inline constexpr int kManyRecords = 1'000'000;
inline constexpr double kMicros = 1e6;

struct Options {
  int pairs = 5;
  std::optional<int> count;  // of records, in place of each row's own
  int divisor = 1;           // of each row's own
  std::filesystem::path directory;

  int Count(int full) const { return count ? *count : full / divisor; }
};

struct Row {
  const char* name;
  const char* what;
  Result (*measure)(const Row& row, const Options& options);
  bool onlyByName = false;  // takes long
};

const std::vector<Row>& Rows();

// What the memory of all rows comes to: the most that the agent had, and the most that it had
// against itself with 1,000 records. Nothing when no row tells.
std::vector<Result> MemoryResults(const std::vector<Result>& results);

// Records a second as microseconds a record.
Run OfCost(const Run& run);
// Of a row whose figures are the cost of a record, among many against among few.
Result OfCosts(const Row& row, int records);

// What a person is told meanwhile, on the standard error.
void Tell(const Row& row, const std::string& what);

// Row::measure of each kind of row.
Result DownloadContacts(const Row& row, const Options& options);
Result DownloadTasks(const Row& row, const Options& options);
Result DownloadAppointments(const Row& row, const Options& options);
Result DownloadMessages(const Row& row, const Options& options);
Result DownloadCalls(const Row& row, const Options& options);
Result DownloadsAtOnce(const Row& row, const Options& options);
Result UploadContacts(const Row& row, const Options& options);
Result UploadOneByOne(const Row& row, const Options& options);
Result UploadAppointments(const Row& row, const Options& options);
Result UploadSeries(const Row& row, const Options& options);
Result Push(const Row& row, const Options& options);
Result PushAgain(const Row& row, const Options& options);
Result Requests(const Row& row, const Options& options);
Result CostOfDownload(const Row& row, const Options& options);
Result CostOfUpload(const Row& row, const Options& options);
Result StartTime(const Row& row, const Options& options);
Result IdleMemory(const Row& row, const Options& options);
Result StrippedSize(const Row& row, const Options& options);

}  // namespace bench
