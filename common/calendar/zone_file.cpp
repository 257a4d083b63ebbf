#include "common/calendar/zone_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "common/calendar/tzif.h"

namespace calendar {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxZoneFile = 1u << 20;

fs::path DatabaseDirectory() {
  if (const char* directory = std::getenv("TZDIR"); directory && *directory) return directory;
  constexpr std::array kUsual = {"/usr/share/zoneinfo", "/usr/lib/zoneinfo",
                                 "/usr/share/lib/zoneinfo", "/etc/zoneinfo"};
  std::error_code ignored;
  for (const char* directory : kUsual) {
    if (fs::is_directory(directory, ignored)) return directory;
  }
  return kUsual.front();
}

// The content of a regular file of no more than `limit` bytes.
std::optional<std::string> ReadFile(const fs::path& path, std::size_t limit) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error || size > limit) return std::nullopt;
  std::string content(static_cast<std::size_t>(size), '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file.read(content.data(), static_cast<std::streamsize>(size))) return std::nullopt;
  return content;
}

bool IsZoneFile(const fs::path& path) {
  const std::optional<std::string> content = ReadFile(path, kMaxZoneFile);
  return content && FooterOf(*content).has_value();
}

}  // namespace

bool ValidZoneName(std::string_view name) {
  if (name.empty() || name.size() > 255 || name.front() == '/' || name.back() == '/') return false;
  if (name.find("//") != std::string_view::npos) return false;
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '+' || c == '/';
  });
}

std::optional<std::string> ReadZoneFile(std::string_view name) {
  if (!ValidZoneName(name)) return std::nullopt;
  return ReadFile(DatabaseDirectory() / name, kMaxZoneFile);
}

std::vector<std::string> ListZones() {
  std::vector<std::string> names;
  const fs::path directory = DatabaseDirectory();
  std::error_code error;
  fs::recursive_directory_iterator entry(directory, error);
  for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().lexically_relative(directory).string();
    // The same zones again, with other views of leap seconds.
    if (name == "posix" || name == "right") entry.disable_recursion_pending();
    if (ValidZoneName(name) && IsZoneFile(entry->path())) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string HostZoneName(const fs::path& etc) {
  std::error_code error;
  const std::string link = fs::read_symlink(etc / "localtime", error).string();
  constexpr std::string_view kDirectory = "zoneinfo/";
  const std::size_t at = link.find(kDirectory);
  if (!error && at != std::string::npos) {
    std::string name = link.substr(at + kDirectory.size());
    if (ValidZoneName(name)) return name;
  }
  if (const std::optional<std::string> file = ReadFile(etc / "timezone", 4096)) {
    std::string name = file->substr(0, file->find_first_of(" \t\r\n"));
    if (ValidZoneName(name)) return name;
  }
  return "UTC";
}

}  // namespace calendar
