#include "desktop/transfer/mapping.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

class MappingTest : public ::testing::Test {
 protected:
  std::filesystem::path path() const { return directory_ / "map.json"; }

  std::string WhyNot() const {
    try {
      const Mapping mapping(path());
    } catch (const Error& error) {
      return error.what();
    }
    return {};
  }

  TemporaryDirectory directory_;
};

TEST_F(MappingTest, IsEmptyWithoutAFile) {
  Mapping mapping(path());
  EXPECT_TRUE(mapping.items().empty());
  mapping.Save();
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(MappingTest, ReadsBackWhatItSaved) {
  {
    Mapping mapping(path());
    mapping.Put({0xFFFFFFFF, "contact", "uid-1", "", "h1"});
    mapping.Put({2, "TASK", "", "c2", "h2"});
    mapping.Save();
  }
  const Mapping mapping(path());
  ASSERT_NE(mapping.FindUid("contact", "uid-1"), nullptr);
  EXPECT_EQ(mapping.FindUid("contact", "uid-1")->oid, 0xFFFFFFFFU);
  EXPECT_EQ(mapping.FindUid("contact", "uid-1")->hash, "h1");
  ASSERT_NE(mapping.FindContent("TASK", "c2"), nullptr);
  EXPECT_EQ(mapping.FindContent("TASK", "c2")->oid, 2U);
  EXPECT_EQ(mapping.FindUid("TASK", "uid-1"), nullptr);
  EXPECT_EQ(mapping.FindContent("contact", "c2"), nullptr);
}

TEST_F(MappingTest, MakesTheDirectoryOfItsFile) {
  const auto deep = directory_ / "a/b/map.json";
  Mapping mapping(deep);
  mapping.Put({1, "contact", "u", "", "h"});
  mapping.Save();
  EXPECT_TRUE(std::filesystem::exists(deep));
}

TEST_F(MappingTest, KeepsTheKeysThatAnUpdateDoesNotName) {
  Mapping mapping(path());
  mapping.Put({1, "contact", "", "content", "h1"});
  mapping.Put({1, "contact", "uid", "", "h2"});
  ASSERT_NE(mapping.FindContent("contact", "content"), nullptr);
  EXPECT_EQ(mapping.FindContent("contact", "content")->hash, "h2");
  EXPECT_EQ(mapping.FindUid("contact", "uid")->oid, 1U);
}

TEST_F(MappingTest, HasOneItemToAUid) {
  Mapping mapping(path());
  mapping.Put({1, "contact", "uid", "", "h"});
  mapping.Put({2, "contact", "uid", "", "h"});
  EXPECT_EQ(mapping.FindUid("contact", "uid")->oid, 2U);
  EXPECT_EQ(mapping.FindOid(1), nullptr);
}

TEST_F(MappingTest, MovesAnItemToItsNewOidWithItsKeys) {
  Mapping mapping(path());
  mapping.Put({1, "contact", "uid", "content", "h"});
  mapping.Move(1, 9);
  EXPECT_EQ(mapping.FindOid(1), nullptr);
  EXPECT_EQ(mapping.FindUid("contact", "uid")->oid, 9U);
  EXPECT_EQ(mapping.FindContent("contact", "content")->oid, 9U);
  mapping.Move(77, 78);
  EXPECT_EQ(mapping.items().size(), 1U);
}

TEST_F(MappingTest, ForgetsAnItemWithItsKeys) {
  Mapping mapping(path());
  mapping.Put({1, "contact", "uid", "", "h"});
  mapping.Put({2, "TASK", "", "c", "h"});
  mapping.RemoveKind("contact");
  EXPECT_EQ(mapping.FindUid("contact", "uid"), nullptr);
  mapping.Remove(2);
  EXPECT_EQ(mapping.FindContent("TASK", "c"), nullptr);
  EXPECT_TRUE(mapping.items().empty());
}

TEST_F(MappingTest, RefusesADamagedFileAndLeavesItAsItIs) {
  const std::string good =
      R"({"version":1,"items":[{"oid":1,"kind":"contact","uid":"u","hash":"h"}]})";
  const char* const cases[] = {
      "",
      "{",
      "[]",
      "{}",
      R"({"version":1})",
      R"({"version":2,"items":[]})",
      R"({"version":1,"items":{"a":1}})",
      R"({"version":1,"items":[{"oid":0,"kind":"contact","hash":"h"}]})",
      R"({"version":1,"items":[{"oid":-1,"kind":"contact","hash":"h"}]})",
      R"({"version":1,"items":[{"oid":4294967296,"kind":"contact","hash":"h"}]})",
      R"({"version":1,"items":[{"oid":"1","kind":"contact","hash":"h"}]})",
      R"({"version":1,"items":[{"oid":1.5,"kind":"contact","hash":"h"}]})",
      R"({"version":1,"items":[{"oid":1e300,"kind":"contact","hash":"h"}]})",
      R"({"version":1.5,"items":[]})",
      R"({"version":1,"items":[{"oid":1,"kind":"contact"}]})",
      R"({"version":1,"items":[{"oid":1,"kind":"c","hash":"h"},{"oid":1,"kind":"c","hash":"h"}]})",
  };
  for (const char* bytes : cases) {
    directory_.Write(path(), bytes);
    const std::string why = WhyNot();
    EXPECT_EQ(why.find("the mapping file " + path().string() + " cannot be understood"), 0U)
        << bytes << ": " << why;
    EXPECT_EQ(directory_.Read(path()), bytes);
  }
  for (std::size_t length = 0; length < good.size(); ++length) {
    directory_.Write(path(), good.substr(0, length));
    EXPECT_NE(WhyNot(), "") << length;
  }
  directory_.Write(path(), good);
  EXPECT_EQ(WhyNot(), "");
}

TEST_F(MappingTest, IsHeldByOneAtATime) {
  const Mapping first(path());
  EXPECT_EQ(WhyNot(),
            "the mapping file " + path().string() + " is in use by another corvane-desktop");
}

TEST_F(MappingTest, IsFreeAgainAfterADamagedOneWasRefused) {
  directory_.Write(path(), "{");
  EXPECT_NE(WhyNot(), "");
  directory_.Write(path(), R"({"version":1,"items":[]})");
  EXPECT_EQ(WhyNot(), "");
}

class MappingJournalTest : public MappingTest {
 protected:
  std::filesystem::path journal() const { return directory_ / "map.json.journal"; }

  // What a process leaves that has saved its changes and ended before it saved the whole.
  void LeaveAJournal() {
    {
      Mapping mapping(path());
      mapping.Put({1, "contact", "a", "", "h1"});
      mapping.Put({2, "contact", "b", "", "h2"});
      mapping.Put({3, "contact", "c", "k", "h3"});
      mapping.Save();
      mapping.Move(1, 9);
      mapping.SaveChanges();
      mapping.Remove(2);
      mapping.Put({3, "TASK", "", "t", "h4"});
      mapping.SaveChanges();
    }
    ASSERT_TRUE(std::filesystem::exists(journal()));
  }

  void ExpectWhatTheJournalTells() {
    const Mapping mapping(path());
    EXPECT_EQ(mapping.items().size(), 2U);
    ASSERT_NE(mapping.FindUid("contact", "a"), nullptr);
    EXPECT_EQ(mapping.FindUid("contact", "a")->oid, 9U);
    EXPECT_EQ(mapping.FindUid("contact", "b"), nullptr);
    EXPECT_EQ(mapping.FindContent("contact", "k"), nullptr);
    ASSERT_NE(mapping.FindContent("TASK", "t"), nullptr);
    EXPECT_EQ(mapping.FindContent("TASK", "t")->hash, "h4");
    EXPECT_EQ(mapping.FindContent("TASK", "t")->uid, "");
    EXPECT_FALSE(std::filesystem::exists(journal()));
  }
};

TEST_F(MappingJournalTest, TakesInWhatAProcessThatEndedEarlyHasLeft) {
  LeaveAJournal();
  ExpectWhatTheJournalTells();
  ExpectWhatTheJournalTells();
}

TEST_F(MappingJournalTest, TakesInTwiceWhatTheFileHasAlready) {
  LeaveAJournal();
  const std::string lines = directory_.Read(journal());
  ExpectWhatTheJournalTells();
  directory_.Write(journal(), lines);
  ExpectWhatTheJournalTells();
}

TEST_F(MappingJournalTest, CostsTheChangesAlone) {
  Mapping mapping(path());
  mapping.Put({1, "contact", "a", "", "h"});
  mapping.SaveChanges();
  const std::string first = directory_.Read(journal());
  mapping.SaveChanges();
  EXPECT_EQ(directory_.Read(journal()), first);
  mapping.Put({2, "contact", "b", "", "h"});
  mapping.SaveChanges();
  EXPECT_EQ(directory_.Read(journal()),
            first + R"({"hash":"h","kind":"contact","oid":2,"uid":"b"})" + "\n");
  EXPECT_FALSE(std::filesystem::exists(path()));
  mapping.Save();
  EXPECT_FALSE(std::filesystem::exists(journal()));
}

TEST_F(MappingJournalTest, LeavesOutALastLineThatWasCutOff) {
  LeaveAJournal();
  const std::string file = directory_.Read(path());
  const std::string lines = directory_.Read(journal());
  for (std::size_t length = 0; length <= lines.size(); ++length) {
    directory_.Write(path(), file);
    directory_.Write(journal(), lines.substr(0, length));
    EXPECT_EQ(WhyNot(), "") << length;
    EXPECT_FALSE(std::filesystem::exists(journal()));
  }
}

TEST_F(MappingJournalTest, RefusesADamagedJournalAndLeavesBothFilesAsTheyAre) {
  const std::string head = "{\"version\":1}\n";
  const std::string item = R"({"hash":"h","kind":"contact","oid":2})";
  const std::string cases[] = {"\n",
                               "{}\n",
                               "{\"version\":2}\n",
                               item + "\n",
                               head + "\n",
                               head + item.substr(1) + "\n" + item + "\n",
                               head + R"({"gone":true,"oid":-1})" + "\n",
                               head + R"({"hash":"h","kind":"contact","oid":0})" + "\n",
                               head + R"({"hash":"h","oid":2})" + "\n"};
  const std::string file = R"({"version":1,"items":[]})";
  for (const std::string& lines : cases) {
    directory_.Write(path(), file);
    directory_.Write(journal(), lines);
    const std::string why = WhyNot();
    EXPECT_EQ(why.find("the mapping file " + journal().string() + " cannot be understood (line "),
              0U)
        << lines << ": " << why;
    EXPECT_EQ(directory_.Read(journal()), lines);
    EXPECT_EQ(directory_.Read(path()), file);
  }
}

TEST_F(MappingJournalTest, KeepsItWhenTheFileCannotBeWritten) {
  Mapping mapping(path());
  std::filesystem::create_directory(path());
  mapping.Put({1, "contact", "a", "", "h"});
  mapping.SaveChanges();
  EXPECT_THROW(mapping.Save(), Error);
  EXPECT_TRUE(std::filesystem::exists(journal()));
}

TEST_F(MappingJournalTest, IsForItsOwnerAlone) {
  const auto modeOf = [](const std::filesystem::path& of) {
    return static_cast<unsigned>(std::filesystem::status(of).permissions());
  };
  const mode_t before = umask(0);
  const std::filesystem::path map = directory_ / "state/corvane/host.json";
  {
    Mapping mapping(map);
    mapping.Put({1, "contact", "a", "", "h"});
    mapping.SaveChanges();
    EXPECT_EQ(modeOf(map.string() + ".journal"), 0600U);
    mapping.Save();
  }
  umask(before);
  EXPECT_EQ(modeOf(map), 0600U);
  EXPECT_EQ(modeOf(map.string() + ".lock"), 0600U);
  EXPECT_EQ(modeOf(map.parent_path()), 0700U);
  EXPECT_EQ(modeOf(map.parent_path().parent_path()), 0700U);

  chmod(map.c_str(), 0644);  // as one that an earlier program has left
  const Mapping again(map);
  EXPECT_EQ(modeOf(map), 0600U);
}

class MappingPathTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Keep("XDG_STATE_HOME", state_);
    Keep("HOME", home_);
  }
  void TearDown() override {
    Restore("XDG_STATE_HOME", state_);
    Restore("HOME", home_);
  }

 private:
  static void Keep(const char* name, std::optional<std::string>& value) {
    if (const char* text = std::getenv(name)) value = text;
  }
  static void Restore(const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
  }
  std::optional<std::string> state_;
  std::optional<std::string> home_;
};

