#include "handheld/registry/registry_tree.h"

#include <algorithm>
#include <array>
#include <utility>

#include "common/text/little_endian.h"
#include "common/text/unicode.h"
#include "platform/registry.h"

namespace ce::host {
namespace {

constexpr std::array<std::u16string_view, 4> kRoots = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER",
                                                       u"HKEY_LOCAL_MACHINE", u"HKEY_USERS"};

// Sorts a parent directly before what is below it: no name holds a character below U+0001.
std::u16string PathOrder(std::u16string_view path) {
  std::u16string folded = text::Fold(path);
  std::replace(folded.begin(), folded.end(), u'\\', u'\0');
  return folded;
}

std::string_view Bytes(const std::vector<BYTE>& data) {
  return {reinterpret_cast<const char*>(data.data()), data.size()};
}

}  // namespace

RegistryValue RegistryValue::Text(std::u16string_view text) {
  const std::string bytes = text::ToUtf16Le(std::u16string(text) + u'\0');
  return {REG_SZ, {bytes.begin(), bytes.end()}};
}

RegistryValue RegistryValue::Number(DWORD number) {
  std::string bytes;
  text::PutWord(bytes, number);
  return {REG_DWORD, {bytes.begin(), bytes.end()}};
}

std::optional<std::u16string> RegistryValue::AsText() const {
  if (type != REG_SZ) return std::nullopt;
  const std::u16string text = text::FromUtf16Le(Bytes(data));
  return text.substr(0, text.find(u'\0'));
}

std::optional<DWORD> RegistryValue::AsNumber() const {
  if (type != REG_DWORD || data.size() != 4) return std::nullopt;
  return text::WordAt(Bytes(data), 0);
}

bool RegistryTree::ValidPath(std::u16string_view path) {
  if (path.size() > kMaxPath) return false;
  const std::u16string root = text::Fold(path.substr(0, path.find(u'\\')));
  if (std::find(kRoots.begin(), kRoots.end(), root) == kRoots.end()) return false;
  std::size_t depth = 0;
  for (std::size_t start = 0; start <= path.size(); ++depth) {
    const std::size_t end = std::min(path.find(u'\\', start), path.size());
    if (end == start || !ValidName(path.substr(start, end - start))) return false;
    start = end + 1;
  }
  return depth <= kMaxDepth;
}

bool RegistryTree::ValidName(std::u16string_view name) {
  const auto isControl = [](char16_t unit) { return unit < 0x20; };
  return name.size() <= kMaxName && std::none_of(name.begin(), name.end(), isControl) &&
         text::ToUtf8(name).has_value();
}

bool RegistryTree::HasKey(std::u16string_view path) const {
  return keys_.contains(PathOrder(path));
}

bool RegistryTree::AddKey(std::u16string_view path) {
  const std::u16string order = PathOrder(path);
  bool added = false;
  for (std::size_t end = 0; end != std::u16string_view::npos;) {
    end = path.find(u'\\', end + 1);
    added = keys_.try_emplace(order.substr(0, end), Key{std::u16string(path.substr(0, end)), {}})
                .second;
  }
  return added;
}

bool RegistryTree::DeleteKey(std::u16string_view path) {
  const std::u16string order = PathOrder(path);
  const auto first = keys_.find(order);
  if (first == keys_.end()) return false;
  keys_.erase(first, keys_.lower_bound(order + u'\x1'));
  return true;
}

const RegistryValue* RegistryTree::Find(std::u16string_view path, std::u16string_view name) const {
  const auto key = keys_.find(PathOrder(path));
  if (key == keys_.end()) return nullptr;
  const auto value = key->second.values.find(text::Fold(name));
  return value == key->second.values.end() ? nullptr : &value->second.value;
}

void RegistryTree::Set(std::u16string_view path, std::u16string_view name, RegistryValue value) {
  AddKey(path);
  auto& values = keys_.find(PathOrder(path))->second.values;
  auto& slot = values.try_emplace(text::Fold(name), NamedRegistryValue{std::u16string(name), {}})
                   .first->second;
  slot.value = std::move(value);
}

bool RegistryTree::DeleteValue(std::u16string_view path, std::u16string_view name) {
  const auto key = keys_.find(PathOrder(path));
  return key != keys_.end() && key->second.values.erase(text::Fold(name)) != 0;
}

std::vector<std::u16string> RegistryTree::SubKeys(std::u16string_view path) const {
  std::vector<std::u16string> names;
  const std::u16string below = PathOrder(path) + u'\0';
  auto key = keys_.lower_bound(below);
  while (key != keys_.end() && key->first.starts_with(below)) {
    names.push_back(key->second.path.substr(below.size()));
    key = keys_.lower_bound(key->first + u'\x1');
  }
  return names;
}

std::vector<NamedRegistryValue> RegistryTree::Values(std::u16string_view path) const {
  std::vector<NamedRegistryValue> values;
  const auto key = keys_.find(PathOrder(path));
  if (key == keys_.end()) return values;
  for (const auto& [name, value] : key->second.values) values.push_back(value);
  return values;
}

}  // namespace ce::host
