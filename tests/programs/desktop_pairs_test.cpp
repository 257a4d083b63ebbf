// corvane-desktop sync and restore, told by the name of a pair what they are about; and all pairs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class DesktopPairs : public ToolTest {
 protected:
  // A pair of a folder of its name with the agent that has been started last.
  void MakePair(const std::string& name, const Arguments& more = {}) {
    Arguments arguments{"pair", name, "--folder", Path(name), "--zone", "UTC"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Ended made = Desktop(arguments);
    ASSERT_EQ(made.code, 0) << made.err;
  }
  // One with a handheld that is switched off.
  void MakeLostPair(const std::string& name) {
    std::uint16_t port = 0;
    {
      const ListeningSocket socket;
      port = socket.port();
    }
    const Ended made = Run("corvane-desktop", {"--to", "127.0.0.1:" + std::to_string(port), "pair",
                                               name, "--folder", Path(name), "--zone", "UTC"});
    ASSERT_EQ(made.code, 0) << made.err;
  }
  // Without an address.
  Ended Sync(const Arguments& more = {}) const {
    Arguments arguments{"sync"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run("corvane-desktop", arguments);
  }
  std::size_t FilesIn(const std::string& folder) const {
    std::error_code error;
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(Path(folder), error)) count += entry.exists();
    return count;
  }
};

TEST_F(DesktopPairs, AreSynchronisedByTheirNames) {
  StartAgent(MakeFilledHandheld());
  MakePair("work", {"--kinds", "contacts"});
  const Ended sync = Sync({"work"});
  EXPECT_EQ(sync.code, 0) << sync.err;
  EXPECT_THAT(sync.out, AllOf(StartsWith("contact "), HasSubstr("27 added")));
  EXPECT_EQ(sync.err, "");
  EXPECT_EQ(FilesIn("work/contacts"), 27u);
  EXPECT_EQ(FilesIn("work/calendar"), 0u) << "its kinds are";

  EXPECT_THAT(Sync({"work", "--kinds", "calendar"}).out, HasSubstr("added"));
  EXPECT_NE(FilesIn("work/calendar"), 0u);
  EXPECT_EQ(Sync({Path("work") + "/"}).code, 0) << "its folder is the pair as well";
}

TEST_F(DesktopPairs, TellsWhichOfAPairAndAFolderOfOneNameItTakes) {
  StartAgent(MakeFilledHandheld());
  MakePair("office");
  fs::create_directories(Path("elsewhere/office"));
  const Ended sync = Shell("cd " + Path("elsewhere") + " && corvane-desktop sync -q office");
  EXPECT_EQ(sync.code, 0);
  EXPECT_EQ(sync.err, "office is the pair with " + Path("office") +
                          "; ./office is the folder of that name\n");
  EXPECT_EQ(FilesIn("elsewhere/office"), 0u);
  const Ended folder = Shell("cd " + Path("elsewhere") + " && corvane-desktop --to 127.0.0.1:" +
                             std::to_string(port()) + " sync -q ./office --zone UTC");
  EXPECT_EQ(folder.err, "");
  EXPECT_EQ(FilesIn("elsewhere/office/contacts"), 27u);
}

TEST_F(DesktopPairs, AllTakeTheirTurnWhateverBecomesOfTheOthers) {
  StartAgent(MakeFilledHandheld());
  MakePair("b-work");
  MakeLostPair("a-lost");
  const Ended dry = Sync({"--dry-run", "--kinds", "contacts"});
  const Ended sync = Sync({"--kinds", "contacts"});
  EXPECT_EQ(dry.out, sync.out);
  EXPECT_EQ(sync.code, 3);
  EXPECT_THAT(sync.out, AllOf(StartsWith("a-lost: 127.0.0.1:"), HasSubstr("\nb-work: 127.0.0.1:"),
                              HasSubstr("27 added")));
  EXPECT_THAT(sync.err, HasSubstr("nobody listens"));
  EXPECT_EQ(FilesIn("b-work/contacts"), 27u);

  const Ended quiet = Sync({"-q"});
  EXPECT_EQ(quiet.code, 3);
  EXPECT_EQ(quiet.out, "");
  EXPECT_THAT(quiet.err, AllOf(StartsWith("a-lost: "), Not(HasSubstr("b-work"))));

  const Ended json = Sync({"--json"});
  EXPECT_EQ(json.code, 3);
  EXPECT_THAT(json.out, AllOf(StartsWith("{\"pair\":\"a-lost\","),
                              HasSubstr("}\n{\"pair\":\"b-work\","), HasSubstr("\"summary\"")));
}

TEST_F(DesktopPairs, HaveOneStatusWhenAllEndAlike) {
  EXPECT_EQ(Sync().code, 2) << "there is none";
  StartAgent(MakeFilledHandheld());
  MakePair("one");
  MakePair("two");
  EXPECT_EQ(Sync({"-q"}).code, 0);
  EXPECT_EQ(Desktop({"sync"}).code, 2) << "one address is not that of all";
  StopAgent(SIGTERM);
  EXPECT_EQ(Sync().code, 1);
}

TEST_F(DesktopPairs, AreRestoredByTheirNames) {
  StartAgent(MakeFilledHandheld());
  MakePair("work", {"--kinds", "contacts"});
  ASSERT_EQ(Sync({"work"}).code, 0);
  EXPECT_THAT(Run("corvane-desktop", {"restore", "work"}).out,
              HasSubstr("before a sync: 27 added"));
  const Ended restored = Run("corvane-desktop", {"restore", "work", "latest"});
  EXPECT_EQ(restored.code, 0) << restored.err;
  EXPECT_EQ(FilesIn("work/contacts"), 0u);
}

}  // namespace
}  // namespace corvane::testing
