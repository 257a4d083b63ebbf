// The three programs, started as a person would start them, in a directory of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temporary_directory.h"
#include "tests/support/wire/process.h"
#include "tests/support/wire/shim.h"

namespace corvane::testing {

// A program that has ended.
struct Ended {
  int code = 0;  // or -signal
  std::string out, err;
};
void PrintTo(const Ended& ended, std::ostream* stream);

// A socket on a free port of 127.0.0.1.
class ListeningSocket {
 public:
  ListeningSocket();
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  int fd() const { return fd_; }
  std::uint16_t port() const { return port_; }

 private:
  int fd_;
  std::uint16_t port_ = 0;
};

// One line, its end included, and nothing more.
bool IsOneLine(std::string_view text);
// The lines of a listing as JSON without the identifiers of the contacts.
std::string WithoutOids(const std::string& json);
// Without the fields that a contact has on the handheld only, since the wire has no place for them.
std::string AsCarried(const std::string& json);

class ToolTest : public ::testing::Test {
 protected:
  using Arguments = std::vector<std::string>;

  // Runs one of the programs to its end.
  Ended Run(const std::string& program, const Arguments& arguments) const {
    return Run(program, arguments, Options());
  }
  Ended Run(const std::string& program, const Arguments& arguments,
            const ProcessOptions& options) const;
  // Runs it in a shell that finds the programs by their names.
  Ended Shell(const std::string& command) const;
  Ended Device(const Arguments& arguments) const { return Run("corvane-device", arguments); }
  // Speaks to the agent that has been started last.
  Ended Desktop(const Arguments& arguments) const;

  // A handheld made by corvane-device; its directory.
  std::string MakeHandheld(const std::string& name = "handheld",
                           const std::string& language = "en-US") const;
  // With people, a calendar, messages and calls.
  std::string MakeFilledHandheld() const;
  std::string Contacts(const std::string& handheld) const;  // as JSON
  // The path of a new file in the test's directory.
  std::string File(const std::string& name, std::string_view content) const;
  std::string Path(const std::string& name) const { return directory_ / name; }
  static std::string Sample(const std::string& name);

  // Starts the agent on a free port and waits until it listens.
  void StartAgent(const std::string& handheld, const Arguments& more = {}, int listener = -1,
                  const std::string& listen = "127.0.0.1:0");
  Process& agent() { return *agent_; }
  const std::string& greeting() const { return greeting_; }  // what it has printed
  std::uint16_t port() const { return port_; }
  Ended EndAgent();  // waits for its end
  void StopAgent(int signal);

  // How programs are started: with a home and settings of the test's own.
  ProcessOptions Options(int listener = -1) const;
  // The same, with the n-th such call for files below a directory going wrong; none for 0. What
  // happened is in the file "told".
  ProcessOptions Disturbed(const Fault& fault, std::uint64_t n, const std::string& below) const;

  const TemporaryDirectory directory_;

 private:
  std::optional<Process> agent_;
  std::string greeting_;
  std::uint16_t port_ = 0;
};

}  // namespace corvane::testing
