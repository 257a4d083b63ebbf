// The values of Pocket Outlook's items as people's programs have them: text, categories, times.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "handheld/tool/status_error.h"
#include "platform/pocket_outlook.h"

namespace tool {

// What a handheld does not keep of a record, a line each, such as "Subject: cut from 5000 to 4095
// characters, which is what a handheld keeps".
using NotKept = std::vector<std::string>;

template <typename Item, typename Value>
using Getter = ce::HRESULT (Item::*)(Value*);
template <typename Item, typename Value>
using Setter = ce::HRESULT (Item::*)(Value);

using TextGetter = std::function<ce::HRESULT(ce::BSTR*)>;
using TextSetter = std::function<ce::HRESULT(ce::BSTR)>;

// UTF-8 with LF for a line break; empty for a property that the handheld does not have.
std::string ReadText(const TextGetter& get, std::string_view name);
// A text that is longer than this property of a contact, or of an appointment or a task, may be is
// cut, between two characters.
void PutText(const TextSetter& put, std::string_view name, std::string_view utf8, bool ofContact,
             NotKept& notKept);
std::vector<std::string> ReadCategories(const TextGetter& get);
// As many names as there is room for, each whole.
void PutCategories(const TextSetter& put, std::vector<std::string> names, NotKept& notKept);

// Throw StatusError.
template <typename Item>
std::string ReadText(Item& item, Getter<Item, ce::BSTR> get, std::string_view name) {
  return ReadText([&](ce::BSTR* text) { return (item.*get)(text); }, name);
}
template <typename Item>
void PutText(Item& item, Setter<Item, ce::BSTR> put, std::string_view name, std::string_view utf8,
             NotKept& notKept) {
  PutText([&](ce::BSTR text) { return (item.*put)(text); }, name, utf8,
          std::is_same_v<Item, ce::IContact>, notKept);
}
template <typename Item>
std::vector<std::string> ReadCategories(Item& item) {
  return ReadCategories([&](ce::BSTR* text) { return item.get_Categories(text); });
}
template <typename Item>
void PutCategories(Item& item, const std::vector<std::string>& names, NotKept& notKept) {
  PutCategories([&](ce::BSTR text) { return item.put_Categories(text); }, names, notKept);
}

template <typename Item, typename Value>
Value Read(Item& item, Getter<Item, Value> get, std::string_view name) {
  Value value{};
  Check((item.*get)(&value), name);
  return value;
}
template <typename Item>
bool ReadFlag(Item& item, Getter<Item, ce::VARIANT_BOOL> get, std::string_view name) {
  return Read(item, get, name) != ce::VARIANT_FALSE;
}
template <typename Item>
void PutFlag(Item& item, Setter<Item, ce::VARIANT_BOOL> put, bool value, std::string_view name) {
  Check((item.*put)(value ? ce::VARIANT_TRUE : ce::VARIANT_FALSE), name);
}

// To the second; nothing for "none" and for what is no date.
std::optional<std::chrono::local_seconds> TimeOf(ce::DATE date);
std::optional<std::chrono::local_days> DayOf(ce::DATE date);
ce::DATE DateOf(std::chrono::local_seconds time);
// kNoDate for nothing and for a time that a handheld does not keep, which is named.
ce::DATE KeptDateOf(std::optional<std::chrono::local_seconds> time, std::string_view name,
                    NotKept& notKept);

}  // namespace tool
