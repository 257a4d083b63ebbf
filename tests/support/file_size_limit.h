// A disk that is full, as far as this process can tell.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace corvane::testing {

// While it lives, no file of the process grows beyond this many bytes.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    rlimit tight = before_;
    tight.rlim_cur = bytes;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  }
  ~FileSizeLimit() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before_), 0);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*const signal_)(int);
  rlimit before_{};
};

}  // namespace corvane::testing
