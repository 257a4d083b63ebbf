#include "handheld/dom/encoding.h"

#include <algorithm>
#include <string>

namespace ce::host::dom {
namespace {

constexpr std::string_view kNames[] = {"ASCII", "US-ASCII", "UTF-8", "UTF8"};
constexpr std::string_view kFamilies[] = {"ISO-8859-",   "ISO8859-", "ISO_8859-",
                                          "WINDOWS-125", "CP125",    "KOI8-"};

}  // namespace

bool KeepsAscii(std::string_view encoding, ByteLayout layout) {
  std::string name(encoding);
  for (char& c : name) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (layout.width == 2) return name == (layout.low == 0 ? "UTF-16LE" : "UTF-16BE");
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames) ||
         std::any_of(std::begin(kFamilies), std::end(kFamilies),
                     [&](std::string_view family) { return name.starts_with(family); });
}

}  // namespace ce::host::dom
