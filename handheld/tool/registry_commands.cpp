#include "handheld/tool/registry_commands.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>

#include "common/text/unicode.h"
#include "handheld/registry/registry_store.h"
#include "handheld/tool/result.h"
#include "platform/registry.h"

namespace tool {
namespace {

using ce::host::Registry;
using ce::host::RegistryValue;

std::string Hex(const std::vector<ce::BYTE>& bytes) {
  std::string text;
  for (const ce::BYTE byte : bytes) text += fmt::format("{:02X}", byte);
  return text;
}

std::string ValueText(const RegistryValue& value) {
  if (const auto text = value.AsText()) return "sz:" + text::ToUtf8Lossy(*text);
  if (const auto number = value.AsNumber()) return fmt::format("dword:{}", *number);
  if (value.type == ce::REG_BINARY) return "binary:" + Hex(value.data);
  return fmt::format("hex({:x}):{}", value.type, Hex(value.data));
}

// "type" and "value" are what stands before and behind the first colon of ValueText; a number is
// one.
Json AsJson(const std::string& name, const RegistryValue& value) {
  const std::string text = ValueText(value);
  const std::size_t colon = text.find(':');
  Json object = {{"name", name}, {"type", text.substr(0, colon)}};
  if (const auto number = value.AsNumber())
    object["value"] = *number;
  else
    object["value"] = text.substr(colon + 1);
  return object;
}

std::optional<RegistryValue> ParseNumber(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const unsigned long long number = std::strtoull(text.c_str(), &end, 0);
  const bool digits = !text.empty() && text.find_first_of("-+ ") == std::string::npos && !*end;
  if (!digits || errno != 0 || number > 0xFFFFFFFF) return std::nullopt;
  return RegistryValue::Number(static_cast<ce::DWORD>(number));
}

std::optional<RegistryValue> ParseBinary(const std::string& text) {
  RegistryValue value{ce::REG_BINARY, {}};
  if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    return std::nullopt;
  for (std::size_t i = 0; i < text.size(); i += 2)
    value.data.push_back(
        static_cast<ce::BYTE>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
  return value;
}

std::optional<RegistryValue> ParseValue(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const std::string type = text.substr(0, colon);
  const std::string data = text.substr(colon + 1);
  if (type == "sz") return RegistryValue::Text(text::FromUtf8Lossy(data));
  if (type == "dword") return ParseNumber(data);
  if (type == "binary") return ParseBinary(data);
  return std::nullopt;
}

Outcome Finish(ce::DWORD error, const std::string& what, const Report& report) {
  if (error == ce::ERROR_SUCCESS) return Outcome::kDone;
  std::string why = fmt::format("error {}", error);
  if (error == ce::ERROR_FILE_NOT_FOUND) why = "it is not there";
  if (error == ce::ERROR_INVALID_NAME) why = "no key or value can be called that";
  if (error == ce::ERROR_ACCESS_DENIED) why = "that cannot be changed";
  if (error == ce::ERROR_DISK_FULL) why = "the registry is full";
  Tell(report.err, "corvane-device: {}: {}\n", what, why);
  return Outcome::kFailed;
}

std::string Describe(const std::string& key, const std::optional<std::string>& name) {
  return name ? fmt::format("{} \"{}\"", key, *name) : key;
}

}  // namespace

Outcome RegistryGet(ce::host::Handheld& handheld, const std::string& key,
                    const std::optional<std::string>& name, const Report& report) {
  Registry& registry = handheld.registry();
  const std::u16string wideKey = text::FromUtf8Lossy(key);
  if (name) {
    const auto value = registry.Value(wideKey, text::FromUtf8Lossy(*name));
    if (!value) return Finish(ce::ERROR_FILE_NOT_FOUND, Describe(key, name), report);
    if (report.json)
      TellJson(report, AsJson(*name, *value));
    else
      Tell(report.out, "{}\n", ValueText(*value));
    return Outcome::kDone;
  }
  if (!registry.HasKey(wideKey)) return Finish(ce::ERROR_FILE_NOT_FOUND, key, report);
  for (const auto& [valueName, value] : registry.Values(wideKey)) {
    const std::string shown = text::ToUtf8Lossy(valueName);
    if (report.json)
      TellJson(report, AsJson(shown, value));
    else
      Tell(report.out, "{} = {}\n", shown, ValueText(value));
  }
  for (const std::u16string& subKey : registry.SubKeys(wideKey)) {
    const std::string shown = text::ToUtf8Lossy(subKey);
    if (report.json)
      TellJson(report, {{"key", shown}});
    else
      Tell(report.out, "[{}]\n", shown);
  }
  return Outcome::kDone;
}

Outcome RegistrySet(ce::host::Handheld& handheld, const std::string& key,
                    const std::optional<std::string>& name, const std::optional<std::string>& value,
                    const Report& report) {
  Registry& registry = handheld.registry();
  const std::u16string wideKey = text::FromUtf8Lossy(key);
  if (!name) return Finish(registry.CreateKey(wideKey, nullptr), key, report);
  const auto parsed = value ? ParseValue(*value) : std::nullopt;
  if (!parsed) {
    throw UsageError(fmt::format("{}: a value is sz:TEXT, dword:NUMBER or binary:HEX, not \"{}\"",
                                 Describe(key, name), value.value_or("")));
  }
  return Finish(registry.SetValue(wideKey, text::FromUtf8Lossy(*name), *parsed),
                Describe(key, name), report);
}

Outcome RegistryDelete(ce::host::Handheld& handheld, const std::string& key,
                       const std::optional<std::string>& name, const Report& report) {
  Registry& registry = handheld.registry();
  const std::u16string wideKey = text::FromUtf8Lossy(key);
  const ce::DWORD error = name ? registry.DeleteValue(wideKey, text::FromUtf8Lossy(*name))
                               : registry.DeleteKey(wideKey);
  return Finish(error, Describe(key, name), report);
}

}  // namespace tool
