// Killed at any moment, corvane-desktop or the agent: the runs after that lose nothing, have
// nothing twice and leave no file half.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/programs/tool_test.h"
#include "tests/support/json_lines.h"
#include "tests/support/paths.h"
#include "tests/support/sanitizers.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

int Kills() {
  const char* const wanted = std::getenv("CORVANE_SYNC_KILLS");
  return wanted != nullptr ? std::atoi(wanted) : kSanitizer ? 8 : 24;
}

constexpr char kNothing[] = "0 added, 0 changed, 0 merged, 0 conflicts; desk 0, handheld 0\n";

class KilledSync : public ToolTest {
 protected:
  using Clock = std::chrono::steady_clock;
  // Their titles by their first names.
  using People = std::map<std::string, std::string>;

  Arguments SyncArguments() const {
    return {"--to", "127.0.0.1:" + std::to_string(port()), "sync", Path("desk"), "--zone", "UTC"};
  }
  Ended Sync() const { return Run("corvane-desktop", SyncArguments()); }

  static std::string BytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string Between(const std::string& text, const std::string& begin, char end) {
    const std::size_t at = text.find(begin);
    if (at == std::string::npos) return {};
    const std::size_t from = at + begin.size();
    return text.substr(from, text.find(end, from) - from);
  }
  void WriteCard(const std::string& name, const std::string& title) const {
    std::ofstream(Path("desk/contacts/" + name + ".vcf"), std::ios::binary)
        << "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" << name << "\r\nN:Brook;" << name
        << ";;;\r\nFN:" << name << " Brook\r\nTITLE:" << title << "\r\nEND:VCARD\r\n";
  }
  void WriteEvent(const std::string& subject) const {
    std::ofstream(Path("desk/calendar/" + subject + ".ics"), std::ios::binary)
        << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//\r\nBEGIN:VEVENT\r\nUID:" << subject
        << "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" << subject
        << "\r\nDTSTART:20260506T093000Z\r\nDTEND:20260506T103000Z\r\nRRULE:FREQ=DAILY;COUNT=9"
           "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  }
  // By the people's first names. Every file has one person, and all of it.
  std::map<std::string, fs::path> FilesOfPeople() const {
    std::map<std::string, fs::path> files;
    for (const auto& entry : fs::directory_iterator(Path("desk/contacts"))) {
      if (entry.path().extension() != ".vcf") continue;
      const std::string bytes = BytesOf(entry.path());
      EXPECT_TRUE(bytes.ends_with("END:VCARD\r\n")) << entry.path() << "\n" << bytes;
      const std::string name = Between(bytes, "\r\nN:Brook;", ';');
      EXPECT_TRUE(files.emplace(name, entry.path()).second) << name << " is there twice";
    }
    return files;
  }
  People OnDesk() const {
    People people;
    for (const auto& [name, file] : FilesOfPeople()) {
      people[name] = Between(BytesOf(file), "\r\nTITLE:", '\r');
    }
    return people;
  }
  nlohmann::json Pulled(const std::string& kind) const {
    const Ended pulled = Desktop({"pull", kind, "--format", "json", "--zone", "UTC"});
    EXPECT_EQ(pulled.code, 0) << pulled.err;
    return JsonLines(pulled.out);
  }
  People OnHandheld() const {
    People people;
    for (const nlohmann::json& person : Pulled("contacts")) {
      const auto name = person.at("FirstName").get<std::string>();
      EXPECT_TRUE(people.emplace(name, person.at("JobTitle").get<std::string>()).second)
          << name << " is there twice";
    }
    return people;
  }
  std::multiset<std::string> EventsOnHandheld() const {
    std::multiset<std::string> subjects;
    for (const nlohmann::json& event : Pulled("calendar")) subjects.insert(event.at("Subject"));
    return subjects;
  }
  std::multiset<std::string> EventsOnDesk() const {
    std::multiset<std::string> subjects;
    for (const auto& entry : fs::directory_iterator(Path("desk/calendar"))) {
      const std::string bytes = BytesOf(entry.path());
      EXPECT_TRUE(bytes.ends_with("END:VCALENDAR\r\n")) << entry.path() << "\n" << bytes;
      subjects.insert(Between(bytes, "SUMMARY:", '\r'));
    }
    return subjects;
  }

  // One of those that nobody has edited in this round.
  std::string Take(std::vector<std::string>& names) {
    const auto which = std::uniform_int_distribution<std::size_t>(0, names.size() - 1)(random_);
    const auto at = names.begin() + static_cast<std::ptrdiff_t>(which);
    std::string name = *at;
    names.erase(at);
    return name;
  }
  // Additions, changes and deletions on either side, each of other people.
  void EditBothSides() {
    const std::string round = std::to_string(++rounds_);
    std::vector<std::string> names;
    for (const auto& [name, title] : people_) names.push_back(name);
    EditDesk(round, names);
    EditHandheld(round, names);
  }
  void EditDesk(const std::string& round, std::vector<std::string>& names) {
    const auto files = FilesOfPeople();
    for (const char* const part : {"a", "b"}) {
      const std::string changed = Take(names);
      std::string bytes = BytesOf(files.at(changed));
      const std::size_t title = bytes.find("\r\nTITLE:") + 8;
      bytes.replace(title, bytes.find('\r', title) - title, people_[changed] = "desk" + round);
      std::ofstream(files.at(changed), std::ios::binary) << bytes;

      const std::string removed = Take(names);
      fs::remove(files.at(removed));
      people_.erase(removed);
      const std::string added = "desk" + round + part;
      WriteCard(added, people_[added] = "new");
      WriteEvent(added);
      events_.insert(added);
    }
  }
  // As another program of the desk would.
  void EditHandheld(const std::string& round, std::vector<std::string>& names) {
    std::map<std::string, std::string> oids;
    for (const nlohmann::json& person : Pulled("contacts")) {
      oids[person.at("FirstName")] = std::to_string(person.at("oid").get<std::uint32_t>());
    }
    std::string records;
    const auto put = [&](const std::string& tag, const std::string& name) {
      records += "<CONTACT" + tag + "><FIRST_NAME>" + name +
                 "</FIRST_NAME><LAST_NAME>Brook</LAST_NAME><BUSINESS_TITLE>" + people_.at(name) +
                 "</BUSINESS_TITLE></CONTACT>";
    };
    Arguments remove{"delete", "contacts", "--map", Path("other.json")};
    for (const char* const part : {"a", "b"}) {
      const std::string changed = Take(names);
      people_[changed] = "handheld" + round;
      put(" Oid=\"" + oids.at(changed) + "\"", changed);
      const std::string removed = Take(names);
      people_.erase(removed);
      remove.insert(remove.end(), {"--oid", oids.at(removed)});
      const std::string added = "handheld" + round + part;
      people_[added] = "new";
      put("", added);
    }
    const std::string file = File("put.xml", "<root>" + records + "</root>");
    const Ended pushed = Desktop({"push", "--map", Path("other.json"), "--force", file});
    ASSERT_EQ(pushed.code, 0) << pushed.err;
    ASSERT_EQ(Desktop(remove).code, 0);
  }

  std::chrono::microseconds AnyMoment() {
    return std::chrono::microseconds(
        std::uniform_int_distribution<std::int64_t>(0, wholeRun_.count())(random_));
  }
  void KillDesktopWithinARun() {
    Process sync(ProgramPath("corvane-desktop"), SyncArguments(), Options());
    std::this_thread::sleep_for(AnyMoment());
    sync.Kill(SIGKILL);
    sync.Wait();
  }
  void KillAgentWithinARun() {
    Process sync(ProgramPath("corvane-desktop"), SyncArguments(), Options());
    std::this_thread::sleep_for(AnyMoment());
    StopAgent(SIGKILL);
    sync.ReadToEnd();
    sync.Wait();
    StartAgent(Path("handheld"), {"--stay"});
  }

  void ExpectInStep() {
    const Ended first = Sync();
    EXPECT_EQ(first.code, 0) << first.out << first.err;
    const Ended second = Sync();
    EXPECT_EQ(second.code, 0) << second.err;
    EXPECT_EQ(second.out, kNothing);
    EXPECT_EQ(OnDesk(), people_) << first.out;
    EXPECT_EQ(OnHandheld(), people_) << first.out;
    EXPECT_EQ(EventsOnDesk(), events_) << first.out;
    EXPECT_EQ(EventsOnHandheld(), events_) << first.out;
  }

  // Other moments in each round of --gtest_repeat with --gtest_shuffle.
  std::mt19937 random_{20261122u +
                       static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed())};
  std::chrono::microseconds wholeRun_{};
  People people_;
  std::multiset<std::string> events_;
  int rounds_ = 0;
};

TEST_F(KilledSync, LosesNothingAndHasNothingTwice) {
  StartAgent(MakeHandheld(), {"--stay"});
  ASSERT_EQ(Sync().code, 0);
  for (int i = 0; i < 24; ++i) {
    const std::string name = "first" + std::to_string(i);
    WriteCard(name, people_[name] = "new");
  }
  ASSERT_EQ(Sync().code, 0);
  EditBothSides();
  const auto begin = Clock::now();
  ASSERT_EQ(Sync().code, 0);
  wholeRun_ = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
  const int kills = Kills();
  for (int kill = 0; kill < kills && !HasFailure(); kill += 2) {
    EditBothSides();
    KillDesktopWithinARun();
    KillAgentWithinARun();
    ExpectInStep();
  }
}

}  // namespace
}  // namespace corvane::testing
