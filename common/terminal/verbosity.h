// How much a command says.
#pragma once

namespace terminal {

// With kErrors nothing else but what was asked for, with kAll each notice and each record by
// itself.
enum class Verbosity { kErrors, kSummary, kAll };

}  // namespace terminal
