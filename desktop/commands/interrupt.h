// Ctrl-C as something that a wait can notice.
#pragma once

namespace desktop {

// From now on, the first SIGINT or SIGTERM makes the descriptor readable, for
// ConnectionOptions::interruptFd; a second one ends the process. A write to a pipe that nobody
// reads fails instead of ending the process. Call it once, from main.
int CatchInterruptions();

}  // namespace desktop
