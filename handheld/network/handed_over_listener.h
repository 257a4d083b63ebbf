// A listening socket that the service manager has opened for this process.
#pragma once

#include <stdexcept>

#include "handheld/network/socket_table.h"

namespace ce::host {

// What was handed over cannot be listened on; worded for people.
class HandedOverError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Takes it, so that neither this process nor one that it starts takes it again. Null when none was
// handed over. Throws HandedOverError.
SocketPtr TakeHandedOverListener();

}  // namespace ce::host
