#include "desktop/sync/sync_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "desktop/commands/commands_sync.h"
#include "desktop/wire/error.h"
#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr auto kContact = ItemKind::kContact;

class SyncTest : public ::testing::Test {
 protected:
  // As the program does it, with a person's answers where there is a terminal.
  int Command(SyncCommand command, const std::string& answers = {}) {
    const SyncOptions& options = world_.options_;
    command.what = options.folder;
    command.choices = {options.kinds, options.conflict, options.allowDeletions, options.dryRun};
    const PlaceOptions place{
        .addressGiven = true, .zone = options.zone, .country = options.country};
    FakeAgent agent(std::vector<FakeAgent::Script>(40, world_.store_.Serve()));
    console_.in.str(answers);
    console_.in.clear();
    console_.out.str("");
    console_.err.str("");
    Console console{console_.out, console_.err, console_.in};
    console.inIsTerminal = !answers.empty();
    return Sync(agent.options(), place, command, console);
  }
  std::string out() const { return console_.out.str(); }
  std::string err() const { return console_.err.str(); }
  void Agree(std::vector<std::string> names) {
    for (const std::string& name : names) world_.AddOnDesk(kContact, {name, "0", {}});
    ASSERT_EQ(world_.Sync().problem, "");
  }
  void EditBothSides() {
    world_.ChangeOnDesk(kContact, {"Ada", "0", {}}, {"Ada", "D", {}});
    world_.ChangeOnHandheld(kContact, {"Ada", "0", {}}, {"Ada", "H", {}});
  }
  fs::path State(const std::string& name) const {
    return world_.options_.folder / ".corvane" / name;
  }

  SyncWorld world_;
  const ConfigHome home_{world_.directory_.path()};
  TestConsole console_;
};

TEST_F(SyncTest, SaysInALineWhatItDoes) {
  Agree({"Ada", "Ben", "Cleo"});
  EditBothSides();
  world_.ChangeOnDesk(kContact, {"Ben", "0", {}}, {"Ben", "D", {}});
  world_.RemoveFromHandheld(kContact, {"Cleo", "0", {}});
  world_.AddOnHandheld(kContact, {"Dora", "H", {}});
  EXPECT_EQ(Command({}), 0);
  EXPECT_EQ(out(),
            "contact Brook, Ada: conflict, keep both: Job title: \"D\" on the desk, \"H\" on the "
            "handheld\n"
            "contact Brook, Ben: change on the handheld: Job title\n"
            "contact Brook, Cleo: delete from the desk, to .corvane/trash\n"
            "contact Brook, Dora: add to the desk\n"
            "1 added, 1 changed, 1 deleted, 0 merged, 1 conflict; desk 3, handheld 3\n");
  EXPECT_TRUE(fs::exists(State("trash/contacts/person-3.vcf")));
}

TEST_F(SyncTest, MarksTheSecondOfTwo) {
  Agree({"Ada"});
  EditBothSides();
  EXPECT_EQ(Command({}), 0);
  EXPECT_THAT(world_.Handheld(kContact),
              ElementsAre(TestItem{"Ada", "D", {}}, TestItem{"Ada", "H", std::string(kCopyMark)}));
}

TEST_F(SyncTest, AsksAPersonAtATerminalWithTheFieldsSideBySide) {
  Agree({"Ada"});
  world_.options_.conflict = ConflictPolicy::kAsk;
  EditBothSides();
  EXPECT_EQ(Command({}, "what?\nl\n"), 3);
  EXPECT_THAT(err(), HasSubstr("contact Brook, Ada has been changed on both sides:\n"
                               "  Job title  desk: D  |  handheld: H\n"
                               "Take [d]esk, [h]andheld, keep [b]oth, or [l]eave it? "));
  EXPECT_EQ(Command({}, "h\n"), 0);
  EXPECT_THAT(world_.Desk(kContact), ElementsAre(TestItem{"Ada", "H", {}}));
}

TEST_F(SyncTest, LeavesAnItemAloneWhenThereIsNobodyToAsk) {
  Agree({"Ada"});
  world_.options_.conflict = ConflictPolicy::kAsk;
  EditBothSides();
  EXPECT_EQ(Command({}), 3);
  EXPECT_THAT(out(), HasSubstr("contact Brook, Ada: conflict, left alone: Job title"));
  EXPECT_THAT(world_.Desk(kContact), ElementsAre(TestItem{"Ada", "D", {}}));
  EXPECT_THAT(world_.Handheld(kContact), ElementsAre(TestItem{"Ada", "H", {}}));
}

TEST_F(SyncTest, IsQuietWhenToldSo) {
  world_.AddOnDesk(kContact, {"Ada", "0", {}});
  SyncCommand command;
  command.quiet = true;
  EXPECT_EQ(Command(command), 0);
  EXPECT_EQ(out(), "");
  EXPECT_EQ(err(), "");
}

