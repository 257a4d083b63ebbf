// The value forms of the wire: value elements, each one element whose only child is a text.
//
// Every operation makes the element, appends it to `parent` and keeps nothing. A failed step leaves
// what was already appended in the tree (so possibly an empty element). A date or time that cannot
// be written as text leaves no element and is not reported.
#pragma once

#include <array>

#include "platform/xml_dom.h"

namespace corvane {

// A null or empty text writes nothing. The text is borrowed.
ce::HRESULT AddStringElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                             const ce::WCHAR* name, const ce::WCHAR* text);

// As AddStringElement, but takes the text over: `*text` is freed and nulled on every path.
ce::HRESULT AddBSTRElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                           const ce::WCHAR* name, ce::BSTR* text);

// Widens each byte with its sign (0xE9 becomes U+FFE9); no code page is involved.
ce::HRESULT AddAnsiStringElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                                 const ce::WCHAR* name, const char* text);

// "TRUE" or "FALSE".
ce::HRESULT AddBoolElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                           const ce::WCHAR* name, ce::LONG flag);

// Signed decimal.
ce::HRESULT AddLongElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                           const ce::WCHAR* name, ce::LONG value);

// "20080215T000000", as the date stands. The no-date value writes nothing. A date outside the years
// 100 to 9999 is E_UNEXPECTED.
ce::HRESULT AddDateElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                           const ce::WCHAR* name, ce::DATE date);

// "20080215T134501", as the time stands.
ce::HRESULT AddSystemTimeElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                                 const ce::WCHAR* name, const ce::SYSTEMTIME& time);

// The same of a date in the handheld's zone, converted to UTC. The no-date value writes nothing.
ce::HRESULT AddDateTimeElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                               const ce::WCHAR* name, ce::DATE local);

// The same of file time, without any conversion between zones.
ce::HRESULT AddFileTimeElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                               const ce::WCHAR* name, const ce::FILETIME& ticks);

// The text of "%ld", zero-terminated.
std::array<ce::WCHAR, 32> LongText(ce::LONG value);

}  // namespace corvane
