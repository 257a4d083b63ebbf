// Sockets that nobody uses any more but that the agent has left open.
//
// The device leaves it to the desktop to end a connection after a buffered reply. Such a socket is
// abandoned: it stays open until its peer has closed its end, bytes that still come being thrown
// away, and is then closed. Only when descriptors run short is the oldest closed earlier. A
// connection that the agent has closed waits here as well, its sending side ended. One thread,
// started with the first abandoned socket, watches them all. Everything is thread-safe.
#pragma once

#include <cstddef>

#include "handheld/network/socket_table.h"

namespace ce::host {

bool IsOpenSocket(SOCKET handle);

// Ends the value and watches the connection behind it; nothing when it is not an open socket. A
// socket without a peer, or with one that was silent beyond the limit, is closed at once. At most
// half of the descriptors that the process may have stay with abandoned sockets.
void AbandonSocket(SOCKET handle);
void AbandonSocket(SocketPtr socket);

// False when there is none.
bool CloseOldestAbandonedSocket();

std::size_t AbandonedSocketCount();

// Closes all that is abandoned and ends the watching thread. A socket that is abandoned later
// starts it again.
void StopSocketWatcher();

}  // namespace ce::host
