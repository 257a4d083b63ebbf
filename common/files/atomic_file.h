// A file that appears whole or not at all.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace files {

// Whom a file is for. A private one is the owner's alone, even if it was not before; any other that
// existed keeps its permissions.
enum class Access { kByUmask, kPrivate };

// Writes to a file without a name, which takes the place of the file on Commit; without one,
// nothing is left behind, not even by a process that is killed. (On a file system that has no files
// without a name, one beside the file is used, and left behind by that alone.) What is no plain
// file (a device, a pipe) is written to directly. A symbolic link keeps pointing to the file. Every
// failure throws Error.
class AtomicFile {
 public:
  explicit AtomicFile(const std::filesystem::path& path, Access access = Access::kByUmask);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  void Write(std::string_view bytes);
  // On the disk when it returns. With a suffix, as a file of that longer name, and the file that
  // was named stays as it is. Call it once.
  void Commit(std::string_view suffix = {});
  // Like Commit, but another file never gives way: false, with nothing written, when there is one
  // of the name. Call one of the two, once.
  [[nodiscard]] bool CommitNew();

 private:
  void OpenTemporary(mode_t mode);
  void Flush();
  void Finish();
  void Close();
  void Link(const std::filesystem::path& target);
  [[nodiscard]] bool LinkNew();
  [[nodiscard]] std::filesystem::path NameBeside() const;
  [[noreturn]] void Fail(std::string_view what) const;

  std::filesystem::path path_;
  bool direct_ = false;
  std::filesystem::path temporary_;  // empty for a file without a name
  std::string buffer_;
  int file_ = -1;
};

// A file's appearing in or leaving its directory lasts once this has put the directory on the disk.
// Some file systems cannot be asked for that; the file's content is safe with them all the same.
void SyncDirectoryOf(const std::filesystem::path& path);

// Makes the directory and those above it that are missing, for the owner alone. Tells of no
// failure: nothing can be opened in one that is not there.
void MakePrivateDirectories(const std::filesystem::path& path);

// The whole file. Throws Error.
std::string ReadWholeFile(const std::filesystem::path& path);

}  // namespace files