TEST_F(SyncTest, SumsUpWhatTheHandheldDoesNotHold) {
  for (const char* const name : {"a", "b"}) {
    world_.AddOnDesk(kContact, {name, "0", {}});
    const fs::path file = world_.options_.folder / "contacts" /
                          (name == std::string("a") ? "person-1.vcf" : "person-2.vcf");
    std::string bytes = world_.directory_.Read(file);
    bytes.insert(bytes.find("END:VCARD"), "NICKNAME:Nick\r\n");
    world_.directory_.Write(file, bytes);
  }
  EXPECT_EQ(Command({}), 0);
  EXPECT_THAT(err(), HasSubstr("NICKNAME: 2 contacts (the handheld does not hold it"));
  EXPECT_EQ(Command({}), 0);
}

TEST_F(SyncTest, SaysThatANameInFnAloneStaysOnTheDesk) {
  Agree({"Ada"});
  const fs::path file = world_.options_.folder / "contacts/person-1.vcf";
  std::string bytes = world_.directory_.Read(file);
  bytes.replace(bytes.find("FN:Ada Brook"), 12, "FN:Ada Stone");
  world_.directory_.Write(file, bytes);
  SyncCommand command;
  command.verbose = true;
  EXPECT_EQ(Command(command), 0);
  EXPECT_THAT(err(), HasSubstr("FN: a contact is called what its N says, "
                               "left out: Ada Stone"));
  EXPECT_THAT(out(), HasSubstr("desk 0, handheld 0"));
  EXPECT_EQ(world_.directory_.Read(file), bytes);
}

TEST_F(SyncTest, StopsWhenASideIsEmptyAndAsksForMore) {
  Agree({"Ada", "Ben"});
  world_.store_.items.clear();
  const auto bytes = world_.FolderBytes();
  EXPECT_EQ(Command({}), 1);
  EXPECT_THAT(err(), HasSubstr("2 of 2 contacts are gone on the handheld: nothing is done. "
                               "--allow-deletions"));
  EXPECT_EQ(world_.FolderBytes(), bytes);
  world_.options_.allowDeletions = true;
  EXPECT_EQ(Command({}), 0);
  EXPECT_THAT(world_.Desk(kContact), IsEmpty());
}

TEST_F(SyncTest, StopsWhenMoreThanHalfOfTenAreGone) {
  std::vector<std::string> names;
  for (char name = 'a'; name < 'k'; ++name) names.emplace_back(1, name);
  Agree(names);
  for (char name = 'a'; name < 'f'; ++name) {
    world_.RemoveFromDesk(kContact, {std::string(1, name), "0", {}});
  }
  EXPECT_EQ(world_.Sync().problem, "") << "half of them are not more than half";
  EXPECT_EQ(world_.Handheld(kContact).size(), 5u);
}

TEST_F(SyncTest, StopsAtAnotherHandheld) {
  Agree({"Ada", "Ben", "Cleo", "Dora"});
  const auto bytes = world_.FolderBytes();
  const std::map<Oid, std::string> items = std::exchange(world_.store_.items, {});
  for (const auto& [oid, record] : items) {
    world_.store_.items[oid] =
        RecordFor(ItemFrom(kContact, {"Other" + std::to_string(oid), "H", {}}), {},
                  ZoneNamed("Europe/Berlin"))
            .xml;
  }
  EXPECT_EQ(Command({}), 1);
  EXPECT_THAT(err(), HasSubstr("this is another handheld"));
  EXPECT_EQ(world_.FolderBytes(), bytes);
}

TEST_F(SyncTest, FindsAHandheldAgainThatCountsAnew) {
  Agree({"Ada", "Ben", "Cleo"});
  std::map<Oid, std::string> items;
  for (const auto& [oid, record] : world_.store_.items) items[oid + 1000] = record;
  world_.store_.items = items;
  const SyncSeen seen = world_.Sync();
  EXPECT_EQ(seen.problem, "");
  EXPECT_THAT(seen.planned, IsEmpty());
  EXPECT_EQ(world_.Sync().results.counts.desk, 0u);
}

TEST_F(SyncTest, NamesWhatIsAlikeAndKeepsItAsTwo) {
  world_.AddOnDesk(ItemKind::kTask, {"Tea", "D", {}});
  world_.AddOnHandheld(ItemKind::kTask, {"Tea", "H", {}});
  std::string& record = world_.store_.items.begin()->second;
  record.replace(record.find("20261130"), 8, "20261201");
  const SyncSeen seen = world_.Sync();
  EXPECT_THAT(seen.notices, ElementsAre(HasSubstr("task Tea on the desk and Tea on the handheld "
                                                  "are alike")));
  EXPECT_EQ(world_.Desk(ItemKind::kTask).size(), 2u);
}

TEST_F(SyncTest, ChangesNoByteInADryRun) {
  Agree({"Ada", "Ben"});
  EditBothSides();
  world_.AddOnHandheld(kContact, {"Cleo", "H", {}});
  const auto folder = world_.FolderBytes();
  const auto items = world_.store_.items;
  world_.options_.dryRun = true;
  const SyncSeen dry = world_.Sync();
  EXPECT_EQ(world_.FolderBytes(), folder);
  EXPECT_EQ(world_.store_.items, items);
  world_.options_.dryRun = false;
  const SyncSeen run = world_.Sync();
  EXPECT_EQ(run.planned, dry.planned);
  EXPECT_EQ(ToText(run.results.counts), ToText(dry.results.counts));
}

