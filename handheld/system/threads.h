// Threads of the virtual handheld.
#pragma once

#include "platform/threads.h"

namespace ce::host {

// Returns once every thread that CreateThread has started is over, its thread-local objects
// included. A program calls it before it closes the handheld. Not to be called on such a thread.
void WaitForRequestThreads();

}  // namespace ce::host
