// corvane-desktop sync --watch: what is edited on either side comes to the other by itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "tests/programs/tool_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class DesktopWatch : public ToolTest {
 protected:
  void SetUp() override { StartAgent(MakeHandheld()); }
  void MakePair(const std::string& name, const std::string& port) {
    const Ended made = Run("corvane-desktop", {"--to", "127.0.0.1:" + port, "pair", name,
                                               "--folder", Path(name), "--zone", "UTC"});
    ASSERT_EQ(made.code, 0) << made.err;
  }
  std::string Port() const { return std::to_string(port()); }
  void Watch(const Arguments& more) {
    Arguments arguments{"sync", "--watch"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    watch_.emplace(ProgramPath("corvane-desktop"), arguments, Options());
  }
  int EndWatch() {
    watch_->Kill(SIGTERM);
    return watch_->Wait();
  }
  void PutOnDesk(const std::string& name) const {
    const std::string path = Path("work/contacts/" + name + ".vcf");
    std::ofstream(path) << "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + name + "\r\nN:Brook;" + name +
                               ";;;\r\nFN:" + name + " Brook\r\nEND:VCARD\r\n";
  }
  void PutOnHandheld(const std::string& name) const {
    const std::string record =
        "<root><CONTACT><FIRST_NAME>" + name + "</FIRST_NAME></CONTACT></root>";
    ASSERT_EQ(Desktop({"push", File("new.xml", record)}).code, 0);
  }
  bool IsOnHandheld(const std::string& name) const {
    return Desktop({"pull", "contacts"}).out.find(name) != std::string::npos;
  }

  std::optional<Process> watch_;
};

TEST_F(DesktopWatch, BringsAFileThatHasChangedToTheHandheldAtOnce) {
  MakePair("work", Port());
  Watch({"work", "--every", "86400"});
  EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 0, handheld 0"));
  for (const std::string name : {"Ada", "Ben"}) {
    PutOnDesk(name);
    EXPECT_EQ(watch_->ReadLine(), "contact Brook, " + name + ": add to the handheld");
    EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 0, handheld 1"));
    EXPECT_TRUE(IsOnHandheld(name));
  }
  fs::rename(Path("work/contacts/Ada.vcf"), Path("elsewhere"));
  EXPECT_EQ(watch_->ReadLine(), "contact Brook, Ada: delete from the handheld");
  EXPECT_THAT(watch_->ReadLine(), HasSubstr("1 deleted"));
  EXPECT_EQ(EndWatch(), 0);
  EXPECT_EQ(watch_->ReadErrors(), "");
}

TEST_F(DesktopWatch, FetchesWhatHasChangedOnTheHandheldAfterItsTime) {
  MakePair("work", Port());
  Watch({"work", "--every", "1"});
  EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 0, handheld 0"));
  for (const std::string name : {"Ada", "Ben"}) {
    PutOnHandheld(name);
    EXPECT_EQ(watch_->ReadLine(), "contact " + name + ": add to the desk");
    EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 1, handheld 0"));
  }
  EXPECT_EQ(EndWatch(), 0);
}

TEST_F(DesktopWatch, SaysOnceThatAHandheldIsNotThereAndGoesOnWithTheOthers) {
  std::string lost;
  {
    const ListeningSocket socket;
    lost = std::to_string(socket.port());
  }
  MakePair("lost", lost);
  MakePair("work", Port());
  Watch({"--every", "1"});
  EXPECT_THAT(watch_->ReadLine(), StartsWith("lost: 127.0.0.1:" + lost));
  EXPECT_THAT(watch_->ReadLine(), StartsWith("work: 127.0.0.1:" + Port()));
  EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 0, handheld 0"));
  // The lost one has its turn before each of these.
  for (const std::string name : {"Ada", "Ben", "Cleo"}) {
    PutOnHandheld(name);
    EXPECT_THAT(watch_->ReadLine(), StartsWith("work: "));
    EXPECT_EQ(watch_->ReadLine(), "contact " + name + ": add to the desk");
    EXPECT_THAT(watch_->ReadLine(), HasSubstr("desk 1, handheld 0"));
  }
  EXPECT_EQ(EndWatch(), 3);
  EXPECT_EQ(watch_->ReadErrors(), "corvane-desktop: nobody listens at 127.0.0.1:" + lost +
                                      ": is corvane running there?\n");
}

TEST_F(DesktopWatch, TellsProgramsALineARun) {
  MakePair("work", Port());
  Watch({"work", "--json", "--every", "86400"});
  EXPECT_THAT(watch_->ReadLine(),
              AllOf(StartsWith("{\"pair\":\"work\""), HasSubstr("\"summary\":{\"added\":0")));
  StopAgent(SIGKILL);
  PutOnDesk("Ada");
  EXPECT_THAT(watch_->ReadLine(), StartsWith("{\"pair\":\"work\",\"problem\":\"nobody listens at"));
  EXPECT_EQ(EndWatch(), 3) << "something had been done";
}

}  // namespace
}  // namespace corvane::testing
