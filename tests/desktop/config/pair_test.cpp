#include "desktop/config/pair.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

Pair Work() {
  Pair pair;
  pair.name = "work";
  pair.address = {"192.168.1.5", "2005"};
  pair.folder = "/home/eva/handheld";
  pair.zone = "Europe/Berlin";
  return pair;
}

Pair Home() {
  Pair pair = Work();
  pair.name = "home";
  pair.address = {"::1", "2006"};
  pair.folder = "/home/eva/a \"b\" \\c\n";
  pair.country = "AT";
  pair.kinds = {RecordKind::kContacts, RecordKind::kCalls};
  pair.policy = "ask";
  return pair;
}

class PairTest : public ::testing::Test {
 protected:
  void Config(const std::string& text) {
    std::filesystem::create_directories(directory_ / "corvane");
    directory_.Write("corvane/config.toml", text);
  }
  std::string Config() { return directory_.Read("corvane/config.toml"); }
  static std::string Problem() {
    try {
      AllPairs();
    } catch (const Error& problem) {
      return problem.what();
    }
    return {};
  }

  TemporaryDirectory directory_;
  const ConfigHome home_{directory_.path()};
};

TEST_F(PairTest, AreNoneWithoutAFile) {
  EXPECT_TRUE(AllPairs().empty());
  EXPECT_EQ(FindPair("work"), std::nullopt);
  Config("");
  EXPECT_TRUE(AllPairs().empty());
}

TEST_F(PairTest, AreReadBackAsWritten) {
  WritePair(Work());
  WritePair(Home());
  EXPECT_EQ(AllPairs(), (std::vector<Pair>{Home(), Work()}));
  EXPECT_EQ(FindPair("work"), Work());
  EXPECT_EQ(FindPair("Work"), std::nullopt);
  EXPECT_EQ(FindPairAt({"::1", "2006"}), Home());
  EXPECT_EQ(FindPairAt({"::1", "2005"}), std::nullopt);
}

TEST_F(PairTest, AreTablesThatPeopleCanRead) {
  Pair pair = Work();
  pair.kinds = {RecordKind::kContacts, RecordKind::kAppointments};
  pair.policy = "desk";
  WritePair(pair);
  EXPECT_EQ(Config(),
            "[pair.work]\naddress = \"192.168.1.5:2005\"\nfolder = \"/home/eva/handheld\"\n"
            "zone = \"Europe/Berlin\"\nkinds = [\"contacts\", \"calendar\"]\npolicy = \"desk\"\n");
}

TEST_F(PairTest, LeaveTheRestOfTheFileAsItIs) {
  const std::string first = "# mine\ncolour = \"green\"  # other programs' own\n\n";
  const std::string last =
      "\n# the other one\n[pair.home]\nfolder='/h'\naddress=\"h\"\n"
      "zone = \"UTC\"\n\n[other]\nx = [\n 1 ]\n";
  const std::string old = "[pair.work]\naddress = \"a\"\nfolder = \"/a\"\n# old\nzone = \"UTC\"\n";
  Config(first + old + last);
  WritePair(Work());
  EXPECT_EQ(Config(), first +
                          "[pair.work]\naddress = \"192.168.1.5:2005\"\n"
                          "folder = \"/home/eva/handheld\"\nzone = \"Europe/Berlin\"\n" +
                          last);
  EXPECT_EQ(FindPair("work"), Work());
  EXPECT_EQ(FindPair("home")->zone, "UTC");
}

TEST_F(PairTest, ChangeNothingThatIsWrittenInAnotherWay) {
  const std::string text =
      "pair.work = { address = \"a\", folder = \"/a\", zone = \"UTC\" }\n[other]\n";
  Config(text);
  EXPECT_THROW(WritePair(Work()), Error);
  EXPECT_EQ(Config(), text);
}

TEST_F(PairTest, SayTheLineThatCannotBeUnderstood) {
  const std::string begin = "[pair.work]\naddress = \"h\"\nfolder = \"/f\"\nzone = \"UTC\"\n";
  struct {
    std::string text;
    const char* problem;
  } const cases[] = {
      {"[pair.work\n", "config.toml:1: "},
      {begin + "color = \"red\"\n", "config.toml:5: a pair has no color"},
      {begin + "policy = \"mine\"\n", "config.toml:5: mine is no policy"},
      {begin + "country = \"ZZ\"\n", "config.toml:5: ZZ is no country"},
      {begin + "kinds = [\"notes\"]\n", "config.toml:5: notes is none of contacts"},
      {begin + "kinds = \"contacts\"\n", "config.toml:5: kinds is no list"},
      {"[pair.work]\naddress = \"h:x\"\n", "config.toml:2: h:x is no HOST[:PORT]"},
      {"[pair.work]\nfolder = \"f\"\n", "config.toml:2: f is no path from the root"},
      {"[pair.work]\nzone = \"Mars\"\n", "config.toml:2: Mars is no time zone"},
      {"[pair.work]\nzone = 5\n", "config.toml:2: zone is no text"},
      {"[pair.work]\nfolder = \"/f\"\nzone = \"UTC\"\naddress = \"\"\n", "config.toml:4: "},
      {"[pair.work]\naddress = \"h\"\nzone = \"UTC\"\n", "config.toml:1: pair.work has no folder"},
      {"[pair.work]\nfolder = \"/f\"\nzone = \"UTC\"\n", "config.toml:1: pair.work has no address"},
      {"pair = 5\n", "config.toml:1: pair is no table"},
      {"[pair.\"a b\"]\n", "config.toml:1: \"a b\" is no name of a pair"},
  };
  for (const auto& each : cases) {
    Config(each.text);
    EXPECT_THAT(Problem(), HasSubstr(each.problem)) << each.text;
    EXPECT_THROW(WritePair(Work()), Error) << each.text;
    EXPECT_EQ(Config(), each.text);
  }
}

TEST_F(PairTest, StandBelowHomeOtherwise) {
  unsetenv("XDG_CONFIG_HOME");
  std::optional<std::string> home;
  if (const char* const value = std::getenv("HOME")) home = value;
  setenv("HOME", "/home/eva", 1);
  EXPECT_EQ(ConfigPath(), "/home/eva/.config/corvane/config.toml");
  unsetenv("HOME");
  EXPECT_EQ(ConfigPath(), std::nullopt);
  EXPECT_TRUE(AllPairs().empty());
  EXPECT_THROW(WritePair(Work()), Error);
  if (home) setenv("HOME", home->c_str(), 1);
}

}  // namespace
}  // namespace desktop::testing
