// A value on the command line that makes no sense: the program's exit code is 2.
#pragma once

#include <stdexcept>

namespace tool {

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tool
