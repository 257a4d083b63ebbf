// Completion of command lines, as each shell loads it.
#pragma once

#include <string>

#include "packaging/reference/program.h"

namespace reference {

std::string BashCompletion(const Program& program);
std::string FishCompletion(const Program& program);
std::string ZshCompletion(const Program& program);

// In single quotes, for bash and zsh.
std::string Quoted(const std::string& text);
// A name that a shell's function can have.
std::string FunctionName(const Program& program);

}  // namespace reference
