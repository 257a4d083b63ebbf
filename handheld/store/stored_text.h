// The store's text: UTF-8 that can carry every UTF-16 text.
//
// A surrogate without its partner becomes the three bytes that its value would take, so that text
// comes back unit for unit. Bytes that are neither read as U+FFFD each.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation.h"

namespace ce::host {

void AppendStored(std::string& out, std::u16string_view text);

// UTF-16 units of the text.
std::size_t StoredUnits(std::string_view stored);
// False when some bytes read as U+FFFD that were not written as one.
bool IsStoredText(std::string_view stored);

std::u16string FromStored(std::string_view stored);
// Null when memory runs out; an owned, empty string for an empty text.
BSTR BstrFromStored(std::string_view stored);

}  // namespace ce::host
