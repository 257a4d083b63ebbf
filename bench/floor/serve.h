// The floors that answer a desktop.
#pragma once

#include <string>

namespace floors {

// Both say on the standard output where they listen, and serve until they are killed.

// Answers every connection with all records of a kind ("contacts", "messages" …) in a handheld's
// store, one connection after the other.
[[noreturn]] void ServeDownloads(const std::string& kind, const std::string& store);
// Answers every connection with the time, on a thread of its own.
[[noreturn]] void ServeRequests();

}  // namespace floors
