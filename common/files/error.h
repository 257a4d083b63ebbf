// What a tool gives up with: a whole message for the person at the terminal.
#pragma once

#include <stdexcept>

namespace files {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace files
