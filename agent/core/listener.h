// The agent's entry routine: one listening socket, one thread for every connection.
#pragma once

#include <atomic>

#include "platform/sockets.h"
#include "platform/types.h"

namespace corvane {

inline constexpr ce::WORD AGENT_PORT = 2005;
// The microsecond is part of the period.
inline constexpr ce::timeval kSelectPeriod = {60, 1};

// Takes the place of the select period's seconds. Set it before WinMain.
extern std::atomic<ce::LONG> IdleSeconds;
// 1 plus the handleRequest threads that run now. Changed by interlocked operations only.
extern std::atomic<ce::LONG> ActiveRequestCount;
// Nonzero ends the accept loop when select returns next.
extern std::atomic<ce::DWORD> QuitRequested;

// Listens until it is idle for a whole select period or a desktop has asked it to quit. 1 when the
// socket library cannot be started, otherwise 0. Only `instance` is used. Request threads that are
// under way run on.
int WinMain(ce::HANDLE instance, ce::HANDLE previous, ce::WCHAR* commandLine, int show);

// The last run of WinMain was ended by a desktop's request, not by the idle rule or a failure.
bool QuitByRequest();

// Makes the next WinMain a fresh start, as of a new process: ends the log and forgets its settings
// and the quit flag. Call it between two runs.
void ResetAgent();

}  // namespace corvane
