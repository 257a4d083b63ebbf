#include "desktop/wire/status_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace desktop {
namespace {

struct Row {
  std::uint32_t status;
  std::string_view meaning;
};

constexpr Row kMeanings[] = {
    {0x00000000, "done"},
    {0x00000002, "file not found"},
    {0x00000003, "path not found"},
    {0x00000005, "access denied"},
    {0x00000006, "a file could not be opened or made"},
    {0x00000008, "out of memory"},
    {0x0000000E, "out of memory"},
    {0x0000001F, "the device does not work"},
    {0x00000020, "in use"},
    {0x00000057, "invalid value, such as a date that does not exist"},
    {0x00000070, "the disk is full"},
    {0x0000007B, "no path of a handheld"},
    {0x0000007F, "unknown request"},
    {0x80004001, "not supported"},
    {0x80004002, "not supported"},
    {0x80004003, "invalid pointer"},
    {0x80004004, "aborted"},
    {0x80004005, "failed"},
    {0x8000FFFF, "unexpected failure"},
    {0x80040008, "an item of another kind"},
    {0x80040066, "text too long"},
    {0x80070002, "not found"},
    {0x80070005, "access denied"},
    {0x8007000E, "out of memory"},
    {0x80070020, "in use"},
    {0x80070057, "invalid argument, or no such item"},
    {0x80070070, "the disk is full"},
    {0x800A0039, "a file gave or took too little"},
    {0x800A0141, "a note's file has another extension than pwi, rtf, txt and unicode"},
    {0x800A017C, "a path longer than the request"},
};

}  // namespace

std::string StatusMeaning(std::int32_t status) {
  const auto* row = std::find_if(std::begin(kMeanings), std::end(kMeanings), [&](const Row& each) {
    return each.status == static_cast<std::uint32_t>(status);
  });
  return row == std::end(kMeanings) ? std::string() : std::string(row->meaning);
}

std::string StatusText(std::int32_t status) {
  const std::string meaning = StatusMeaning(status);
  const std::string number = status < 0
                                 ? fmt::format("0x{:08X}", static_cast<std::uint32_t>(status))
                                 : fmt::format("{}", status);
  return meaning.empty() ? number : fmt::format("{} ({})", number, meaning);
}

}  // namespace desktop
