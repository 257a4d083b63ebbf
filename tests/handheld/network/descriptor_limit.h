// A limit on the descriptors of the process for as long as the object lives.
#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace corvane::testing {

class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t limit) {
    ::getrlimit(RLIMIT_NOFILE, &former_);
    const rlimit lower{limit, former_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &lower);
  }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &former_); }

  // The limit at which no further descriptor can be had.
  static rlim_t NoMore() {
    const int next = ::dup(STDERR_FILENO);
    ::close(next);
    return static_cast<rlim_t>(next);
  }

 private:
  rlimit former_{};
};

}  // namespace corvane::testing
