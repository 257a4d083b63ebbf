// How the virtual handheld reports to people what is wrong with its directory.
#pragma once

#include <stdexcept>

namespace ce::host {

// What went wrong with a handheld's directory, worded for the person who named it.
class HandheldError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Another program has the handheld; the message names it.
class HandheldInUse : public HandheldError {
 public:
  using HandheldError::HandheldError;
};

}  // namespace ce::host
