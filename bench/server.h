// A program that serves a port, and what it uses.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/wire/process.h"

namespace bench {

class Server {
 public:
  // Returns once it says where it listens; throws std::runtime_error when it does not.
  Server(const std::string& program, const std::vector<std::string>& arguments);

  std::uint16_t port() const { return port_; }
  double startSeconds() const { return startSeconds_; }
  double CpuSeconds() const;  // of all its threads
  long PeakKiB() const { return Memory("VmHWM:"); }
  long ResidentKiB() const { return Memory("VmRSS:"); }
  // Asks it to end, and waits until it has.
  void Stop();

 private:
  long Memory(const std::string& field) const;

  const double begin_;
  corvane::testing::Process process_;
  double startSeconds_ = 0;
  std::uint16_t port_ = 0;
};

Server StartAgent(const std::filesystem::path& handheld);
// `words` as bench/floor/main.cpp has them.
Server StartFloor(const std::vector<std::string>& words);

// Of the clock that all measurements go by.
double Now();

}  // namespace bench
