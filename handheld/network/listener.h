// The agent's listening socket: where it comes from and where it goes.
#pragma once

#include "handheld/network/socket_table.h"

namespace ce::host {

// Takes a listener of the agent that is being closed, if it is to listen on; true when taken.
[[nodiscard]] bool KeepListener(const SocketPtr& socket);

}  // namespace ce::host
