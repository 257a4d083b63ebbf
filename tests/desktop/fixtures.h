// What the desktop's tests share: a scripted agent on a real socket, a console, records.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/xml_records.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/words.h"

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

using corvane::testing::TemporaryDirectory;
// What is in it, sorted.
std::vector<std::string> Names(const TemporaryDirectory& directory);

// The place of the person's own settings, as long as this object is there.
class ConfigHome {
 public:
  explicit ConfigHome(const std::string& directory);
  ~ConfigHome();
  ConfigHome(const ConfigHome&) = delete;
  ConfigHome& operator=(const ConfigHome&) = delete;

 private:
  std::optional<std::string> before_;
};

struct TestConsole {
  std::ostringstream out;
  std::ostringstream err;
  std::istringstream in;
  Console console{out, err, in};
};

using corvane::testing::Word;
// A count and the bytes.
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

// A command with a directory, a console, and what an agent saw of it.
class CommandTest : public ::testing::Test {
 protected:
  // Notes one request, and answers with the bytes.
  FakeAgent::Script Answer(const std::string& bytes) {
    return [this, bytes](Peer& peer) {
      seen_.push_back(ReadRequest(peer.ReceiveCounted()));
      peer.Send(bytes);
    };
  }
  // Runs it on a connection to an agent that answers one request with each.
  template <typename Command>
  int RunAgainst(const std::vector<std::string>& answers, const Command& command) {
    std::vector<FakeAgent::Script> scripts;
    for (const std::string& bytes : answers) scripts.push_back(Answer(bytes));
    FakeAgent agent(std::move(scripts));
    return command(agent.options());
  }
  std::string out() const { return console_.out.str(); }
  std::string err() const { return console_.err.str(); }

  TemporaryDirectory directory_;
  TestConsole console_;
  std::vector<SeenRequest> seen_;
};

inline calendar::Zone ZoneNamed(std::string_view name) {
  return calendar::Zone::Find(name).value();
}

// The first record under a root.
inline XmlElement ElementOf(const std::string& record) {
  return ParseRecords("<root>" + record + "</root>").at(0).element;
}

inline std::chrono::local_days Day(int year, int month, int day) {
  return std::chrono::local_days{std::chrono::year{year} / month / day};
}

inline std::chrono::local_seconds At(std::chrono::local_days day, int hour, int minute = 0,
                                     int second = 0) {
  return day + std::chrono::hours{hour} + std::chrono::minutes{minute} +
         std::chrono::seconds{second};
}

}  // namespace desktop::testing
