// The calls that are asked, under the same names in both builds: Windows' own, and the tree's.
#pragma once

#ifdef _WIN32
#include <windows.h>
// Behind the header that they rest on.
#include <msxml2.h>
#include <oleauto.h>
#else
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/com.h"
#include "platform/status.h"
#include "platform/text.h"
#include "platform/xml_dom.h"
#endif

#include <span>
#include <string>

namespace answers {

#ifndef _WIN32
using namespace ce;
#endif

using Wide = std::basic_string<WCHAR>;

// One "%0Nd" of a pattern, preceded by a literal unless that is 0.
struct ScanPart {
  char literal;
  int width;
};

// What swscanf answers to at most six parts.
int Scan(const Wide& text, std::span<const ScanPart> parts, std::span<LONG, 6> numbers);
// What wcstol reads with base 10.
LONG ToLong(const Wide& text);

// Null when it cannot be made.
IXMLDOMDocument* MakeDocument();
// What it saves to a stream; "failed" when it does not.
std::string Saved(IXMLDOMDocument& document);

}  // namespace answers
