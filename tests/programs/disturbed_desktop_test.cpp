// The commands of corvane-desktop with calls to the system that go wrong: files, connections,
// memory, an end at any write. What failed is said, no file is half, nothing is twice, and the same
// command finishes the work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/programs/disturbed_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;

struct DesktopCommand {
  std::string name;
  std::vector<std::string> arguments;  // "%" stands for the directory of the desk
};
void PrintTo(const DesktopCommand& command, std::ostream* stream) {
  *stream << command.name;
}

std::vector<DesktopCommand> DesktopCommands() {
  const std::string newcomers = SourcePath("samples/old-phone.vcf");
  return {
      {"Pull", {"pull", "contacts", "-o", "%/out.vcf"}},
      {"PullMessages", {"pull", "messages", "-o", "%/out.xml"}},
      {"Push", {"push", newcomers}},
      {"PushCalendar", {"push", "--zone", "UTC", SourcePath("samples/tasks.ics")}},
      {"Sync", {"sync", "--zone", "UTC", "%/desk"}},
      {"FirstSync", {"sync", "--zone", "UTC", "%/new"}},
  };
}

class DisturbedDesktop : public DisturbedTest,
                         public ::testing::WithParamInterface<DesktopCommand> {
 protected:
  // A desk in step with its handheld, and then an edit, a removal and a new person on the desk.
  void SetUp() override {
    fs::create_directory(work_);
    StartAgent(MakeFilledHandheld(), {"--stay"});
    const Ended synced = OnDesk({"sync", "--zone", "UTC", "%/desk"});
    ASSERT_EQ(synced.code, 0) << ::testing::PrintToString(synced);
    StopAgent(SIGTERM);
    const fs::path people = work_ + "/desk/contacts";
    std::vector<fs::path> cards;
    for (const auto& entry : fs::directory_iterator(people)) cards.push_back(entry.path());
    std::sort(cards.begin(), cards.end());
    ASSERT_GT(cards.size(), 3u);
    const std::string card = directory_.Read(cards[0]);
    directory_.Write(cards[0],
                     card.substr(0, card.rfind("END:VCARD")) + "TITLE:Edited\r\nEND:VCARD\r\n");
    fs::remove(cards[1]);
    directory_.Write(people / "new.vcf",
                     "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:new\r\nN:New;Nell;;;\r\nFN:Nell New\r\n"
                     "END:VCARD\r\n");
    fs::rename(work_, Path("pristine-desk"));
    fs::rename(Path("handheld"), Path("pristine-handheld"));
  }

  void Prepare() override {
    if (serving_) StopAgent(SIGTERM);
    fs::remove_all(work_);
    fs::remove_all(Path("handheld"));
    fs::copy(Path("pristine-desk"), work_, fs::copy_options::recursive);
    fs::copy(Path("pristine-handheld"), Path("handheld"), fs::copy_options::recursive);
    StartAgent(Path("handheld"), {"--stay"});
    serving_ = true;
  }
  Ended OnDesk(const Arguments& arguments, ProcessOptions options) const {
    Arguments complete{"--to", "127.0.0.1:" + std::to_string(port())};
    for (const std::string& argument : arguments) {
      complete.push_back(argument.starts_with('%') ? work_ + argument.substr(1) : argument);
    }
    options.environment.emplace_back("XDG_STATE_HOME", work_ + "/state");
    return Run("corvane-desktop", complete, options);
  }
  Ended OnDesk(const Arguments& arguments) const { return OnDesk(arguments, Options()); }
  Ended RunCommand(const ProcessOptions& options) const override {
    return OnDesk(GetParam().arguments, options);
  }

  // What is on the handheld, and in the files of the desk but for what the program remembers and
  // what a pull that was cut off has got. Names that it makes up are all the same name.
  std::map<std::string, std::string> ContentsNow() const {
    std::map<std::string, std::string> contents;
    for (const char* const kind : {"contacts", "calendar", "tasks", "messages", "calls"}) {
      const Ended pulled = OnDesk({"pull", kind, "--format", "json", "--zone", "UTC"});
      EXPECT_EQ(pulled.code, 0) << ::testing::PrintToString(pulled);
      contents[kind] = WithoutOids(pulled.out);
    }
    const std::regex madeUp("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}");
    std::set<std::pair<std::string, std::string>> files;
    for (const auto& entry : fs::recursive_directory_iterator(work_)) {
      const std::string name = entry.path().lexically_relative(work_);
      const bool left = name.find(".corvane") != std::string::npos || name.starts_with("state") ||
                        name.ends_with(".partial") || !entry.is_regular_file();
      if (left) continue;
      files.emplace(std::regex_replace(name, madeUp, "UID"),
                    std::regex_replace(directory_.Read(entry.path()), madeUp, "UID"));
    }
    for (const auto& [name, content] : files) contents[name] += content;
    return contents;
  }
  void KeepWhole() override { whole_ = ContentsNow(); }

  void ExpectToldAndFinished(const Ended& ended, const Fault& fault) override {
    if (ended.code == doneCode_) {
      SCOPED_TRACE("it went on as if nothing had been");
      ExpectSame(ContentsNow(), whole_);
    } else if (!EndedAtOnce(ended, fault)) {
      EXPECT_THAT(ended.code, AnyOf(1, 3)) << ::testing::PrintToString(ended);
      EXPECT_FALSE(ended.err.empty()) << ::testing::PrintToString(ended);
    }
    const Ended again = RunCommand(Options());
    EXPECT_EQ(again.code, doneCode_) << ::testing::PrintToString(again);
    SCOPED_TRACE("the same once more: " + ::testing::PrintToString(again));
    ExpectSame(ContentsNow(), whole_);
  }

  std::map<std::string, std::string> whole_;
  bool serving_ = false;
};

TEST_P(DisturbedDesktop, SaysSoAndIsFinishedByTheNext) {
  Disturb(GetParam().name, {{"writes", "kill"},
                            {"writes", "half"},
                            {"files", "fail", EIO},
                            {"room", "fail-on", ENOSPC},
                            {"sockets", "kill"},
                            {"sockets", "fail", ECONNRESET}});
}

INSTANTIATE_TEST_SUITE_P(Commands, DisturbedDesktop, ::testing::ValuesIn(DesktopCommands()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace corvane::testing
