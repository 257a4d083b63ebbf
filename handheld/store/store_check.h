// Is the store sound? For the handheld's maintenance.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "handheld/directory/handheld.h"

namespace ce::host {

// Reads the whole store: the database's own checks, then what the object model promises
// (identifiers, dates, lengths, text, folders that hang together). One line a problem, at most a
// few hundred; empty when all is sound, also for a handheld whose store has not been made yet.
// Changes nothing.
std::vector<std::string> CheckStore(const Handheld& handheld);
// The same of a store that is to become the handheld's.
std::vector<std::string> CheckStore(const Handheld& handheld, const std::filesystem::path& path);

// Why Logon fails, as one sentence that begins with the store's path; empty when it does not. Opens
// the store as Logon does, making it or bringing it up to date.
std::string DescribeStoreProblem(Handheld& handheld);

}  // namespace ce::host
