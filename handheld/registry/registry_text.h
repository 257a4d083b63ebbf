// The .reg text form of a registry: "Windows Registry Editor Version 5.00", keys in brackets,
// "Name"="text", "Name"=dword:0000002a, "Name"=hex:01,02 and hex(7):… with continued lines.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "handheld/registry/registry_tree.h"

namespace ce::host {

// A text that is no registry: what is wrong and in which line, counted from 1.
class RegistryTextError : public std::runtime_error {
 public:
  RegistryTextError(std::size_t line, const std::string& problem);
  std::size_t line() const { return line_; }

 private:
  std::size_t line_;
};

inline constexpr std::size_t kMaxRegistryText = 1u << 20;  // bytes

// Reads UTF-8, with or without a byte-order mark, and UTF-16LE with one. Deletions ("[-KEY]" and
// "Name"=-) are carried out in the order of the text. Throws RegistryTextError.
RegistryTree ParseRegistry(std::string_view text);

// UTF-8 with CR LF line ends, keys and values in the order of their names.
std::string FormatRegistry(const RegistryTree& tree);

// The right-hand side of a value's line, for showing it.
std::string FormatRegistryData(const RegistryValue& value);

}  // namespace ce::host
