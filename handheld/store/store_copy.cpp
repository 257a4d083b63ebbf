#include "handheld/store/store_copy.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <system_error>

#include "common/files/atomic_file.h"
#include "handheld/base/fault.h"
#include "handheld/base/unique_fd.h"
#include "handheld/store/store_error.h"
#include "platform/status.h"

namespace ce::host {
namespace {

namespace fs = std::filesystem;

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

// A half-made copy goes unless it is kept.
class HalfMade {
 public:
  explicit HalfMade(fs::path path) : path_(std::move(path)) {}
  ~HalfMade() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
  HalfMade(const HalfMade&) = delete;
  HalfMade& operator=(const HalfMade&) = delete;
  const fs::path& path() const { return path_; }

  HRESULT Make() const {
    std::error_code ignored;
    fs::remove(path_, ignored);  // of a process that was killed
    const UniqueFd file(::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                               S_IRUSR | S_IWUSR));
    return file ? S_OK : kStoreWriteFault;
  }
  HRESULT KeepAs(const fs::path& path) const {
    std::error_code error;
    fs::rename(path_, path, error);
    if (error) return kStoreWriteFault;
    files::SyncDirectoryOf(path);
    return S_OK;
  }

 private:
  const fs::path path_;
};

HRESULT CopyInto(sqlite3* from, const fs::path& to) {
  sqlite3* opened = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  int result = sqlite3_open_v2(to.c_str(), &opened, flags, nullptr);
  const Database copy(opened, &sqlite3_close);
  // Nobody else knows the file, which goes when it is not finished.
  constexpr char kSettings[] = "PRAGMA journal_mode = OFF; PRAGMA synchronous = FULL;";
  if (result == SQLITE_OK) result = sqlite3_exec(opened, kSettings, nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) return StoreStatus(result);
  sqlite3_backup* const backup = sqlite3_backup_init(opened, "main", from, "main");
  if (!backup) return StoreStatus(sqlite3_extended_errcode(opened));
  result = sqlite3_backup_step(backup, -1);  // all of it, and so one snapshot
  const int finished = sqlite3_backup_finish(backup);
  if (result == SQLITE_DONE) result = finished;
  return result == SQLITE_OK ? S_OK : StoreStatus(result);
}

}  // namespace

HRESULT CopyDatabase(sqlite3* database, const fs::path& to) {
  RETURN_IF_FAILED(FaultStatus("sqlite3_backup_step"));
  const HalfMade copy(to.string() + ".part");
  RETURN_IF_FAILED(copy.Make());
  RETURN_IF_FAILED(CopyInto(database, copy.path()));
  return copy.KeepAs(to);
}

}  // namespace ce::host
