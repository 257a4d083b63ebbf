#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>

#include "platform/host/system/durable_file.h"
#include "platform/host/system/zone.h"

namespace ce::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxZoneFile = 1u << 20;
constexpr std::size_t kHeaderSize = 44;
constexpr std::string_view kMagic = "TZif";

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

// The size of the data behind a header whose times take `timeSize` bytes.
std::uint64_t BlockSize(std::string_view header, std::uint64_t timeSize) {
  const auto count = [header](std::size_t index) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      value = value << 8 | static_cast<unsigned char>(header[20 + index * 4 + i]);
    }
    return value;
  };
  const std::uint64_t utIndicators = count(0);
  const std::uint64_t standardIndicators = count(1);
  const std::uint64_t leapSeconds = count(2);
  const std::uint64_t transitions = count(3);
  const std::uint64_t types = count(4);
  const std::uint64_t nameBytes = count(5);
  return transitions * (timeSize + 1) + types * 6 + nameBytes + leapSeconds * (timeSize + 4) +
         standardIndicators + utIndicators;
}

bool SkipBlock(std::string_view& file, std::uint64_t timeSize) {
  if (file.size() < kHeaderSize || !file.starts_with(kMagic)) return false;
  const std::uint64_t size = kHeaderSize + BlockSize(file, timeSize);
  if (file.size() < size) return false;
  file.remove_prefix(static_cast<std::size_t>(size));
  return true;
}

// The rule at the end of a file of version 2 or later.
std::optional<std::string_view> RuleOf(std::string_view file) {
  if (file.size() < kHeaderSize || file[4] < '2') return std::nullopt;
  if (!SkipBlock(file, 4) || !SkipBlock(file, 8) || !file.starts_with('\n')) return std::nullopt;
  file.remove_prefix(1);
  const std::size_t end = file.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  return file.substr(0, end);
}

bool IsZoneFile(const fs::path& path) {
  const std::optional<std::string> content = ReadWholeFile(path, kMaxZoneFile);
  return content && RuleOf(*content).has_value();
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

std::optional<TIME_ZONE_INFORMATION> ReadZone(std::string_view name) {
  if (!ValidZoneName(name)) return std::nullopt;
  const std::optional<std::string> file = ReadWholeFile(DatabaseDirectory() / name, kMaxZoneFile);
  if (!file) return name == "UTC" ? ZoneFromPosixRule("UTC0") : std::nullopt;
  const std::optional<std::string_view> rule = RuleOf(*file);
  return rule ? ZoneFromPosixRule(*rule) : std::nullopt;
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
  if (const std::optional<std::string> file = ReadWholeFile(etc / "timezone", 4096)) {
    std::string name = file->substr(0, file->find_first_of(" \t\r\n"));
    if (ValidZoneName(name)) return name;
  }
  return "UTC";
}

}  // namespace ce::host
