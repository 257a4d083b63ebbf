#include "handheld/tool/handheld_copy.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "handheld/store/store.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

using files::ArchiveEntry;
using files::EntryKind;

class FileWalk {
 public:
  FileWalk(const fs::path& root, const Report& report,
           const std::function<void(const ArchiveEntry&)>& visit)
      : root_(root), report_(report), visit_(visit) {}

  bool Run() {
    Enter("files");
    return whole_;
  }

 private:
  void Enter(const std::string& path) {
    struct ::stat status {};
    if (::lstat((root_ / path).c_str(), &status) != 0) return;  // it has gone meanwhile
    ArchiveEntry entry{.path = path, .modified = status.st_mtime};
    if (S_ISREG(status.st_mode)) {
      entry.size = static_cast<std::uint64_t>(status.st_size);
    } else if (S_ISLNK(status.st_mode)) {
      std::error_code gone;
      entry.kind = EntryKind::kLink;
      entry.target = fs::read_symlink(root_ / path, gone).string();
    } else if (S_ISDIR(status.st_mode)) {
      entry.kind = EntryKind::kDirectory;
    } else {
      return LeaveOut(path, "neither a file nor a directory");
    }
    visit_(entry);
    if (entry.kind == EntryKind::kDirectory) List(path, status.st_dev);
  }

  void List(const std::string& path, ::dev_t volume) {
    if (volume_ == 0) volume_ = volume;
    if (volume_ != volume) return LeaveOut(path, "what is on another volume, a storage card");
    std::vector<std::string> names;
    for (const fs::directory_entry& each : fs::directory_iterator(root_ / path))
      names.push_back(each.path().filename().string());
    std::ranges::sort(names);
    for (const std::string& name : names) Enter((fs::path(path) / name).string());
  }

  void LeaveOut(const std::string& path, const char* what) {
    whole_ = false;
    Tell(report_.err, "{}: {}: left out: {}\n", root_.string(), path, what);
  }

  const fs::path root_;
  const Report& report_;
  const std::function<void(const ArchiveEntry&)>& visit_;
  ::dev_t volume_ = 0;
  bool whole_ = true;
};

constexpr std::string_view kWorkName = ".corvane.";

// A directory of ours that is locked by this call: nobody else works in it.
ce::host::UniqueFd Claim(const fs::path& directory) {
  ce::host::UniqueFd fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct ::stat opened {
  }, named{};
  const bool ours = fd && ::flock(fd.get(), LOCK_EX | LOCK_NB) == 0 &&
                    ::fstat(fd.get(), &opened) == 0 && opened.st_uid == ::geteuid();
  // Whoever had it before may have removed it meanwhile.
  if (!ours || ::lstat(directory.c_str(), &named) != 0 || named.st_ino != opened.st_ino)
    fd = ce::host::UniqueFd();
  return fd;
}

// What cannot be removed is left for the next one that looks.
void Remove(const fs::path& directory) {
  std::error_code error;
  fs::remove_all(directory, error);
  // A disk that failed once may not fail again.
  if (error) fs::remove_all(directory, error);
}

}  // namespace

void RemoveAbandoned(const fs::path& parent) {
  std::error_code ignored;
  std::vector<fs::path> abandoned;
  for (fs::directory_iterator each(parent, ignored), end; each != end; each.increment(ignored)) {
    const std::string name = each->path().filename().string();
    if (name.starts_with(kWorkName) && name.size() == kWorkName.size() + 6)
      abandoned.push_back(each->path());
  }
  for (const fs::path& path : abandoned)
    if (const ce::host::UniqueFd claimed = Claim(path)) Remove(path);
}

WorkDirectory::WorkDirectory(const fs::path& parent) {
  RemoveAbandoned(parent);
  constexpr int kTries = 100;  // another may take it for abandoned before it is locked
  for (int tries = 1; !claim_; ++tries) {
    std::string name = (parent / kWorkName).string() + "XXXXXX";
    if (!::mkdtemp(name.data()))
      throw files::Error(parent.string() + ": no directory can be made: " + std::strerror(errno));
    claimed_ = name;
    claim_ = Claim(claimed_);
    if (claim_) break;
    ::rmdir(claimed_.c_str());
    if (tries == kTries) throw files::Error(parent.string() + ": no directory can be locked");
  }
  // A handheld has a lock of its own on its directory.
  if (::mkdir(path().c_str(), S_IRWXU) != 0) {
    const int error = errno;
    ::rmdir(claimed_.c_str());
    throw files::Error(path().string() + " cannot be made: " + std::strerror(error));
  }
}

WorkDirectory::~WorkDirectory() {
  Remove(claimed_);
}

void WorkDirectory::KeepAs(const fs::path& name) {
  if (::syncfs(claim_.get()) != 0 || ::rename(path().c_str(), name.c_str()) != 0) {
    throw files::Error(name.string() + " cannot be made: " + std::strerror(errno));
  }
  files::SyncDirectoryOf(name);
}

fs::path ParentOfNew(const fs::path& directory) {
  const fs::path whole = fs::absolute(directory).lexically_normal();
  fs::path parent = (whole.has_filename() ? whole : whole.parent_path()).parent_path();
  std::error_code error;
  if (fs::exists(fs::symlink_status(directory, error)) &&
      !(fs::is_directory(fs::symlink_status(directory)) && fs::is_empty(directory, error))) {
    RemoveAbandoned(parent);
    throw files::Error(directory.string() + " is not empty");
  }
  return parent;
}

bool CopyStore(Session& session, const fs::path& to) {
  using ce::host::Store;
  if (!Store::Exists(session.handheld().storePath())) return false;
  std::unique_ptr<Store> store;
  std::string problem;
  if (ce::Failed(Store::OpenExisting(session.handheld(), store, problem)) ||
      ce::Failed(store->CopyTo(to)))
    throw files::Error(session.handheld().storePath().string() + " cannot be copied" +
                       (problem.empty() ? "" : ": it " + problem));
  return true;
}

bool ForEachFile(Session& session, const Report& report,
                 const std::function<void(const ArchiveEntry&)>& visit) {
  return FileWalk(session.handheld().directory(), report, visit).Run();
}

}  // namespace tool
