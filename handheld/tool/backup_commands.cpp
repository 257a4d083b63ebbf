#include "handheld/tool/backup_commands.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <system_error>
#include <utility>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "common/files/standard_streams.h"
#include "common/files/tar.h"
#include "common/formats/items/identity.h"
#include "common/text/text.h"
#include "handheld/base/unique_fd.h"
#include "handheld/store/store.h"
#include "handheld/store/store_check.h"
#include "handheld/tool/handheld_copy.h"
#include "handheld/tool/output.h"
#include "handheld/tool/result.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

using ce::host::UniqueFd;
using files::ArchiveEntry;
using files::EntryKind;

// The archive's first entry says what it is, its last one has a digest of each file before it.
constexpr char kTitle[] = "corvane-backup";
constexpr char kVersion[] = "1\n";
constexpr char kSums[] = "corvane-sums";
constexpr char kRegistry[] = "registry.reg";
constexpr char kStore[] = "store.db";
constexpr std::size_t kPieceOfFile = 256 * 1024;

[[noreturn]] void FailOn(const fs::path& path, const char* what) {
  throw files::Error(path.string() + " cannot be " + what + ": " + std::strerror(errno));
}

class BackupWriter {
 public:
  explicit BackupWriter(std::ostream& out) : archive_(out) { AddText(kTitle, kVersion); }

  void AddText(const std::string& path, std::string_view text) {
    Begin({.path = path, .size = text.size()});
    Write(text);
    End();
  }

  // Of a file that grows meanwhile, what it had; one that shrinks ends in zeros.
  void AddFile(const ArchiveEntry& entry, const fs::path& from) {
    const UniqueFd file(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file) FailOn(from, "read");
    Begin(entry);
    std::string piece(kPieceOfFile, '\0');
    std::uint64_t left = entry.size;
    while (left > 0) {
      const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, piece.size()));
      const ssize_t got = ::read(file.get(), piece.data(), wanted);
      if (got < 0) FailOn(from, "read");
      if (got == 0) std::fill_n(piece.begin(), wanted, '\0');
      const std::size_t count = got == 0 ? wanted : static_cast<std::size_t>(got);
      Write({piece.data(), count});
      left -= count;
    }
    End();
  }

  void Add(const ArchiveEntry& entry) { archive_.Begin(entry); }

  void Finish() {
    archive_.Begin({.path = kSums, .size = sums_.size()});
    archive_.Write(sums_);
    archive_.Finish();
  }

  std::size_t files() const { return files_; }
  std::uint64_t bytes() const { return bytes_; }

 private:
  void Begin(const ArchiveEntry& entry) {
    archive_.Begin(entry);
    digest_ = {};
    ++files_;
    bytes_ += entry.size;
  }
  void Write(std::string_view piece) {
    digest_.Add(piece);
    archive_.Write(piece);
  }
  void End() { sums_ += digest_.Digits() + '\n'; }

  files::ArchiveWriter archive_;
  formats::Digest digest_;
  std::string sums_;
  std::size_t files_ = 0;
  std::uint64_t bytes_ = 0;
};

// A path of an archive that may be anybody's: nothing leads out of the handheld.
bool IsWithin(const std::string& path) {
  if (path == kRegistry || path == kStore || path == "files") return true;
  if (!path.starts_with("files/")) return false;
  for (const fs::path& name : fs::path(path))
    if (name == ".." || name == "." || name.empty()) return false;
  return path.find("//") == path.npos;
}

// Puts together in a directory what an archive holds.
class BackupReader {
 public:
  BackupReader(std::istream& in, const fs::path& directory) : archive_(in), directory_(directory) {}

  // Throws files::Error.
  void Run() {
    const auto title = archive_.Next();
    if (!title || title->path != kTitle || ReadText() != kVersion)
      throw files::Error("this is no backup of a handheld that is known here");
    while (const auto entry = archive_.Next()) {
      if (entry->path == kSums) {
        if (ReadWithoutDigest() != sums_) throw files::Error("its content has been changed");
        return Link();
      }
      if (!IsWithin(entry->path)) throw files::Error("it holds \"" + entry->path + '"');
      Take(*entry);
    }
    throw files::Error("the archive is cut off");
  }

