// Long lists, a screen at a time.
#pragma once

#include <functional>

namespace terminal {

// Runs it with what it writes to the standard output in the person's pager, and with its errors,
// where they would be on a terminal, too. Returns its result once the pager has been left; 0 when
// that was before all had been written, which is no failure, whatever `run` makes of it.
//
// The pager is $PAGER, a command for the shell, or else less. Without one `run` is just run: when
// none is wanted, where the standard output is no terminal or one that is not able, where $PAGER is
// empty, and where there is no such program. Throws std::runtime_error for a command that only the
// shell could look through, and cannot run.
int Paged(bool isWanted, const std::function<int()>& run);

}  // namespace terminal
