#include <array>

#include "common/text/unicode.h"
#include "handheld/registry/registry_text.h"
#include "platform/registry.h"

namespace ce::host {
namespace {

constexpr std::size_t kBytesPerLine = 25;

void AppendHex(std::string& out, DWORD number, int digits) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    out.push_back(kDigits[number >> shift & 0xF]);
  }
}

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') out.push_back('\\');
    out.push_back(byte);
  }
  return out + '"';
}

// The text form reads back as the same bytes, and stays on its line.
std::optional<std::string> PlainText(const RegistryValue& value) {
  const std::optional<std::u16string> text = value.AsText();
  if (!text || RegistryValue::Text(*text) != value) return std::nullopt;
  if (text->find_first_of(u"\r\n") != std::u16string::npos) return std::nullopt;
  return text::ToUtf8(*text);
}

std::string HexTypeName(DWORD type) {
  if (type == REG_BINARY) return "hex:";
  std::string name = "hex(";
  int digits = 1;
  while (digits < 8 && type >> (digits * 4) != 0) ++digits;
  AppendHex(name, type, digits);
  return name + "):";
}

}  // namespace

std::string FormatRegistryData(const RegistryValue& value) {
  if (const std::optional<std::string> text = PlainText(value)) return Quoted(*text);
  if (const std::optional<DWORD> number = value.AsNumber()) {
    std::string out = "dword:";
    AppendHex(out, *number, 8);
    return out;
  }
  std::string out = HexTypeName(value.type);
  for (std::size_t i = 0; i < value.data.size(); ++i) {
    if (i != 0) out += i % kBytesPerLine == 0 ? ",\\\r\n  " : ",";
    AppendHex(out, value.data[i], 2);
  }
  return out;
}

std::string FormatRegistry(const RegistryTree& tree) {
  std::string out = "Windows Registry Editor Version 5.00\r\n";
  for (const auto& [order, key] : tree.keys()) {
    out += "\r\n[" + text::ToUtf8Lossy(key.path) + "]\r\n";
    for (const auto& [folded, named] : key.values) {
      const auto& [name, value] = named;
      out += name.empty() ? "@" : Quoted(text::ToUtf8Lossy(name));
      out += '=' + FormatRegistryData(value) + "\r\n";
    }
  }
  return out;
}

}  // namespace ce::host
