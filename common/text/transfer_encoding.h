// The two ways in which a vCard value is made fit for seven-bit transport.
#pragma once

#include <string>
#include <string_view>

namespace text {

// "=XX" becomes its byte; anything else stands for itself, a broken sequence included. With
// `protectSeparators` a semicolon that was written as "=3B" comes out escaped, so that it is told
// from one that separates components.
std::string DecodeQuotedPrintable(std::string_view value, bool protectSeparators);

// Blanks and whatever else does not belong are skipped; reading ends at "=".
std::string DecodeBase64(std::string_view value);

}  // namespace text
