// What a command gives up with. Each text is a whole message for the person at the terminal.
#pragma once

#include "common/files/error.h"

namespace desktop {

using files::Error;

// Ctrl-C, or a request to terminate.
class Interrupted : public Error {
 public:
  Interrupted() : Error("interrupted") {}
};

}  // namespace desktop
