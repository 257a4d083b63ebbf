// 8-bit text in the code pages of the device.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

struct EncodedText {
  std::string bytes;
  bool substituted = false;  // a character was not to be had and became the substitute
};

// Nothing for a code page that is not known.
std::optional<EncodedText> EncodeText(UINT codePage, std::u16string_view text, char substitute);
// Bytes that stand for nothing become U+FFFD; `wellFormed` tells whether there were any.
std::optional<std::u16string> DecodeText(UINT codePage, std::string_view bytes, bool& wellFormed);

// Conversions that this process has asked the system for. A thread asks once for each code page and
// direction, which is dear.
std::uint64_t ConversionsOpened();

// The page that CP_ACP stands for on the current handheld; 1252 without one.
UINT SystemCodePage();

}  // namespace ce::host
