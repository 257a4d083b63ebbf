// A failed status of the handheld's calls, as an exception that names what was done.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace tool {

class StatusError : public std::runtime_error {
 public:
  StatusError(std::string_view what, ce::HRESULT status);
  ce::HRESULT status() const { return status_; }

 private:
  ce::HRESULT status_;
};

// "the disk is full", "a text is too long" …; the code for what has no words.
std::string StatusText(ce::HRESULT status);

// Throws StatusError when `status` is a failure.
inline void Check(ce::HRESULT status, std::string_view what) {
  if (ce::Failed(status)) throw StatusError(what, status);
}

}  // namespace tool