TEST_F(SyncTest, PlansInADryRunAfterARunThatWasCutOffWhatTheNextRunDoes) {
  Agree({"Ada"});
  for (const char* const name : {"Ben", "Cleo", "Dora"}) {
    world_.AddOnDesk(kContact, {name, "0", {}});
  }
  EXPECT_NE(world_.Sync(1).problem, "");
  const auto folder = world_.FolderBytes();
  world_.options_.dryRun = true;
  const SyncSeen dry = world_.Sync();
  EXPECT_EQ(dry.problem, "");
  EXPECT_EQ(world_.FolderBytes(), folder);
  world_.options_.dryRun = false;
  EXPECT_EQ(world_.Sync().planned, dry.planned);
}

TEST_F(SyncTest, KeepsWhatItRemembersToItsOwner) {
  Agree({"Ada"});
  struct stat status {};
  ASSERT_EQ(stat(State("").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  ASSERT_EQ(stat(State("memory.db").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(SyncTest, RefusesADamagedMemoryAndLeavesItAlone) {
  Agree({"Ada"});
  const std::string whole = world_.directory_.Read(State("memory.db"));
  for (const std::string& damaged :
       {std::string(), std::string("nonsense"), whole.substr(0, whole.size() / 2)}) {
    world_.directory_.Write(State("memory.db"), damaged);
    EXPECT_THAT(world_.Sync().problem, HasSubstr("cannot be understood")) << damaged.size();
    EXPECT_EQ(world_.directory_.Read(State("memory.db")), damaged);
  }
  fs::remove(State("memory.db"));
  EXPECT_THAT(world_.Sync().problem, HasSubstr("is not there any more"));
  world_.directory_.Write(State("memory.db"), whole);
  EXPECT_EQ(world_.Sync().problem, "");
}

TEST_F(SyncTest, IsOneAtATime) {
  Agree({"Ada"});
  std::string inner;
  world_.AddOnDesk(kContact, {"Ben", "0", {}});
  world_.options_.hook = [&](std::string_view) {
    SyncOptions options = world_.options_;
    options.hook = {};
    try {
      Synchronise(NobodyThere(), options, {});
    } catch (const Error& problem) {
      inner = problem.what();
    }
  };
  EXPECT_EQ(world_.Sync().problem, "");
  EXPECT_THAT(inner, HasSubstr("is in use by another corvane-desktop"));
}

TEST_F(SyncTest, RemembersTheZoneAndRefusesAnother) {
  Agree({"Ada"});
  world_.options_.zone.reset();
  EXPECT_EQ(world_.Sync().problem, "");
  world_.options_.zone = ZoneNamed("America/New_York");
  EXPECT_THAT(world_.Sync().problem, HasSubstr("in the zone Europe/Berlin"));
}

TEST_F(SyncTest, LeavesTheItemsOfAFileThatIsCutOffAlone) {
  Agree({"Ada", "Ben"});
  const fs::path file = world_.options_.folder / "contacts/person-1.vcf";
  const std::string bytes = world_.directory_.Read(file);
  world_.directory_.Write(file, bytes.substr(0, bytes.size() / 2));
  EXPECT_EQ(world_.Sync().problem, "");
  EXPECT_EQ(world_.Handheld(kContact).size(), 2u) << "nothing counts as deleted";
  world_.ChangeOnHandheld(kContact, {"Ada", "0", {}}, {"Ada", "H", {}});
  EXPECT_EQ(Command({}), 3);
  EXPECT_THAT(err(), HasSubstr("contact Brook, Ada: left alone"));
  world_.directory_.Write(file, bytes);
  EXPECT_EQ(Command({}), 0);
  EXPECT_EQ(world_.Desk(kContact)[0], (TestItem{"Ada", "H", {}}));
}

TEST_F(SyncTest, NamesWhatTheHandheldRefusesAndTriesAgain) {
  Agree({"Ada"});
  world_.AddOnDesk(kContact, {"Ben", "refused", {}});
  world_.store_.refused = "refused";
  EXPECT_EQ(Command({}), 3);
  EXPECT_THAT(err(), HasSubstr("contact Brook, Ben: the handheld does not take it"));
  world_.store_.refused.clear();
  EXPECT_EQ(Command({}), 0);
  EXPECT_EQ(world_.Handheld(kContact).size(), 2u);
}

TEST_F(SyncTest, LimitsItselfToTheKindsThatAreAskedFor) {
  world_.AddOnDesk(kContact, {"Ada", "0", {}});
  world_.AddOnDesk(ItemKind::kTask, {"Tea", "0", {}});
  world_.options_.kinds = {RecordKind::kTasks};
  EXPECT_EQ(world_.Sync().problem, "");
  EXPECT_THAT(world_.Handheld(kContact), IsEmpty());
  EXPECT_EQ(world_.Handheld(ItemKind::kTask).size(), 1u);
}

}  // namespace
}  // namespace desktop::testing