 private:
  std::string ReadText() {
    std::string text = ReadWithoutDigest();
    formats::Digest digest;
    digest.Add(text);
    sums_ += digest.Digits() + '\n';
    return text;
  }

  std::string ReadWithoutDigest() {
    std::string text;
    for (std::string_view piece = archive_.Read(); !piece.empty(); piece = archive_.Read())
      text += piece;
    return text;
  }

  void Take(const ArchiveEntry& entry) {
    const fs::path path = directory_ / entry.path;
    if (entry.kind == EntryKind::kFile) return TakeFile(path);
    if (entry.kind == EntryKind::kLink) {
      links_.emplace_back(path, entry.target);
    } else if (::mkdir(path.c_str(), S_IRWXU) != 0) {
      FailOn(path, "made");
    }
  }

  void TakeFile(const fs::path& path) {
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const UniqueFd file(::open(path.c_str(), flags, S_IRUSR | S_IWUSR));
    if (!file) FailOn(path, "made");
    formats::Digest digest;
    for (std::string_view piece = archive_.Read(); !piece.empty(); piece = archive_.Read()) {
      digest.Add(piece);
      while (!piece.empty()) {
        const ssize_t written = ::write(file.get(), piece.data(), piece.size());
        if (written < 0) FailOn(path, "written");
        piece.remove_prefix(static_cast<std::size_t>(written));
      }
    }
    sums_ += digest.Digits() + '\n';
  }

  // Last, so that nothing is written by way of them.
  void Link() {
    for (const auto& [path, target] : links_)
      if (::symlink(target.c_str(), path.c_str()) != 0) FailOn(path, "made");
  }

  files::ArchiveReader archive_;
  const fs::path directory_;
  std::string sums_;
  std::vector<std::pair<fs::path, std::string>> links_;
};

void ReadBackup(const fs::path& file, const fs::path& directory) try {
  if (files::IsStandard(file)) return BackupReader(std::cin, directory).Run();
  std::ifstream in(file, std::ios::binary);
  if (!in) throw files::Error(std::strerror(errno));
  BackupReader(in, directory).Run();
} catch (const files::Error& error) {
  throw files::Error(file.string() + " cannot be restored: " + error.what());
}

// What is wrong with the handheld that came of a backup is wrong with the backup.
void RequireSound(const fs::path& file, const fs::path& directory) {
  std::vector<std::string> problems;
  try {
    Session session(directory);
    if (ce::host::Store::Exists(session.handheld().storePath())) {
      const std::string problem = ce::host::DescribeStoreProblem(session.handheld());
      problems = problem.empty() ? ce::host::CheckStore(session.handheld())
                                 : std::vector<std::string>{problem};
    }
  } catch (const ce::host::HandheldError& error) {
    problems.emplace_back(error.what());
  }
  if (problems.empty()) return;
  std::string first = problems.front();
  if (first.starts_with(directory.string())) first.erase(0, directory.string().size() + 1);
  throw files::Error(file.string() + " holds a damaged handheld: " + text::OnOneLine(first));
}

bool ShareContent(const fs::path& from, const fs::path& to) {
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  const UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!source) FailOn(from, "read");
  if (!copy) FailOn(to, "made");
  return ::ioctl(copy.get(), FICLONE, source.get()) == 0;
}

void CopyFile(const fs::path& from, const fs::path& to) {
  if (ShareContent(from, to)) return;
  std::error_code error;
  if (!fs::copy_file(from, to, fs::copy_options::overwrite_existing, error))
    throw files::Error(to.string() + " cannot be written: " + error.message());
}

