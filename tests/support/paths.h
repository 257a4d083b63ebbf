// Where the tree and the built programs lie. Kept out of the tests' command lines, so that their
// objects can be shared between checkouts.
#pragma once

#include <string>
#include <string_view>

namespace corvane::testing {

std::string SourcePath(std::string_view relative);
std::string ProgramPath(std::string_view name);

}  // namespace corvane::testing
