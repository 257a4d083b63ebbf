// The real agent, started on a handheld of its own and spoken to in bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "handheld/directory/handheld.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/wire/process.h"
#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace corvane::testing {

// A directory with a handheld.
class HandheldDirectory {
 public:
  explicit HandheldDirectory(const ce::host::HandheldSettings& settings = {});
  const std::filesystem::path& path() const { return directory_.path(); }
  // A DWORD value of the agent's registry key; only while no program uses the handheld.
  void SetAgentValue(const char16_t* name, ce::DWORD value);

 private:
  const TemporaryDirectory directory_;
};

class WireTest : public ::testing::Test {
 protected:
  // Starts the agent on first use.
  std::uint16_t port();
  RawConnection Connect() { return RawConnection(port()); }
  // Ends an agent that has been asked to quit, if it has not seen that by itself.
  std::optional<RawConnection> Wake();
  void StopAgent(int signal);
  // From any thread, while nobody stops or waits for the agent.
  void SignalAgent(int signal) { agent_->Kill(signal); }
  int WaitForAgent();  // its exit code
  pid_t agentProcess() const { return agent_->pid(); }
  HandheldDirectory& handheld();
  // Settings of the handheld; before its first use.
  ce::host::HandheldSettings settings_;
  // How the agent is started; before its first use.
  ProcessOptions options_;

  BufferedReply CallBuffered(const Invoke& invoke);
  Download CallDownload(const std::string& function, const std::string& input);
  Download ReadDownload(RawConnection& connection);
  // Sends the chunks and the closing zero, and reads one reply for each of `records`.
  std::vector<UploadReply> Upload(const std::vector<std::string>& documents, std::size_t records);
  // Uploads contacts named Contact1, Contact2 …; their identifiers.
  std::vector<std::uint32_t> AddContacts(int count);
  // All contacts, as the documents of a full download joined.
  std::string AllContacts();
  // The agent answers: serves a request on a connection of its own.
  void ExpectServing();

 private:
  std::optional<HandheldDirectory> handheld_;
  std::optional<Process> agent_;
  std::uint16_t port_ = 0;
};

}  // namespace corvane::testing
