// corvane-desktop brings a folder and the real agent's handheld in step.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kNothing[] = "0 added, 0 changed, 0 merged, 0 conflicts; desk 0, handheld 0\n";

class DesktopSync : public ToolTest {
 protected:
  void SetUp() override {
    const Ended made = Device({"init", Path("handheld"), "--zone", "Europe/Berlin"});
    ASSERT_EQ(made.code, 0) << made.err;
  }
  void Import(const Arguments& samples) {
    Arguments arguments{"import", Path("handheld")};
    for (const std::string& sample : samples) arguments.push_back(Sample(sample));
    ASSERT_EQ(Device(arguments).code, 0);
  }
  Ended Sync(Arguments more = {}) {
    Arguments arguments{"sync", Path("desk"), "--zone", "Europe/Berlin", "--country", "DE"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Desktop(arguments);
  }
  std::string Pulled(const std::string& kind) {
    return Desktop({"pull", kind, "--format", "json", "--zone", "Europe/Berlin"}).out;
  }
  static std::string Contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  // Every file of the folder with its bytes.
  std::map<std::string, std::string> Folder() const {
    std::map<std::string, std::string> files;
    if (!fs::exists(Path("desk"))) return files;
    for (const auto& entry : fs::recursive_directory_iterator(Path("desk"))) {
      files[entry.path().string()] = entry.is_regular_file() ? Contents(entry.path()) : "";
    }
    return files;
  }
  std::map<std::string, std::string> PeoplesFiles() const {
    auto files = Folder();
    std::erase_if(
        files, [](const auto& entry) { return entry.first.find(".corvane") != std::string::npos; });
    return files;
  }
  // Those that come back have other OIDs, and another place.
  std::multiset<std::string> PeopleOnHandheld() {
    std::multiset<std::string> people;
    std::istringstream lines(WithoutOids(Pulled("contacts")));
    for (std::string line; std::getline(lines, line);) {
      if (line.ends_with(',')) line.pop_back();
      people.insert(line);
    }
    return people;
  }
  // The desk's file that holds this text.
  std::string FileWith(const std::string& text) const {
    for (const auto& [name, bytes] : Folder()) {
      const bool own = name.find(".corvane") == std::string::npos;
      if (own && bytes.find(text) != std::string::npos) return name;
    }
    return {};
  }
  static void Replace(const std::string& path, const std::string& from, const std::string& to) {
    std::string bytes = Contents(path);
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos) << bytes;
    bytes.replace(at, from.size(), to);
    std::ofstream(path, std::ios::binary) << bytes;
  }
};

TEST_F(DesktopSync, BringsTheHandheldToAnEmptyDeskAndThenDoesNothing) {
  Import({"people.vcf", "calendar.ics", "tasks.ics", "phone-backup.xml", "phone-calls.xml"});
  StartAgent(Path("handheld"));
  const Ended first = Sync();
  EXPECT_EQ(first.code, 0) << first.err;
  EXPECT_THAT(first.out, AllOf(HasSubstr("contact Okafor, Amara: add to the desk\n"),
                               HasSubstr("calls/2008-02.jsonl: add 5\n"),
                               HasSubstr("39 added, 0 changed, 0 merged, 0 conflicts; desk 39, "
                                         "handheld 0\n")));
  const std::string contacts = Pulled("contacts");
  const std::string calendar = Pulled("calendar");
  const auto files = PeoplesFiles();
  const Ended second = Sync();
  EXPECT_EQ(second.code, 0) << second.err;
  EXPECT_EQ(second.out, kNothing);
  EXPECT_EQ(Pulled("contacts"), contacts);
  EXPECT_EQ(Pulled("calendar"), calendar);
  EXPECT_EQ(PeoplesFiles(), files);
}

TEST_F(DesktopSync, TakesAnEditFromEachSideToTheOther) {
  Import({"people.vcf"});
  StartAgent(Path("handheld"));
  ASSERT_EQ(Sync().code, 0);
  Replace(FileWith("Okafor"), ";Amara;", ";Amarachi;");
  const std::string file = File("edit.xml",
                                "<root><CONTACT Oid=\"2\"><FIRST_NAME>Ken</FIRST_NAME>"
                                "<LAST_NAME>Morishita</LAST_NAME></CONTACT></root>");
  ASSERT_EQ(Desktop({"push", file}).code, 0);
  const Ended sync = Sync();
  EXPECT_EQ(sync.code, 0) << sync.err;
  EXPECT_THAT(sync.out,
              HasSubstr("0 added, 2 changed, 0 merged, 0 conflicts; desk 1, handheld 1\n"));
  EXPECT_THAT(Pulled("contacts"), HasSubstr("\"FirstName\":\"Amarachi\""));
  EXPECT_NE(FileWith("Morishita;Ken;"), "");
  EXPECT_EQ(Sync().out, kNothing);
}

