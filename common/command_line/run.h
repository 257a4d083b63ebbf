// How a program ends that throws.
#pragma once

#include <functional>

namespace command_line {

// The exit code of `run`; or 1 after what it throws has been said in one line, which a lack of
// memory is, too.
int RunToTheEnd(const char* program, const std::function<int()>& run);

}  // namespace command_line
