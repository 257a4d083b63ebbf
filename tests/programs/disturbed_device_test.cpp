// The commands of corvane-device with calls to the system that go wrong: a disk that is full or
// broken, memory that is not there, an end at any write. What failed is said, nothing is half, and
// the same command finishes the work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "tests/programs/disturbed_test.h"
#include "tests/support/paths.h"
#include "tests/support/store_sql.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsSubsetOf;

struct DeviceCommand {
  std::string name;
  // "%" stands for the directory in which all of it happens.
  std::vector<std::string> arguments;
  std::string handheld = "%/handheld";  // that it makes or works on
  // With status 0 says that what else it makes is whole.
  std::vector<std::string> proof = {};
};
void PrintTo(const DeviceCommand& command, std::ostream* stream) {
  *stream << command.name;
}

std::vector<DeviceCommand> DeviceCommands() {
  const auto sample = [](const char* name) { return SourcePath(std::string("samples/") + name); };
  return {
      {"Init", {"init", "%/new", "--zone", "UTC"}, "%/new"},
      {"ImportContacts", {"import", "%/handheld", sample("old-phone.vcf")}},
      {"ImportCalendar", {"import", "%/handheld", sample("calendar.ics"), sample("tasks.ics")}},
      {"ImportPhone",
       {"import", "%/handheld", sample("phone-backup.xml"), sample("phone-calls.xml")}},
      {"ImportIntoAStoreOfTheFirstFormat",
       {"import", "%/older", sample("old-phone.vcf")},
       "%/older"},
      {"Remove", {"remove", "%/handheld", "1", "2", "3"}},
      {"RemoveMessages", {"remove", "%/handheld", "messages", "--all"}},
      {"SetOwner", {"set", "%/handheld", "owner", "Ada Brook"}},
      {"SetClock", {"clock", "%/handheld", "set", "2030-02-15T13:45:00Z"}},
      {"SetRegistry", {"registry", "%/handheld", "set", "SOFTWARE\\Brook", "Name", "sz:text"}},
      {"AddNote", {"note", "%/handheld", "add", sample("people.vcf")}},
      {"AddCard", {"card", "%/handheld", "add", "Card", "%/card"}},
      {"ExportContacts", {"export", "%/handheld", "contacts", "-o", "%/out.vcf"}},
      {"ExportMessages", {"export", "%/handheld", "messages", "-o", "%/out.xml"}},
      {"Page", {"page", "%/handheld", "-o", "%/page.html"}},
      {"Backup",
       {"backup", "%/handheld", "%/backup.tar"},
       "%/handheld",
       {"backup", "--verify", "%/backup.tar"}},
      {"Restore", {"restore", "%/whole.tar", "%/new"}, "%/new"},
      {"Clone", {"clone", "%/handheld", "%/new"}, "%/new"},
      {"Repair", {"repair", "%/damaged", "--write"}, "%/damaged"},
      {"Show", {"show", "%/handheld", "contacts", "--json"}},
      {"Check", {"check", "%/handheld"}},
  };
}