TEST_F(MappingPathTest, FollowsTheStateDirectory) {
  setenv("XDG_STATE_HOME", "/state", 1);
  EXPECT_EQ(MappingPath({}, {"host", "2005"}), "/state/corvane/host_2005.json");
  EXPECT_EQ(MappingPath({}, {"fe80::1", "1"}), "/state/corvane/fe80--1_1.json");
}

TEST_F(MappingPathTest, IsBelowHomeOtherwise) {
  setenv("XDG_STATE_HOME", "relative", 1);
  setenv("HOME", "/home/ann", 1);
  EXPECT_EQ(MappingPath({}, {"h", "1"}), "/home/ann/.local/state/corvane/h_1.json");
  unsetenv("XDG_STATE_HOME");
  EXPECT_EQ(MappingPath({}, {"h", "1"}), "/home/ann/.local/state/corvane/h_1.json");
  unsetenv("HOME");
  EXPECT_THROW(MappingPath({}, {"h", "1"}), Error);
}

TEST_F(MappingTest, ExpectsAnItemUntilItIsThereOrSettled) {
  for (const bool whole : {false, true}) {  // by the journal alone, or by the file
    SCOPED_TRACE(whole);
    std::filesystem::remove(path());
    const auto step = [&](const auto& change) {
      Mapping mapping(path());
      change(mapping);
      mapping.SaveChanges();
      if (whole) mapping.Save();
    };
    step([](Mapping& mapping) {
      mapping.Expect({0, "contact", "a", "", "h", "s"});
      mapping.Expect({0, "contact", "", "b", "h", "s"});
      mapping.Expect({0, "contact", "", "", "h", "s"});  // could never be told from another
    });
    step([](Mapping& mapping) {
      ASSERT_EQ(mapping.expected().size(), 2U);
      EXPECT_EQ(mapping.expected().rbegin()->second.uid, "a");
      EXPECT_EQ(mapping.expected().rbegin()->second.state, "s");
      mapping.Put({1, "contact", "a", "", "h", "s1"});
    });
    step([](Mapping& mapping) {
      ASSERT_EQ(mapping.expected().size(), 1U);
      EXPECT_EQ(mapping.FindOid(1)->state, "s1");
      mapping.Settle({0, "contact", "", "b", ""});
    });
    EXPECT_TRUE(Mapping(path()).expected().empty());
  }
}

}  // namespace
}  // namespace desktop::testing