// A store that nobody has open is a plain file, once its log has moved into it.
void CloneStore(Session& session, const fs::path& to) {
  const fs::path store = session.handheld().storePath();
  fs::path log = store;
  log += "-wal";
  std::error_code none;
  if (!session.handheld().IsShared() && ce::host::Store::Exists(session.handheld().storePath())) {
    std::unique_ptr<ce::host::Store> last;
    std::string problem;
    static_cast<void>(ce::host::Store::OpenExisting(session.handheld(), last, problem));
    last.reset();
    if (!fs::exists(log, none) && ShareContent(store, to)) return;
    fs::remove(to, none);
  }
  CopyStore(session, to);
}

}  // namespace

Outcome BackUp(Session& session, const fs::path& file, const Report& report) {
  const bool toPipe = files::IsStandard(file);
  const bool besideFile = !toPipe && (fs::is_regular_file(file) || !fs::exists(file));
  const WorkDirectory work(besideFile ? fs::absolute(file).parent_path()
                                      : fs::temp_directory_path());
  const bool hasStore = CopyStore(session, work.path() / kStore);
  const fs::path& directory = session.handheld().directory();
  Output out(toPipe ? std::nullopt : std::optional(file), report, files::Access::kPrivate);
  BackupWriter backup(out);
  backup.AddText(kRegistry, files::ReadWholeFile(directory / kRegistry));
  if (hasStore) {
    const fs::path copy = work.path() / kStore;
    backup.AddFile({.path = kStore, .size = fs::file_size(copy)}, copy);
  }
  const bool whole = ForEachFile(session, report, [&](const ArchiveEntry& entry) {
    entry.kind == EntryKind::kFile ? backup.AddFile(entry, directory / entry.path)
                                   : backup.Add(entry);
  });
  backup.Finish();
  out.Finish();
  Report said = report;
  if (toPipe) said.out = report.err;
  TellResult(said, {{"file", file.string()}, {"files", backup.files()}, {"bytes", backup.bytes()}},
             "{}: {} files, {} bytes\n", file.string(), backup.files(), backup.bytes());
  return whole ? Outcome::kDone : Outcome::kPartlyDone;
}

Outcome VerifyBackup(const fs::path& file, const Report& report) {
  const WorkDirectory work(fs::temp_directory_path());
  ReadBackup(file, work.path());
  RequireSound(file, work.path());
  TellResult(report, {{"file", file.string()}, {"sound", true}},
             "{}: can be restored, and is sound\n", file.string());
  return Outcome::kDone;
}

Outcome Restore(const fs::path& file, const fs::path& directory, const Report& report) {
  WorkDirectory work(ParentOfNew(directory));
  ReadBackup(file, work.path());
  RequireSound(file, work.path());
  work.KeepAs(directory);
  TellResult(report, {{"directory", directory.string()}, {"from", file.string()}},
             "{}: restored from {}\n", directory.string(), file.string());
  return Outcome::kDone;
}

Outcome Clone(Session& session, const fs::path& directory, const Report& report) {
  WorkDirectory work(ParentOfNew(directory));
  const fs::path& from = session.handheld().directory();
  CloneStore(session, work.path() / kStore);
  CopyFile(from / kRegistry, work.path() / kRegistry);
  const bool whole = ForEachFile(session, report, [&](const ArchiveEntry& entry) {
    const fs::path to = work.path() / entry.path;
    std::error_code error;
    if (entry.kind == EntryKind::kFile) return CopyFile(from / entry.path, to);
    entry.kind == EntryKind::kLink ? fs::create_symlink(entry.target, to, error)
                                   : static_cast<void>(fs::create_directory(to, error));
    if (error) throw files::Error(to.string() + " cannot be made: " + error.message());
  });
  work.KeepAs(directory);
  TellResult(report, {{"directory", directory.string()}, {"from", from.string()}},
             "{}: the same as {}\n", directory.string(), from.string());
  return whole ? Outcome::kDone : Outcome::kPartlyDone;
}

}  // namespace tool
