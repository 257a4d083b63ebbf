#include "bench/handheld_copy.h"

#include <fcntl.h>
#include <stdlib.h>

#include <stdexcept>

#include "bench/client.h"
#include "bench/floor/database.h"
#include "bench/server.h"
#include "handheld/base/unique_fd.h"
#include "handheld/directory/handheld.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

}  // namespace

WorkDirectory::WorkDirectory(const fs::path& parent) {
  std::string name = (parent / "bench-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no directory below " + parent.string());
  path_ = name;
}

WorkDirectory::~WorkDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

HandheldCopy::HandheldCopy(const fs::path& parent, const fs::path& original) : directory_(parent) {
  fs::copy(original, path(), fs::copy_options::recursive);
  const ce::host::UniqueFd directory(open(path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (syncfs(directory.get()) != 0) throw std::runtime_error("the disk does not settle");
}

PreparedHandheld::PreparedHandheld(const fs::path& parent, const Workload& workload, int count)
    : parent_(parent), directory_(parent), count_(count) {
  ce::host::Handheld::Create(directory_.path(), {});
  if (workload.fill) {
    const auto handheld = ce::host::Handheld::Open(directory_.path(), "compare");
    workload.fill(*handheld, count);
    return;
  }
  Server agent = StartAgent(directory_.path());
  if (count == 0) {
    DrainDownload(agent.port(), workload);  // makes the store
  } else {
    const WorkDirectory work(parent);
    const fs::path file = work.path() / "chunks";
    WriteChunks(file, workload, count, kRecordsPerChunk);
    UploadChunks(agent.port(), ChunkFile(file), count, kRecordsPerChunk);
  }
  agent.Stop();
}

void ExpectSameRows(const HandheldCopy& ours, const HandheldCopy& floor,
                    const std::vector<std::string>& tables) {
  floors::Database store(ours.store().string());
  store.Run(("ATTACH '" + floor.store().string() + "' AS floor").c_str());
  for (const std::string& table : tables) {
    const std::string here = "SELECT * FROM main." + table;
    const std::string there = "SELECT * FROM floor." + table;
    floors::Query differing(store, "SELECT count(*) FROM (SELECT * FROM (" + here + " EXCEPT " +
                                       there + ") UNION ALL SELECT * FROM (" + there + " EXCEPT " +
                                       here + "))");
    if (differing.Step() && differing.Integer(0) != 0)
      throw std::runtime_error("the floor's rows of " + table + " are not ours");
  }
}

}  // namespace bench