TEST_F(DesktopSync, PrintsTheVeryPlanInADryRunAndChangesNoByte) {
  Import({"people.vcf", "tasks.ics"});
  StartAgent(Path("handheld"));
  const Ended firstDry = Sync({"--dry-run"});
  EXPECT_EQ(firstDry.code, 0);
  EXPECT_TRUE(Folder().empty());
  EXPECT_EQ(Sync().out, firstDry.out);

  Replace(FileWith("Okafor"), ";Amara;", ";Amarachi;");
  fs::remove(FileWith("Morishita"));
  const auto files = Folder();
  const std::string contacts = Pulled("contacts");
  const Ended dry = Sync({"--dry-run"});
  EXPECT_EQ(Folder(), files);
  EXPECT_EQ(Pulled("contacts"), contacts);
  EXPECT_THAT(dry.out, HasSubstr("0 added, 1 changed, 1 deleted, 0 merged"));
  EXPECT_EQ(Sync().out, dry.out);
}

TEST_F(DesktopSync, StopsBeforeAMassDeletionUnlessItIsMeant) {
  Import({"people.vcf"});
  StartAgent(Path("handheld"));
  ASSERT_EQ(Sync().code, 0);
  fs::remove_all(Path("desk/contacts"));
  const std::string contacts = Pulled("contacts");
  const Ended stopped = Sync();
  EXPECT_EQ(stopped.code, 1);
  EXPECT_THAT(stopped.err, AllOf(HasSubstr("27 of 27 contacts are gone on the desk"),
                                 HasSubstr("--allow-deletions")));
  EXPECT_EQ(Pulled("contacts"), contacts);
  EXPECT_EQ(Sync({"--allow-deletions"}).code, 0);
  EXPECT_EQ(Pulled("contacts"), "");
}

TEST_F(DesktopSync, IsUndoneByRestoreWhateverHasBecomeOfTheDeskSince) {
  Import({"people.vcf"});
  StartAgent(Path("handheld"));
  ASSERT_EQ(Sync().code, 0);
  Replace(FileWith("Okafor"), ";Amara;", ";Amarachi;");
  fs::remove(FileWith("Morishita"));
  const std::string edit =
      File("edit.xml",
           "<root><CONTACT Oid=\"5\"><BUSINESS_TITLE>Smith</BUSINESS_TITLE></CONTACT>"
           "<CONTACT><LAST_NAME>Newcomer</LAST_NAME></CONTACT></root>");
  ASSERT_EQ(Desktop({"push", edit}).code, 0);
  const auto desk = PeoplesFiles();
  const auto handheld = PeopleOnHandheld();
  ASSERT_EQ(Sync().code, 0);
  fs::remove(FileWith("Okafor"));
  std::ofstream(FileWith("Newcomer")) << "spoilt";

  const Ended listed = Desktop({"restore", Path("desk")});
  EXPECT_EQ(listed.code, 0);
  EXPECT_THAT(listed.out, AllOf(HasSubstr("  before a sync: 27 added"),
                                HasSubstr("  before a sync: 1 added, 2 changed, 1 deleted")));
  const Ended restored = Desktop({"restore", Path("desk"), "latest"});
  EXPECT_EQ(restored.code, 0) << restored.err;
  EXPECT_THAT(restored.out, AllOf(::testing::StartsWith("as before 20"),
                                  HasSubstr(": 3 changed on the desk, 2 on the handheld\n")));
  EXPECT_EQ(PeoplesFiles(), desk);
  EXPECT_EQ(PeopleOnHandheld(), handheld);
  EXPECT_EQ(Desktop({"restore", Path("desk"), "yesterday"}).code, 1);
}

TEST_F(DesktopSync, ReportsAsJson) {
  Import({"tasks.ics"});
  StartAgent(Path("handheld"));
  const Ended sync = Sync({"--json", "--kinds", "tasks"});
  EXPECT_EQ(sync.code, 0) << sync.err;
  EXPECT_THAT(sync.out, AllOf(HasSubstr("\"action\":\"add\""), HasSubstr("\"done\":true"),
                              HasSubstr("\"added\":4"), HasSubstr("\"dryRun\":false")));
}

TEST_F(DesktopSync, RefusesWhatItDoesNotKnow) {
  for (const Arguments& wrong :
       {Arguments{"--kinds", "letters"}, Arguments{"--conflict", "both"},
        Arguments{"--country", "Germany"}, Arguments{"--zone", "Mars/Olympus"}}) {
    EXPECT_EQ(Sync(wrong).code, 2) << wrong[1];
  }
  EXPECT_TRUE(Folder().empty());
}

}  // namespace
}  // namespace corvane::testing
