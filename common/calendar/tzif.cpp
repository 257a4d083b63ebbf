#include "common/calendar/tzif.h"

#include <cstddef>
#include <cstdint>

namespace calendar {
namespace {

using std::chrono::seconds;

constexpr std::size_t kHeaderSize = 44;
constexpr std::size_t kCounts = 20;
constexpr std::size_t kTypeSize = 6;
constexpr std::string_view kMagic = "TZif";
// The years that a change can be in; the first one in many files is before the Universe.
constexpr sys_seconds kFirstTime{std::chrono::sys_days{std::chrono::year{-9999} / 1 / 1}};
constexpr sys_seconds kLastTime{std::chrono::sys_days{std::chrono::year{9999} / 1 / 1}};
constexpr std::int64_t kMaxOffset = 26 * 3600;

std::uint64_t Unsigned(std::string_view file, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (const char c : file.substr(at, size)) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

// A block's counts and where its parts are, in bytes from its header.
struct Block {
  Block(std::string_view file, std::uint64_t timeSize)
      : transitions(Unsigned(file, kCounts + 12, 4)),
        types(Unsigned(file, kCounts + 16, 4)),
        leapSeconds(Unsigned(file, kCounts + 8, 4)),
        indices(kHeaderSize + transitions * timeSize),
        records(indices + transitions),
        size(records + types * kTypeSize + Unsigned(file, kCounts + 20, 4) +
             leapSeconds * (timeSize + 4) + Unsigned(file, kCounts + 4, 4) +
             Unsigned(file, kCounts, 4)) {}

  std::uint64_t transitions;
  std::uint64_t types;
  std::uint64_t leapSeconds;
  std::uint64_t indices;
  std::uint64_t records;
  std::uint64_t size;
};

// The block at the front, whole.
std::optional<Block> BlockOf(std::string_view file, std::uint64_t timeSize) {
  if (file.size() < kHeaderSize || !file.starts_with(kMagic)) return std::nullopt;
  const Block block(file, timeSize);
  if (file.size() < block.size) return std::nullopt;
  return block;
}

// The file from its second block on, whose times have 64 bits.
std::optional<std::string_view> SecondBlockOf(std::string_view file) {
  const std::optional<Block> first = BlockOf(file, 4);
  if (!first || file[4] < '2') return std::nullopt;
  return file.substr(static_cast<std::size_t>(first->size));
}

std::optional<seconds> OffsetOf(std::string_view file, const Block& block, std::uint64_t type) {
  if (type >= block.types) return std::nullopt;
  const auto at = static_cast<std::size_t>(block.records + type * kTypeSize);
  const auto offset = static_cast<std::int32_t>(Unsigned(file, at, 4));
  if (offset < -kMaxOffset || offset > kMaxOffset) return std::nullopt;
  return seconds{offset};
}

}  // namespace

std::optional<std::string_view> FooterOf(std::string_view file) {
  std::optional<std::string_view> rest = SecondBlockOf(file);
  const std::optional<Block> block = rest ? BlockOf(*rest, 8) : std::nullopt;
  if (!block) return std::nullopt;
  rest->remove_prefix(static_cast<std::size_t>(block->size));
  if (!rest->starts_with('\n')) return std::nullopt;
  rest->remove_prefix(1);
  const std::size_t end = rest->find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  return rest->substr(0, end);
}

std::optional<Clock> HistoryOf(std::string_view file) {
  const std::optional<std::string_view> rest = SecondBlockOf(file);
  const std::optional<Block> block = rest ? BlockOf(*rest, 8) : std::nullopt;
  if (!block || block->leapSeconds != 0) return std::nullopt;
  const std::optional<seconds> first = OffsetOf(*rest, *block, 0);
  if (!first) return std::nullopt;
  Clock history{*first};
  for (std::size_t i = 0; i < block->transitions; ++i) {
    const sys_seconds at{
        seconds{static_cast<std::int64_t>(Unsigned(*rest, kHeaderSize + i * 8, 8))}};
    const std::uint64_t type = Unsigned(*rest, static_cast<std::size_t>(block->indices) + i, 1);
    const std::optional<seconds> offset = OffsetOf(*rest, *block, type);
    if (!offset || at > kLastTime) return std::nullopt;
    if (!history.changes.empty() && at <= history.changes.back().at) return std::nullopt;
    if (at < kFirstTime) {
      history.firstOffset = *offset;
    } else {
      history.changes.push_back({at, *offset});
    }
  }
  return history;
}

}  // namespace calendar
