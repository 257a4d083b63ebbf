#include "handheld/dom/byte_source.h"

#include <algorithm>
#include <cstring>

namespace ce::host::dom {
namespace {

using namespace std::string_view_literals;

// How the first characters of a document lie in its bytes.
struct Start {
  std::string_view bytes;
  std::size_t skip;  // the byte-order mark
  ByteLayout layout;
};

constexpr Start kStarts[] = {
    {"\xEF\xBB\xBF"sv, 3, {1, 0}}, {"\xFF\xFE"sv, 2, {2, 0}}, {"\xFE\xFF"sv, 2, {2, 1}},
    {"<\0"sv, 0, {2, 0}},          {"\0<"sv, 0, {2, 1}},      {""sv, 0, {1, 0}},
};

constexpr std::u16string_view kBlanks = u" \t\r\n";

constexpr std::string_view kNames[] = {"ASCII", "US-ASCII", "UTF-8", "UTF8"};
constexpr std::string_view kPrefixes[] = {"ISO-8859-",   "ISO8859-", "ISO_8859-",
                                          "WINDOWS-125", "CP125",    "KOI8-"};

}  // namespace

bool KeepsAscii(std::string_view encoding, ByteLayout layout) {
  std::string name(encoding);
  for (char& c : name) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (layout.width == 2) return name == (layout.low == 0 ? "UTF-16LE" : "UTF-16BE");
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames) ||
         std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                     [&](std::string_view prefix) { return name.starts_with(prefix); });
}

ByteSource::ByteSource(std::span<const BYTE> document) : document_(document) {
  headSize_ = std::min(head_.size(), document.size());
  std::copy_n(document.begin(), headSize_, head_.begin());
  FindDeclaration();
}

void ByteSource::FindDeclaration() {
  const std::string_view bytes(reinterpret_cast<const char*>(head_.data()), headSize_);
  const Start& start = *std::find_if(std::begin(kStarts), std::end(kStarts),
                                     [&](const Start& s) { return bytes.starts_with(s.bytes); });
  layout_ = start.layout;
  // "<?xml" and a blank.
  constexpr std::size_t kLength = 6;
  if (start.skip + kLength * layout_.width > headSize_) return;
  const auto place = [&](std::size_t i) { return start.skip + i * layout_.width + layout_.low; };
  std::u16string text;
  for (std::size_t i = 0; i < kLength; ++i) {
    if (layout_.width == 2 && head_[place(i) ^ 1] != 0) return;
    text += head_[place(i)];
  }
  std::u16string lower = text.substr(2, 3);
  for (char16_t& unit : lower) unit |= 0x20;
  if (!text.starts_with(u"<?") || lower != u"xml" || kBlanks.find(text.back()) == kBlanks.npos) {
    return;
  }
  declaration_ = text.substr(2, 3);
  for (std::size_t i = 0; i < lower.size(); ++i) {
    head_[place(2 + i)] = static_cast<BYTE>(lower[i]);
  }
}

int ByteSource::Read(char* buffer, int bytes) {
  const bool fromHead = read_ < headSize_;
  const std::size_t end = fromHead ? headSize_ : document_.size();
  const BYTE* const data = fromHead ? head_.data() : document_.data();
  const std::size_t count = std::min(end - read_, static_cast<std::size_t>(std::max(bytes, 0)));
  if (count > 0) std::memcpy(buffer, data + read_, count);
  read_ += count;
  return static_cast<int>(count);
}

}  // namespace ce::host::dom
