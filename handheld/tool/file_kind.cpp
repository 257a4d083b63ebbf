#include "handheld/tool/file_kind.h"

#include <string>

#include "common/formats/icalendar/icalendar.h"
#include "common/text/text.h"

namespace tool {
namespace {

// The first character that is neither a byte-order mark nor blank.
char FirstSign(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first == bytes.npos ? '\0' : bytes[first];
}

}  // namespace

FileKind FileKindOf(const std::filesystem::path& file, std::string_view beginning) {
  const std::string extension = file.extension().string();
  const auto isNamed = [&](std::string_view name) {
    return formats::EqualsNoCase(extension, name);
  };
  if (isNamed(".vcf")) return FileKind::kCards;
  if (isNamed(".ics")) return FileKind::kCalendar;
  const char first = FirstSign(beginning);
  if (first == '<') return FileKind::kBackup;
  if (first == '{') return FileKind::kJsonLines;
  if (formats::LooksLikeICalendar(beginning)) return FileKind::kCalendar;
  if (isNamed(".xml")) return FileKind::kBackup;
  if (isNamed(".json") || isNamed(".jsonl")) return FileKind::kJsonLines;
  return FileKind::kCards;
}

}  // namespace tool
