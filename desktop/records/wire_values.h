// Values as the records' elements have them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/wire/xml_records.h"

namespace desktop {

// An element around XML that is written already.
std::string Element(std::string_view name, std::string_view innerXml);
std::string ElementUnlessEmpty(std::string_view name, std::string_view innerXml);
// Nothing for a text of which XML carries nothing.
std::string TextElement(std::string_view name, std::string_view text);
std::string TrueElement(std::string_view name, bool value);  // nothing for false
std::string NumberElement(std::string_view name, long long value);

// "20080215T000000".
std::string DateText(std::chrono::local_days day);
// "20080215T134501".
std::string DateTimeText(std::chrono::sys_seconds time);

// What follows the day does not count. Nothing for other text and for days that do not exist.
std::optional<std::chrono::local_days> DateFromText(std::string_view text);
std::optional<std::chrono::sys_seconds> DateTimeFromText(std::string_view text);
// The digits that the text begins with, after blanks and a sign; 0 without any, the nearest number
// where there are too many.
int NumberFromText(std::string_view text);

// Of a child of that name; nothing, or the default, when it is missing or has no text.
std::optional<std::chrono::local_days> ChildDate(const XmlElement& record, std::string_view name);
std::optional<int> ChildNumber(const XmlElement& record, std::string_view name);
int ChildNumber(const XmlElement& record, std::string_view name, int otherwise);
// Whether it says "TRUE".
bool ChildIsTrue(const XmlElement& record, std::string_view name);

// The children of "CATEGORIES". Names that the agent cannot read are left out.
std::string CategoriesToXml(const std::vector<std::string>& categories);
// Each name once; the element may be null.
std::vector<std::string> CategoriesFromXml(const XmlElement* element);

}  // namespace desktop
