// Waiting for sockets.
#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <span>

namespace ce::host {

using Deadline = std::optional<std::chrono::steady_clock::time_point>;  // nothing for none

// As the host's poll; an interruption does not end it.
int PollUntil(std::span<::pollfd> polls, const Deadline& deadline);

// Once `fd` has something to read, every call of select answers as if its time were up, also one
// that is under way. -1 for none; for calls that begin from now on. Stays the caller's.
void EndSelectsBy(int fd);

// For tests of what happens after a long wait: a time-out of select passes this many times as fast
// as real time. 1 at first. For calls of select that begin from now on.
void SetTimeLapse(double factor);

}  // namespace ce::host
