#include "common/formats/backup/sms_backup_values.h"

#include <charconv>

#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

constexpr std::string_view kUnknownName = "(Unknown)";
// Android's word for the telephone's own number.
constexpr std::string_view kOwnAddress = "insert-address-token";

}  // namespace

std::string_view BackupAttributes::operator[](std::string_view name) const {
  for (const auto& [key, value] : list) {
    if (key == name) return value == "null" ? std::string_view() : std::string_view(value);
  }
  return {};
}

std::optional<std::int64_t> BackupNumber(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (text.empty() || read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

std::optional<MessageTime> BackupTime(const BackupElement& element, NoticeTally& tally) {
  const std::string_view text = element.attributes["date"];
  const std::optional<std::int64_t> number = BackupNumber(text);
  // Beyond that the clock's arithmetic does not reach; no telephone does.
  constexpr std::int64_t kFarthest = std::int64_t{1} << 53;
  std::optional<MessageTime> time;
  if (number && *number > -kFarthest && *number < kFarthest) time = TimeFromMilliseconds(*number);
  if (!time) tally.Add(element.line, "date: not a time: " + text::Excerpt(text));
  return time;
}

std::string ReadableDate(const std::optional<MessageTime>& time) {
  if (!time) return "null";
  std::string text = FormatMessageTime(std::chrono::floor<std::chrono::seconds>(*time));
  if (text.empty()) return "null";
  text[10] = ' ';
  text.replace(text.size() - 1, 1, " UTC");
  return text;
}

std::string MillisecondsText(const std::optional<MessageTime>& time) {
  return std::to_string(time ? time->time_since_epoch().count() : 0);
}

std::string KnownName(std::string_view name) {
  return name == kUnknownName ? std::string() : std::string(name);
}

std::string KnownAddress(std::string_view address) {
  return address == kOwnAddress ? std::string() : std::string(address);
}

std::vector<std::string> SplitAt(std::string_view text, std::string_view separator) {
  std::vector<std::string> pieces;
  if (text.empty()) return pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + separator.size());
  }
}

std::string XmlCarries(std::string_view text) {
  std::string carried = text::IsValidUtf8(text) ? std::string(text) : text::RepairUtf8(text);
  std::erase_if(carried, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 && c != '\t' && c != '\n' && c != '\r';
  });
  for (const std::string_view none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    for (std::size_t at = 0; (at = carried.find(none, at)) != std::string::npos;) {
      carried.erase(at, none.size());
    }
  }
  return carried;
}

}  // namespace formats
