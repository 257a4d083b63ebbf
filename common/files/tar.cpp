#include "common/files/tar.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <map>

#include "common/files/error.h"

namespace files {
namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kPiece = 256 * 1024;
// More than any path and target of ours takes.
constexpr std::uint64_t kMostAttributes = 64 * 1024;
constexpr std::uint64_t kMostOctal = 077777777777;
constexpr char kAttributes = 'x';
constexpr char kMagic[] = "ustar\00000";

struct Field {
  std::size_t at, length;
};
constexpr Field kName{0, 100}, kMode{100, 8}, kOwner{108, 8}, kGroup{116, 8}, kSize{124, 12},
    kTime{136, 12}, kSum{148, 8}, kType{156, 1}, kTarget{157, 100}, kForm{257, 8},
    kPrefix{345, 155};

using Block = std::array<char, kBlock>;

void Put(Block& block, const Field& field, std::string_view text) {
  text.copy(block.data() + field.at, field.length);
}

void PutOctal(Block& block, const Field& field, std::uint64_t number) {
  Put(block, field, fmt::format("{:0{}o}", number, field.length - 1));
}

std::string Get(const Block& block, const Field& field) {
  const std::string_view text(block.data() + field.at, field.length);
  return std::string(text.substr(0, text.find('\0')));
}

[[noreturn]] void FailAsDamaged() {
  throw Error("the archive is damaged");
}

std::uint64_t GetOctal(const Block& block, const Field& field) {
  std::string text = Get(block, field);
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number, 8);
  if (problem != std::errc() || stop != end) FailAsDamaged();
  return number;
}

// Of all bytes, those of the sum's own field taken as blanks.
std::uint64_t SumOf(Block block) {
  std::fill_n(block.begin() + kSum.at, kSum.length, ' ');
  std::uint64_t sum = 0;
  for (const char c : block) sum += static_cast<unsigned char>(c);
  return sum;
}

std::uint64_t PaddingOf(std::uint64_t size) {
  return (kBlock - size % kBlock) % kBlock;
}

// "LENGTH KEY=VALUE\n", the length with its own digits counted.
std::string Attribute(std::string_view key, std::string_view value) {
  const std::size_t rest = key.size() + value.size() + 3;
  std::size_t length = rest + 1;
  while (rest + std::to_string(length).size() != length) ++length;
  return fmt::format("{} {}={}\n", length, key, value);
}

std::map<std::string, std::string> ParseAttributes(std::string_view text) {
  std::map<std::string, std::string> attributes;
  while (!text.empty()) {
    std::size_t length = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, length);
    const auto digits = static_cast<std::size_t>(stop - text.data());
    if (problem != std::errc() || length > text.size() || length < digits + 3) FailAsDamaged();
    const std::string_view record = text.substr(digits + 1, length - digits - 2);
    const std::size_t equals = record.find('=');
    if (equals == record.npos || text[digits] != ' ' || text[length - 1] != '\n') FailAsDamaged();
    attributes[std::string(record.substr(0, equals))] = record.substr(equals + 1);
    text.remove_prefix(length);
  }
  return attributes;
}

std::uint64_t NumberOf(const std::string& text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number);
  if (problem != std::errc() || stop != end) FailAsDamaged();
  return number;
}

}  // namespace

void ArchiveWriter::WriteHeader(const ArchiveEntry& entry, char type, const std::string& path) {
  Block block{};
  Put(block, kName, path);
  PutOctal(block, kMode, type == '5' ? 0700 : 0600);
  PutOctal(block, kOwner, 0);
  PutOctal(block, kGroup, 0);
  PutOctal(block, kSize, std::min(entry.size, kMostOctal));
  PutOctal(block, kTime, static_cast<std::uint64_t>(std::max<std::int64_t>(entry.modified, 0)));
  block[kType.at] = type;
  Put(block, kTarget, entry.target);
  Put(block, kForm, {kMagic, kForm.length});
  Put(block, kSum, fmt::format("{:06o}", SumOf(block)));
  block[kSum.at + 7] = ' ';
  out_.write(block.data(), kBlock);
}

