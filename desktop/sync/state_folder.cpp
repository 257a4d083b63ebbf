#include "desktop/sync/state_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "common/files/atomic_file.h"
#include "desktop/wire/error.h"

namespace desktop {

namespace fs = std::filesystem;

StateFolder::StateFolder(const fs::path& folder, Use use)
    : kept_(folder / kStateName), root_(kept_) {
  if (use == Use::kRun) files::MakePrivateDirectories(kept_);
  try {
    Lock(use);
    if (use == Use::kLook) CopyState();
  } catch (...) {
    Release();
    throw;
  }
}

StateFolder::~StateFolder() {
  Release();
}

void StateFolder::Release() {
  std::error_code error;
  if (root_ != kept_) fs::remove_all(root_, error);
  if (lock_ >= 0) close(lock_);
}

bool StateFolder::hasHistory() const {
  std::error_code error;
  return fs::exists(history(), error);
}

void StateFolder::Lock(Use use) {
  const fs::path name = kept_ / "lock";
  const int flags = use == Use::kRun ? O_RDWR | O_CREAT : O_RDONLY;
  lock_ = open(name.c_str(), flags | O_CLOEXEC, 0600);
  if (lock_ < 0 && use == Use::kLook && (errno == ENOENT || errno == ENOTDIR)) return;
  if (lock_ < 0) {
    throw Error(fmt::format("cannot use {}: {}", name.string(), std::strerror(errno)));
  }
  if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    throw Error(
        fmt::format("{} is in use by another corvane-desktop", kept_.parent_path().string()));
  }
}

void StateFolder::CopyState() {
  std::string made = (fs::temp_directory_path() / "corvane.XXXXXX").string();
  if (mkdtemp(made.data()) == nullptr) {
    throw Error(fmt::format("cannot make {}: {}", made, std::strerror(errno)));
  }
  root_ = made;
  for (const char* const name :
       {"memory.db", "memory.db-journal", "map.json", "map.json.journal"}) {
    std::error_code error;
    if (!fs::exists(kept_ / name, error)) continue;
    if (!fs::copy_file(kept_ / name, root_ / name, error)) {
      throw Error(fmt::format("cannot read {}: {}", (kept_ / name).string(), error.message()));
    }
  }
}

}  // namespace desktop
