// The signals that ask a program to end: SIGINT and SIGTERM.
#pragma once

namespace ce::host {

// From now on the first of them calls `ending`, which must be fit for a signal handler, and ends
// every wait of select; the next one ends the process at once. Throws std::system_error.
void EndSelectsOnSignals(void (*ending)());

// Whether the first one has come.
bool EndedBySignal();

}  // namespace ce::host
