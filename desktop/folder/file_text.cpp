#include "desktop/folder/file_text.h"

#include <utility>

#include "common/text/code_page.h"
#include "common/text/unicode.h"

namespace desktop {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleMark = "\xFF\xFE";
constexpr std::string_view kBigMark = "\xFE\xFF";

bool IsMarked(std::string_view bytes) {
  return bytes.starts_with(kUtf8Mark) || bytes.starts_with(kLittleMark) ||
         bytes.starts_with(kBigMark);
}

}  // namespace

FileText::FileText(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Mark)) form_ = Form::kMarkedUtf8;
  if (bytes.starts_with(kLittleMark)) form_ = Form::kUtf16Le;
  if (bytes.starts_with(kBigMark)) form_ = Form::kUtf16Be;
  text::Conversion decoded = text::DecodeFile(bytes);
  text_ = std::move(decoded.text);
  damaged_ = decoded.damaged || BytesOf(text_) != bytes;
}

std::string FileText::BytesOf(std::string_view text) const {
  // Bytes that come to stand in front are no mark; an empty line, which says nothing, keeps it so.
  if (form_ == Form::kBytes) return (IsMarked(text) ? "\r\n" : "") + std::string(text);
  if (form_ == Form::kMarkedUtf8) return std::string(kUtf8Mark) + std::string(text);
  std::string bytes = text::ToUtf16Le(text::FromUtf8Lossy(text));
  if (form_ == Form::kUtf16Le) return std::string(kLittleMark) + bytes;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
  return std::string(kBigMark) + bytes;
}

}  // namespace desktop
