// Handhelds to measure on: prepared once, copied for each run.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "bench/bench_records.h"

namespace bench {

// A directory of its own below another, removed with all that is in it.
class WorkDirectory {
 public:
  explicit WorkDirectory(const std::filesystem::path& parent);
  WorkDirectory(const WorkDirectory&) = delete;
  WorkDirectory& operator=(const WorkDirectory&) = delete;
  ~WorkDirectory();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class HandheldCopy {
 public:
  // Settled on the disk, so that writing it does not go on under the measurement.
  HandheldCopy(const std::filesystem::path& parent, const std::filesystem::path& original);
  std::filesystem::path path() const { return directory_.path() / "handheld"; }
  std::filesystem::path store() const { return path() / "store.db"; }

 private:
  WorkDirectory directory_;
};

// A handheld in UTC with the first `count` records of a workload on it, as the agent takes them in.
class PreparedHandheld {
 public:
  PreparedHandheld(const std::filesystem::path& parent, const Workload& workload, int count);
  HandheldCopy Copy() const { return {parent_, directory_.path()}; }
  int count() const { return count_; }

 private:
  const std::filesystem::path parent_;
  WorkDirectory directory_;
  const int count_;
};

// Throws std::runtime_error unless the tables of both stores hold the same rows.
void ExpectSameRows(const HandheldCopy& ours, const HandheldCopy& floor,
                    const std::vector<std::string>& tables);

}  // namespace bench