void ArchiveWriter::Begin(const ArchiveEntry& entry) {
  Fill();
  std::string attributes;
  if (entry.path.size() > kName.length) attributes += Attribute("path", entry.path);
  if (entry.target.size() > kTarget.length) attributes += Attribute("linkpath", entry.target);
  if (entry.size > kMostOctal) attributes += Attribute("size", std::to_string(entry.size));
  if (!attributes.empty()) {
    WriteHeader({.path = {}, .size = attributes.size()}, kAttributes, "attributes");
    out_ << attributes << std::string(PaddingOf(attributes.size()), '\0');
  }
  const char type = entry.kind == EntryKind::kFile   ? '0'
                    : entry.kind == EntryKind::kLink ? '2'
                                                     : '5';
  WriteHeader(entry, type, entry.path);
  open_ = entry.size;
  padding_ = PaddingOf(entry.size);
}

void ArchiveWriter::Write(std::string_view content) {
  content = content.substr(0, open_);
  out_ << content;
  open_ -= content.size();
}

// A file that has become shorter meanwhile ends in zeros, as with every tar.
void ArchiveWriter::Fill() {
  const std::string zeros(kPiece, '\0');
  while (open_ > 0) Write(zeros);
  out_ << std::string(padding_, '\0');
  padding_ = 0;
}

void ArchiveWriter::Finish() {
  Fill();
  out_ << std::string(2 * kBlock, '\0');
}

void ArchiveReader::Skip() {
  while (left_ > 0) Read();
}

std::string_view ArchiveReader::Read() {
  buffer_.resize(kPiece);
  const auto wanted = std::min<std::uint64_t>(left_, buffer_.size());
  if (wanted == 0) return {};
  in_.read(buffer_.data(), static_cast<std::streamsize>(wanted));
  if (static_cast<std::uint64_t>(in_.gcount()) != wanted) throw Error("the archive is cut off");
  left_ -= wanted;
  if (left_ == 0) {
    in_.ignore(static_cast<std::streamsize>(padding_));
    if (static_cast<std::uint64_t>(in_.gcount()) != padding_) throw Error("the archive is cut off");
    padding_ = 0;
  }
  return {buffer_.data(), static_cast<std::size_t>(wanted)};
}

std::string ArchiveReader::ReadAttributes(std::uint64_t size) {
  if (size > kMostAttributes) FailAsDamaged();
  left_ = size;
  padding_ = PaddingOf(size);
  std::string text;
  while (left_ > 0) text += Read();
  return text;
}

std::optional<ArchiveEntry> ArchiveReader::Next() {
  Skip();
  std::map<std::string, std::string> attributes;
  for (;;) {
    Block block;
    in_.read(block.data(), kBlock);
    if (in_.gcount() != kBlock) throw Error("the archive is cut off");
    if (std::ranges::all_of(block, [](char c) { return c == '\0'; })) return std::nullopt;
    if (GetOctal(block, kSum) != SumOf(block) || Get(block, kForm).substr(0, 5) != "ustar")
      FailAsDamaged();
    ArchiveEntry entry;
    entry.size = GetOctal(block, kSize);
    const char type = block[kType.at];
    if (type == kAttributes) {
      attributes = ParseAttributes(ReadAttributes(entry.size));
      continue;
    }
    if (type != '0' && type != '2' && type != '5')
      throw Error("the archive holds what is neither a file, a directory nor a link");
    entry.kind = type == '0'   ? EntryKind::kFile
                 : type == '2' ? EntryKind::kLink
                               : EntryKind::kDirectory;
    const std::string prefix = Get(block, kPrefix);
    entry.path = (prefix.empty() ? "" : prefix + '/') + Get(block, kName);
    entry.target = Get(block, kTarget);
    entry.modified = static_cast<std::int64_t>(GetOctal(block, kTime));
    if (attributes.contains("path")) entry.path = attributes["path"];
    if (attributes.contains("linkpath")) entry.target = attributes["linkpath"];
    if (attributes.contains("size")) entry.size = NumberOf(attributes["size"]);
    if (entry.path.ends_with('/')) entry.path.pop_back();
    left_ = entry.size;
    padding_ = PaddingOf(entry.size);
    return entry;
  }
}

}  // namespace files
