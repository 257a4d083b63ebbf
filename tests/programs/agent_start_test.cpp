// The agent's start: one line when it listens, one line when it cannot.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class AgentStart : public ToolTest {
 protected:
  void ExpectRefusal(const Ended& ended, const std::string& says) {
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_TRUE(IsOneLine(ended.err)) << ended.err;
    EXPECT_THAT(ended.err, ::testing::StartsWith("corvane: "));
    EXPECT_THAT(ended.err, HasSubstr(says));
  }
  Ended Start(const std::string& handheld, const std::string& listen = "127.0.0.1:0") {
    return Run("corvane", {"--handheld", handheld, "--listen", listen});
  }
  // Replaces the part of the registry file that is there once.
  void EditRegistry(const std::string& handheld, const std::string& from, const std::string& to) {
    const std::string name = std::filesystem::path(handheld).filename() / "registry.reg";
    std::string text = directory_.Read(name);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << text;
    directory_.Write(name, text.replace(at, from.size(), to));
  }
};

TEST_F(AgentStart, PrintsOneLineWithItsAddress) {
  StartAgent(MakeHandheld());
  EXPECT_THAT(greeting(), MatchesRegex("corvane: listening on 127\\.0\\.0\\.1:[0-9]+"));
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  const Ended ended = EndAgent();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out, "") << "nothing after its one line";
  EXPECT_EQ(ended.err, "");
}

TEST_F(AgentStart, RefusesADirectoryThatDoesNotExist) {
  ExpectRefusal(Start(Path("nowhere")), Path("nowhere"));
}

TEST_F(AgentStart, RefusesADirectoryThatIsNoHandheld) {
  std::filesystem::create_directory(Path("plain"));
  ExpectRefusal(Start(Path("plain")), Path("plain") + " is not a handheld");
  EXPECT_TRUE(std::filesystem::is_empty(Path("plain"))) << "leaves nothing in it";
}

TEST_F(AgentStart, RefusesAFileInPlaceOfADirectory) {
  ExpectRefusal(Start(File("note", "text")), Path("note"));
}

TEST_F(AgentStart, NamesTheProgramThatUsesTheHandheld) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  const std::string user = "in use by corvane (process " + std::to_string(agent().pid()) + ")";
  ExpectRefusal(Start(handheld), user);
  const Ended device = Device({"set", handheld, "owner", "Ada"});
  EXPECT_EQ(device.code, 1);
  EXPECT_EQ(device.out, "");
  EXPECT_THAT(device.err, HasSubstr(user + ": change it with corvane-desktop, or end that"));
  EXPECT_EQ(Desktop({"time", "get"}).code, 0) << "the first one goes on serving";
}

TEST_F(AgentStart, TakesAHandheldWhoseUserWasKilled) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  StopAgent(SIGKILL);
  StartAgent(handheld);
  EXPECT_EQ(Desktop({"time", "get"}).code, 0);
}

TEST_F(AgentStart, NamesTheDamagedLineOfTheRegistry) {
  const std::string handheld = MakeHandheld();
  EditRegistry(handheld, "Windows Registry Editor Version 5.00",
               "Windows Registry Editor Version 5.00\n\nfrobnicate");
  ExpectRefusal(Start(handheld), "registry.reg is damaged in line 3: ");
}

TEST_F(AgentStart, RefusesAStoreThatIsNone) {
  const std::string handheld = MakeHandheld();
  directory_.Write("handheld/store.db", "This is a letter, not a store.");
  ExpectRefusal(Start(handheld), handheld + "/store.db: the store is damaged");
  EXPECT_EQ(directory_.Read("handheld/store.db"), "This is a letter, not a store.");
}

TEST_F(AgentStart, RefusesAStoreThatHasBeenLost) {
  const std::string handheld = MakeHandheld();
  ASSERT_EQ(Device({"import", handheld, Sample("people.vcf")}).code, 0);
  std::filesystem::remove(handheld + "/store.db");
  ExpectRefusal(Start(handheld), handheld + "/store.db");
  EXPECT_FALSE(std::filesystem::exists(handheld + "/store.db")) << "no empty one in its place";
}

TEST_F(AgentStart, RefusesAHandheldOfANewerFormat) {
  const std::string handheld = MakeHandheld();
  EditRegistry(handheld, "\"FormatVersion\"=dword:00000001", "\"FormatVersion\"=dword:00000063");
  ExpectRefusal(Start(handheld), "has format 99; this program knows formats up to 1");
}

TEST_F(AgentStart, RefusesAPortThatIsInUse) {
  const ListeningSocket other;
  const std::string address = "127.0.0.1:" + std::to_string(other.port());
  ExpectRefusal(Start(MakeHandheld(), address), "cannot listen on " + address);
}

TEST_F(AgentStart, RefusesAnAddressThatThisComputerHasNot) {
  ExpectRefusal(Start(MakeHandheld(), "192.0.2.1:0"), "cannot listen on 192.0.2.1");
}

TEST_F(AgentStart, ListensOnTheAddressOfAName) {
  StartAgent(MakeHandheld(), {}, -1, "localhost:0");
  EXPECT_EQ(greeting(), "corvane: listening on 127.0.0.1:" + std::to_string(port()));
}

TEST_F(AgentStart, TakesAListeningSocketThatIsHandedOver) {
  const ListeningSocket handedOver;
  StartAgent(MakeHandheld(), {}, handedOver.fd());
  EXPECT_EQ(greeting(), "corvane: listening on 127.0.0.1:" + std::to_string(handedOver.port()));
  EXPECT_EQ(Desktop({"time", "get"}).code, 0);
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
}

}  // namespace
}  // namespace corvane::testing
