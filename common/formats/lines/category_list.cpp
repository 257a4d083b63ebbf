#include "common/formats/lines/category_list.h"

#include <algorithm>
#include <unordered_set>

#include "common/text/text.h"

namespace formats {

std::vector<std::string> CategoriesOf(const Property& property, NoticeList& notices) {
  std::string value = property.value;
  if (property.dialect == VCardDialect::k21) std::replace(value.begin(), value.end(), ';', ',');
  const std::vector<std::string_view> parts = SplitValue(value, ',');
  std::vector<std::string> categories;
  Unescaper unescape(property);
  bool commaReplaced = false;
  for (const std::string_view part : parts) {
    std::string category = unescape(part);
    if (parts.size() > 1) category = text::TrimBlanks(category);
    commaReplaced = commaReplaced || category.find(',') != std::string::npos;
    std::replace(category.begin(), category.end(), ',', ';');
    if (!category.empty()) categories.push_back(std::move(category));
  }
  if (commaReplaced) {
    notices.Add(property, "a category's name cannot hold a comma, kept with a semicolon");
  }
  return categories;
}

void RemoveRepeated(std::vector<std::string>& names) {
  std::unordered_set<std::string> known;
  std::vector<std::string> kept;
  for (std::string& name : names) {
    if (known.insert(name).second) kept.push_back(std::move(name));
  }
  names = std::move(kept);
}

}  // namespace formats
