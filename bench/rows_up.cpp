#include <sstream>
#include <stdexcept>

#include "bench/client.h"
#include "bench/handheld_copy.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "tests/support/paths.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

// A workload's records as chunks, and an empty handheld to take them in.
class Upload {
 public:
  Upload(const fs::path& parent, const Workload& workload, int count, int recordsPerChunk)
      : workload_(workload),
        count_(count),
        recordsPerChunk_(recordsPerChunk),
        work_(parent),
        file_(work_.path() / "chunks"),
        empty_(parent, workload, 0) {
    WriteChunks(file_, workload, count, recordsPerChunk);
  }

  HandheldCopy Handheld() const { return empty_.Copy(); }

  Run MeasureOurs(const HandheldCopy& handheld) const {
    const ChunkFile chunks(file_);
    const Server agent = StartAgent(handheld.path());
    const double cpu = agent.CpuSeconds();
    const double begin = Now();
    UploadChunks(agent.port(), chunks, count_, recordsPerChunk_);
    const double seconds = Now() - begin;
    return {count_ / seconds, (agent.CpuSeconds() - cpu) / count_ * kMicros, agent.PeakKiB()};
  }

  // It measures itself: nothing travels.
  Run MeasureFloor(const HandheldCopy& handheld) const {
    corvane::testing::Process floor(
        corvane::testing::ProgramPath("bench_floor"),
        {"up", workload_.name, handheld.store().string(), file_.string()});
    std::istringstream line(floor.ReadLine());
    double seconds = 0;
    double cpu = 0;
    long peak = 0;
    if (!(line >> seconds >> cpu >> peak) || floor.Wait() != 0)
      throw std::runtime_error("the floor failed");
    return {count_ / seconds, cpu / count_ * kMicros, peak};
  }

 private:
  const Workload& workload_;
  const int count_;
  const int recordsPerChunk_;
  const WorkDirectory work_;
  const fs::path file_;
  const PreparedHandheld empty_;
};

long PeakOfFewUploaded(const Options& options, const Workload& workload, int recordsPerChunk) {
  const Upload upload(options.directory, workload, kFewRecords, recordsPerChunk);
  std::vector<Run> runs;
  for (int i = 0; i < options.pairs; ++i) runs.push_back(upload.MeasureOurs(upload.Handheld()));
  return MedianPeak(runs);
}

struct UploadCase {
  const Workload& workload;
  int count;
  int recordsPerChunk;
  std::vector<std::string> tables;
};

Result CompareUploadRuns(const Row& row, const Options& options, const UploadCase& what) {
  const Upload upload(options.directory, what.workload, what.count, what.recordsPerChunk);
  Result result{row.name, row.what, what.count, "/s"};
  for (int i = 0; i < options.pairs; ++i) {
    const HandheldCopy ours = upload.Handheld();
    result.ours.push_back(upload.MeasureOurs(ours));
    const HandheldCopy floor = upload.Handheld();
    result.floor.push_back(upload.MeasureFloor(floor));
    if (i > 0) continue;
    ExpectSameRows(ours, floor, what.tables);
    Tell(row, "the floor's rows are the agent's");
  }
  return result;
}

Result CompareUploads(const Row& row, const Options& options, const UploadCase& what,
                      double target) {
  Result result = CompareUploadRuns(row, options, what);
  result.target = target;
  result.peakKiBOf1000 = PeakOfFewUploaded(options, what.workload, what.recordsPerChunk);
  return result;
}

}  // namespace

Result UploadContacts(const Row& row, const Options& options) {
  const int count = options.Count(100'000);
  return CompareUploads(row, options,
                        {kContacts, count, kRecordsPerChunk, {"contacts", "oid_counter"}}, 0.5);
}

Result UploadOneByOne(const Row& row, const Options& options) {
  const int count = options.Count(20'000);
  return CompareUploads(row, options, {kContacts, count, 1, {"contacts", "oid_counter"}}, 0.7);
}

Result UploadAppointments(const Row& row, const Options& options) {
  const int count = options.Count(20'000);
  return CompareUploads(
      row, options,
      {kAppointments, count, kRecordsPerChunk, {"appointments", "exceptions", "oid_counter"}}, 0.4);
}

Result UploadSeries(const Row& row, const Options& options) {
  return CompareUploadRuns(row, options,
                           {kLongSeries, 1, 1, {"appointments", "exceptions", "oid_counter"}});
}

Result CostOfUpload(const Row& row, const Options& options) {
  const int count = options.Count(kManyRecords);
  Tell(row, "preparing the records");
  const Upload many(options.directory, kContacts, count, kRecordsPerChunk);
  const Upload few(options.directory, kContacts, kFewRecords, kRecordsPerChunk);
  Result result = OfCosts(row, count);
  for (int i = 0; i < options.pairs; ++i) {
    result.ours.push_back(OfCost(many.MeasureOurs(many.Handheld())));
    std::vector<Run> runs;
    for (int j = 0; j < kRunsOfFew; ++j) runs.push_back(OfCost(few.MeasureOurs(few.Handheld())));
    result.floor.push_back(MedianRun(runs));
  }
  result.peakKiBOf1000 = MedianPeak(result.floor);
  return result;
}

}  // namespace bench