class DisturbedDevice : public DisturbedTest, public ::testing::WithParamInterface<DeviceCommand> {
 protected:
  void SetUp() override {
    fs::create_directory(Path("pristine"));
    const std::string handheld = MakeFilledHandheld();
    ASSERT_EQ(Device({"backup", handheld, Path("pristine/whole.tar")}).code, 0);
    ASSERT_EQ(Device({"clone", handheld, Path("pristine/damaged")}).code, 0);
    ASSERT_EQ(Device({"clone", handheld, Path("pristine/older")}).code, 0);
    TakeBackToTheFirstFormat(*ce::host::Handheld::Open(Path("pristine/older"), "a test"));
    std::fstream damaged(Path("pristine/damaged/store.db"), std::ios::in | std::ios::out);
    damaged.seekp(40'000);
    damaged << std::string(8'000, '\xFF');
    fs::rename(handheld, Path("pristine/handheld"));
    fs::create_directory(Path("pristine/card"));
  }

  Arguments InWork(Arguments arguments) const {
    for (std::string& argument : arguments) {
      if (argument.starts_with('%')) argument.replace(0, 1, work_);
    }
    return arguments;
  }
  void Prepare() override {
    fs::remove_all(work_);
    fs::copy(Path("pristine"), work_,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    before_ = Names();
  }
  Ended RunCommand(const ProcessOptions& options) const override {
    return Run("corvane-device", InWork(GetParam().arguments), options);
  }

  // But for those that a store has while it is open.
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(work_)) {
      const std::string name = entry.path().filename();
      if (name != ".lock" && name != "store.reserve" && !name.starts_with("store.db-"))
        names.insert(entry.path().lexically_relative(work_));
    }
    return names;
  }
  // The data of a page without the time and the room on the disk. What an import could not store
  // at first stands behind the others: people have their names in place of their places.
  static std::string InAnyOrder(const std::string& page) {
    const std::size_t begin = page.find('{', page.find("id=\"data\""));
    auto data = nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
    data.erase("now");
    data.erase("volumes");
    const auto name = [&](nlohmann::json& place) {
      if (place >= 0) place = data["people"][place.get<std::size_t>()]["name"];
    };
    for (auto& thread : data["threads"])
      for (auto& place : thread["people"]) name(place);
    for (auto& call : data["calls"]) name(call[5]);
    for (const char* const items : {"people", "events", "tasks"})
      std::sort(data[items].begin(), data[items].end());
    return data.dump();
  }
  struct State {
    std::set<std::string> names;
    std::map<std::string, std::string> contents;  // of what has been exported, and of handhelds
  };
  State StateNow() const {
    State state{Names(), {}};
    for (const char* const exported : {"out.vcf", "out.xml"})
      state.contents[exported] = directory_.Read("work/" + std::string(exported));
    for (const std::string& handheld : {std::string("%/handheld"), GetParam().handheld})
      state.contents[handheld] = InAnyOrder(Device(InWork({"page", handheld})).out);
    return state;
  }
  void KeepWhole() override { whole_ = StateNow(); }
  void ExpectWhole(const std::string& when) const {
    SCOPED_TRACE(when);
    for (const Arguments& arguments : {Arguments{"check", GetParam().handheld}, GetParam().proof}) {
      if (arguments.empty()) continue;
      const Ended proof = Device(InWork(arguments));
      EXPECT_EQ(proof.code, 0) << ::testing::PrintToString(proof);
    }
    const State now = StateNow();
    EXPECT_EQ(now.names, whole_.names);
    ExpectSame(now.contents, whole_.contents);
  }

  void ExpectToldAndFinished(const Ended& ended, const Fault& fault) override {
    if (ended.code == doneCode_) {
      ExpectWhole("it went on as if nothing had been");
    } else if (!EndedAtOnce(ended, fault)) {
      EXPECT_THAT(ended.code, AnyOf(1, 3)) << ::testing::PrintToString(ended);
      // The command as a whole, or an item of a file that is imported.
      EXPECT_THAT(ended.err, AnyOf(HasSubstr("corvane-device: "), ContainsRegex(":[0-9]+: ")))
          << ::testing::PrintToString(ended);
      std::set<std::string> may = whole_.names;
      may.merge(before_);
      // Without memory nothing can be taken away; that is for the next run.
      if (fault.calls != "memory") {
        EXPECT_THAT(Names(), IsSubsetOf(may)) << ended.err;
      }
    }
    const Ended sound = Device({"check", work_ + "/handheld"});
    EXPECT_EQ(sound.code, 0) << ::testing::PrintToString(sound);
    const Ended again = RunCommand(Options());
    ExpectWhole("the same once more: " + ::testing::PrintToString(again));
  }

  std::set<std::string> before_;
  State whole_;
};

TEST_P(DisturbedDevice, SaysSoAndIsFinishedByTheNext) {
  Disturb(GetParam().name, {{"writes", "kill"},
                            {"writes", "half"},
                            {"files", "fail", EIO},
                            {"room", "fail-on", ENOSPC}});
}

INSTANTIATE_TEST_SUITE_P(Commands, DisturbedDevice, ::testing::ValuesIn(DeviceCommands()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace corvane::testing
