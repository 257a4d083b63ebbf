// Files of a folder that other programs write to as well.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace desktop {

// What tells a file from what it was: its times, its size and which file it is.
struct FileStamp {
  std::string text;
  std::chrono::system_clock::time_point changed = {};  // last
  friend bool operator==(const FileStamp& a, const FileStamp& b) { return a.text == b.text; }
};

// What stands under a name, without following a link. Only a file has a stamp. What cannot be
// looked at is kOther.
enum class FileType { kNothing, kFile, kLink, kOther };
struct FileLook {
  FileType type = FileType::kNothing;
  FileStamp stamp;
};
FileLook LookAt(const std::filesystem::path& path);

struct FileBytes {
  std::string bytes;
  FileStamp stamp;
};

// The whole of a file that is one itself. Throws files::Error, also when the file is changed while
// it is read, again and again.
FileBytes ReadPlainFile(const std::filesystem::path& path);

// The file goes to `target`, or to the next name after it that is free. Gives that name. Throws
// files::Error; the file is then where it was.
std::filesystem::path MoveToFreeName(const std::filesystem::path& file,
                                     const std::filesystem::path& target);
// The same with bytes.
std::filesystem::path WriteToFreeName(std::string_view bytes, const std::filesystem::path& target);

}  // namespace desktop
