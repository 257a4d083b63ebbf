// A file that appears whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace files {

// Writes beside the file and takes its place on Commit; without one, nothing is left behind. What
// is no plain file (a device, a pipe) is written to directly. A symbolic link keeps pointing to the
// file. A file that existed keeps its permissions. Every failure throws Error.
class AtomicFile {
 public:
  explicit AtomicFile(const std::filesystem::path& path);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  void Write(std::string_view bytes);
  // On the disk when it returns. With a suffix, as a file of that longer name, and the file that
  // was named stays as it is. Call it once.
  void Commit(std::string_view suffix = {});

 private:
  void Flush();
  [[noreturn]] void Fail(std::string_view what) const;

  std::filesystem::path path_;
  std::filesystem::path temporary_;  // empty when written to directly
  std::string buffer_;
  int file_ = -1;
};

// A file's appearing in or leaving its directory lasts once this has put the directory on the disk.
// Some file systems cannot be asked for that; the file's content is safe with them all the same.
void SyncDirectoryOf(const std::filesystem::path& path);

// The whole file. Throws Error.
std::string ReadWholeFile(const std::filesystem::path& path);

}  // namespace files
