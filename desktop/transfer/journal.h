// Lines that a file gains one after the other.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

// Every failure throws Error.
class Journal {
 public:
  // Touches nothing yet.
  explicit Journal(std::filesystem::path path);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // The whole lines, without their ends. What follows the last end of a line is a lot whose
  // writing was cut off, and left out.
  [[nodiscard]] std::vector<std::string> Lines() const;

  // Adds lines, each with its end. They outlive this process, but not yet the computer's. When it
  // fails the file has none of them, or takes no further ones. A file from before must have been
  // discarded.
  void Append(std::string_view lines);
  // All lines are on the disk when it returns. When it fails the file takes no further ones.
  void Sync();

  // Deletes the file if there is one.
  void Discard();

  [[nodiscard]] bool exists() const;
  // Nothing appended by this object since it last discarded the file.
  [[nodiscard]] bool empty() const { return size_ == 0; }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  void Open();
  [[nodiscard]] bool Add(std::string_view lines) const;
  [[noreturn]] void Fail(int error) const;

  std::filesystem::path path_;
  int file_ = -1;
  off_t size_ = 0;        // of what is known to be whole
  bool synced_ = true;    // nothing added since Sync
  bool damaged_ = false;  // may lack lines, or have a part of one
};

}  // namespace desktop
