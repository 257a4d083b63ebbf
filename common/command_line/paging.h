// The option of commands whose lists can be long.
#pragma once

#include <CLI/CLI.hpp>

namespace command_line {

// Gives the command --no-pager.
void AddPaging(CLI::App& command);

// Once all has been parsed: whether the command is such a one, and is to speak to a person, which
// --no-pager, --json and --quiet deny.
bool WantsPager(const CLI::App& program);

}  // namespace command_line
