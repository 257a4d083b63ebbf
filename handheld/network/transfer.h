// What a socket sends.
#pragma once

#include "handheld/network/socket_table.h"

namespace ce::host {

// Sends what waits for more (MSG_PARTIAL): nothing follows for now, or ever. A failure shows with
// the next call.
void SendHeld(Socket& socket);

}  // namespace ce::host
