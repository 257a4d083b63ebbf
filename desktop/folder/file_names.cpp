#include "desktop/folder/file_names.h"

#include <algorithm>

#include "common/formats/items/identity.h"
#include "common/text/text.h"

namespace desktop {
namespace {

constexpr std::size_t kLongestStem = 120;
constexpr std::string_view kUuid = "urn:uuid:";

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.' || c == '@';
}

}  // namespace

std::string FileStemFor(std::string_view uid) {
  std::string_view stem = uid;
  if (text::StartsWithNoCase(stem, kUuid)) stem.remove_prefix(kUuid.size());
  const bool plain = !stem.empty() && stem.size() <= kLongestStem && stem.front() != '.' &&
                     stem.front() != '-' && stem.back() != '.' &&
                     std::all_of(stem.begin(), stem.end(), IsPlain);
  return plain ? std::string(stem) : formats::ContentHash(uid);
}

std::filesystem::path NumberedName(const std::filesystem::path& name, std::size_t attempt) {
  if (attempt <= 1) return name;
  std::filesystem::path numbered = name.parent_path() / name.stem();
  numbered += "-" + std::to_string(attempt);
  numbered += name.extension();
  return numbered;
}

}  // namespace desktop
