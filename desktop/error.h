// What a command gives up with. Each text is a whole message for the person at the terminal.
#pragma once

#include <stdexcept>

namespace desktop {

class Error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Ctrl-C, or a request to terminate.
class Interrupted : public Error {
 public:
  Interrupted() : Error("interrupted") {}
};

}  // namespace desktop
