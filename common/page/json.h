// The members of a page's data.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <utility>

#include "common/text/text.h"
#include "common/text/unicode.h"

namespace page {

using Json = nlohmann::ordered_json;

// UTF-8, with LF for a line break.
inline std::string Clean(std::string_view text) {
  return text::NormalizeLineBreaks(text::RepairUtf8(text));
}

inline void AddText(Json& object, const char* name, std::string_view text) {
  if (!text.empty()) object[name] = Clean(text);
}
inline void AddFlag(Json& object, const char* name, bool flag) {
  if (flag) object[name] = true;
}
inline void AddList(Json& object, const char* name, Json list) {
  if (!list.empty()) object[name] = std::move(list);
}
template <typename Texts>
void AddTexts(Json& object, const char* name, const Texts& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push_back(Clean(text));
  AddList(object, name, std::move(list));
}

}  // namespace page
