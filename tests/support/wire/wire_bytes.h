// The wire's records, built byte by byte from the protocol's tables.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/words.h"

namespace corvane::testing {

inline constexpr std::uint32_t kInvoke = 69;
inline constexpr std::uint32_t kQuit = 0xDEADBEEF;

inline constexpr std::uint32_t kFail = 0x80004005;
inline constexpr std::uint32_t kInvalidArgument = 0x80070057;
inline constexpr std::uint32_t kNotImplemented = 0x80004001;

// The kinds of item.
inline constexpr std::uint32_t kAppointments = 0;
inline constexpr std::uint32_t kContacts = 1;
inline constexpr std::uint32_t kTasks = 2;

// What a document that the agent sends begins with.
inline const std::string kDeclaration = R"(<?XML version="1.0" encoding="UTF-8"?>)";

std::string Utf16(std::string_view text);  // ASCII widened, no terminator

// The fields of an invoke body.
struct Invoke {
  std::string function = {};
  std::string input = {};
  std::uint32_t streamFlag = 0;
  std::string dll = "corvane";
  bool terminated = true;  // whether the function name's NUL is sent and counted
  std::uint32_t kind = kInvoke;
  std::string reserved = std::string(8, '\0');
  std::string unused = std::string(4, '\0');
  // Instead of the lengths of what is sent.
  std::optional<std::uint32_t> dllNameLength = {};
  std::optional<std::uint32_t> functionNameLength = {};
  std::optional<std::uint32_t> inputCount = {};

  std::string Body() const;
};

// The length prefix and the body.
std::string Record(std::string_view body);

struct BufferedReply {
  std::uint32_t totalLength, reserved, status, statusAgain, outputCount;
  std::string output;
};

struct Download {
  std::vector<std::string> documents;
  std::uint32_t finalStatus = 0;
  std::string rest;  // what followed the trailer until the connection ended
};

struct UploadReply {
  std::uint32_t oid, result;
  friend bool operator==(const UploadReply&, const UploadReply&) = default;
};

// Elements of this name that a document holds.
std::size_t CountElements(std::string_view document, std::string_view name);
// The value of every "Oid" attribute, in order.
std::vector<std::uint32_t> OidsOf(std::string_view document);
// A chunk of an upload: the count and the document.
std::string Chunk(std::string_view document);

}  // namespace corvane::testing
