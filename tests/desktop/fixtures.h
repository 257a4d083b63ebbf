// What the desktop's tests share: a scripted agent on a real socket, a directory, a console.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop::testing {

// The agent's end of one connection. Nothing here throws: a test sees what arrived.
class Peer {
 public:
  explicit Peer(int socket) : socket_(socket) {}

  // Up to count bytes; fewer when the desktop has closed its end.
  std::string Receive(std::size_t count);
  // A length and as many bytes, the length left off.
  std::string ReceiveCounted();
  // Whatever one read gives.
  std::string ReceiveOnce();
  void Send(std::string_view bytes);
  void Close();
  // Closes so that the other end sees a reset.
  void Reset();
  // Returns when the desktop has closed its end.
  void AwaitEnd();
  [[nodiscard]] int socket() const { return socket_; }

 private:
  int socket_;
};

// Takes one connection a script, one after the other, on a free port of 127.0.0.1, and refuses any
// further one.
class FakeAgent {
 public:
  using Script = std::function<void(Peer&)>;
  explicit FakeAgent(std::vector<Script> scripts);
  ~FakeAgent();
  FakeAgent(const FakeAgent&) = delete;
  FakeAgent& operator=(const FakeAgent&) = delete;

  [[nodiscard]] ConnectionOptions options() const;
  // Waits for the end of the last script; call before looking at what scripts have noted.
  void Join();

 private:
  void Serve(const std::vector<Script>& scripts);

  std::string port_;
  int listener_ = -1;
  std::size_t connections_ = 0;
  std::thread thread_;
};

// A target where nobody listens.
ConnectionOptions NobodyThere();

class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const {
    return path_ / name;
  }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::vector<std::string> names() const;  // sorted

 private:
  std::filesystem::path path_;
};

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, std::string_view bytes);

struct TestConsole {
  std::ostringstream out;
  std::ostringstream err;
  std::istringstream in;
  Console console{out, err, in};
};

// A 4-byte little-endian word; a count and the bytes.
std::string Word(std::uint32_t value);
std::string Counted(std::string_view bytes);
// A document as the agent writes it, with these records under its root.
std::string Document(std::string_view records);
// A reply record.
std::string ReplyRecord(std::uint32_t status, std::string_view output = {});
// The function name and the input of a request record's body; the stream flag must be the last.
struct SeenRequest {
  std::string function;
  std::string input;
  std::uint32_t streamed = 0;
};
SeenRequest ReadRequest(std::string_view body);

}  // namespace desktop::testing
