// What is saved of a damaged store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/programs/tool_test.h"
#include "tests/support/json_lines.h"
#include "tests/support/sanitizers.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsSubsetOf;

constexpr std::size_t kPage = 4096;

class DeviceRepair : public ToolTest {
 protected:
  void SetUp() override {
    handheld_ = MakeFilledHandheld();
    whole_ = directory_.Read("handheld/store.db");
    ASSERT_GT(whole_.size(), 8 * kPage);
  }

  std::set<std::string> ItemsOf(const std::string& handheld) const {
    std::set<std::string> items;
    for (const char* kind : {"contacts", "calendar", "tasks", "messages", "calls"}) {
      for (const auto& item : JsonLines(Device({"show", handheld, kind, "--list", "--json"}).out))
        items.insert(kind + item.dump());
    }
    return items;
  }
  std::set<std::string> Items() const { return ItemsOf(handheld_); }

  static std::set<std::string> NamesIn(const std::string& handheld) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(handheld))
      names.insert(entry.path().filename());
    return names;
  }

  // Makes the handheld one whose log has what was imported before the program was killed. The path
  // of another one like it.
  std::string WithACalendarInItsLog(bool damaged) {
    fs::remove_all(handheld_);
    MakeHandheld();
    Device({"import", handheld_, Sample("people.vcf")});
    const std::string store = directory_.Read("handheld/store.db");
    fs::rename(handheld_, Path("before"));
    const auto import = [&](std::uint64_t killedAt) {
      fs::remove_all(handheld_);
      fs::copy(Path("before"), handheld_, fs::copy_options::recursive);
      return Run("corvane-device", {"import", handheld_, Sample("calendar.ics")},
                 Disturbed({"writes", "kill"}, killedAt, handheld_))
          .code;
    };
    EXPECT_EQ(import(0), 0);
    // The last writes take the log into the store: it is whole before the first of them.
    std::uint64_t last = 1;
    for (std::uint64_t first = std::stoull(directory_.Read("told")); first - last > 1;) {
      const std::uint64_t middle = (first + last) / 2;
      EXPECT_EQ(import(middle), -SIGKILL);
      (directory_.Read("handheld/store.db") == store ? last : first) = middle;
    }
    EXPECT_EQ(import(last), -SIGKILL);
    EXPECT_GT(fs::file_size(Path("handheld/store.db-wal")), kPage);
    if (damaged)
      directory_.Write("handheld/store.db",
                       store.substr(0, store.size() - kPage) + std::string(kPage, 'x'));
    fs::copy(handheld_, Path("twin"), fs::copy_options::recursive);
    return Path("twin");
  }

  void Damage(std::size_t page) {
    std::string store = whole_;
    std::fill_n(store.begin() + static_cast<std::ptrdiff_t>(page * kPage), kPage, 'x');
    fs::remove(Path("handheld/store.db-wal"));
    directory_.Write("handheld/store.db", store);
  }

  std::string handheld_;
  std::string whole_;
};

TEST_F(DeviceRepair, LeavesASoundStoreAlone) {
  for (const Arguments& command :
       {Arguments{"repair", handheld_}, Arguments{"repair", handheld_, "--write"}}) {
    const Ended ended = Device(command);
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.out, "The store is sound.\n");
  }
  EXPECT_EQ(Device({"repair", handheld_, "--json"}).out, "{\"sound\":true}\n");
  EXPECT_FALSE(fs::exists(Path("handheld/store.db.damaged")));
}

TEST_F(DeviceRepair, SavesAllButTheDamagedPage) {
  const std::set<std::string> before = Items();
  int lossless = 0;
  int lossy = 0;
  for (std::size_t page = 1; page < whole_.size() / kPage; page += 2) {
    SCOPED_TRACE("page " + std::to_string(page));
    Damage(page);
    if (Device({"check", handheld_}).code == 0) continue;  // a page that nothing uses
    const std::string damaged = directory_.Read("handheld/store.db");
    const Ended told = Device({"repair", handheld_});
    EXPECT_THAT(told.out, HasSubstr("Nothing has been changed"));
    EXPECT_EQ(directory_.Read("handheld/store.db"), damaged);

    const Ended written = Device({"repair", handheld_, "--write", "--json"});
    EXPECT_EQ(written.code, told.code);
    EXPECT_EQ(Device({"check", handheld_}).out, "The store is sound.\n");
    const auto said = nlohmann::json::parse(written.out);
    EXPECT_EQ(said["lost"].empty(), written.code == 0) << written.out;
    const std::set<std::string> after = Items();
    if (written.code == 0) {
      EXPECT_EQ(after, before) << "nothing is lost";
      ++lossless;
    } else {
      EXPECT_EQ(written.code, 3);
      // An appointment may have lost exceptions, a message its folder.
      std::set<std::string> unchanged = after;
      std::erase_if(unchanged, [](const std::string& item) {
        return item.starts_with("calendar") || item.starts_with("messages");
      });
      EXPECT_THAT(unchanged, IsSubsetOf(before));
      // A page holds no more.
      EXPECT_GT(after.size() + 40, before.size());
      ++lossy;
    }
    EXPECT_EQ(directory_.Read("handheld/store.db.damaged"), damaged);
    fs::remove(Path("handheld/store.db.damaged"));
    fs::remove(Path("handheld/store.db.damaged-wal"));
  }
  EXPECT_GT(lossless, 0);
  EXPECT_GT(lossy, 0);
}

// Killed when the log has its new name already, and the store not yet.
TEST_F(DeviceRepair, FinishesAnExchangeThatWasCutShort) {
  const std::string twin = WithACalendarInItsLog(true);
  ASSERT_EQ(Device({"repair", twin, "--write"}).code, 3);
  const std::set<std::string> saved = ItemsOf(twin);
  ASSERT_TRUE(std::ranges::any_of(saved, [](auto& item) { return item.starts_with("calendar"); }));

  const std::string damaged = directory_.Read("handheld/store.db");
  const std::string log = directory_.Read("handheld/store.db-wal");
  fs::create_hard_link(Path("handheld/store.db"), Path("handheld/store.db.damaged"));
  fs::rename(Path("handheld/store.db-wal"), Path("handheld/store.db.damaged-wal"));
  EXPECT_EQ(Device({"repair", handheld_, "--write"}).code, 3);
  EXPECT_EQ(Items(), saved);
  EXPECT_EQ(directory_.Read("handheld/store.db.damaged"), damaged);
  EXPECT_EQ(directory_.Read("handheld/store.db.damaged-wal"), log);
  EXPECT_FALSE(fs::exists(Path("handheld/store.db.damaged-2")));
}

// Without its log the store may be sound, and lack what was in it.
TEST_F(DeviceRepair, CallsNoStoreSoundWhoseLogIsAside) {
  const std::set<std::string> whole = ItemsOf(WithACalendarInItsLog(false));
  fs::create_hard_link(Path("handheld/store.db"), Path("handheld/store.db.damaged"));
  fs::rename(Path("handheld/store.db-wal"), Path("handheld/store.db.damaged-wal"));
  EXPECT_EQ(Device({"repair", handheld_, "--write"}).code, 0);
  EXPECT_EQ(Items(), whole);
}

TEST_F(DeviceRepair, LeavesNothingWhereItWasKilled) {
  const std::string twin = WithACalendarInItsLog(true);
  ASSERT_EQ(
      Run("corvane-device", {"repair", twin, "--write"}, Disturbed({"writes", "kill"}, 0, twin))
          .code,
      3);
  const int writes = std::stoi(directory_.Read("told"));
  const std::set<std::string> saved = ItemsOf(twin);
  const std::set<std::string> names = NamesIn(twin);
  fs::rename(handheld_, Path("pristine"));
  // From the last of the new store on.
  for (int write = writes - 14; write <= writes; write += kSanitizer ? 4 : 1) {
    SCOPED_TRACE("write " + std::to_string(write));
    fs::remove_all(handheld_);
    fs::copy(Path("pristine"), handheld_, fs::copy_options::recursive);
    EXPECT_EQ(Run("corvane-device", {"repair", handheld_, "--write"},
                  Disturbed({"writes", "kill"}, static_cast<std::uint64_t>(write), handheld_))
                  .code,
              -SIGKILL);
    Device({"repair", handheld_, "--write"});
    EXPECT_EQ(NamesIn(handheld_), names);
    EXPECT_EQ(Items(), saved);
  }
}

TEST_F(DeviceRepair, NeverGivesALostIdentifierAgain) {
  const std::string card = File("new.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:New;Nora\nEND:VCARD\n");
  const auto contacts = [this] {
    std::set<int> oids;
    for (const auto& item : JsonLines(Device({"show", handheld_, "contacts", "--json"}).out))
      oids.insert(item["oid"].get<int>());
    return oids;
  };
  const std::set<int> before = contacts();
  int tried = 0;
  for (std::size_t page = 1; page < whole_.size() / kPage && tried < 2; ++page) {
    Damage(page);
    if (Device({"repair", handheld_, "--write"}).code != 3) continue;
    const std::set<int> kept = contacts();
    if (kept == before) continue;
    ++tried;
    EXPECT_THAT(kept, IsSubsetOf(before));
    ASSERT_EQ(Device({"import", handheld_, card}).code, 0);
    std::set<int> added = contacts();
    for (const int oid : kept) added.erase(oid);
    ASSERT_EQ(added.size(), 1u);
    EXPECT_EQ(before.count(*added.begin()), 0u) << "page " << page;
    fs::remove(Path("handheld/store.db-wal"));
  }
  EXPECT_GT(tried, 0);
}

TEST_F(DeviceRepair, NeedsNotTheFirstPage) {
  const std::set<std::string> before = Items();
  Damage(0);
  const Ended written = Device({"repair", handheld_, "--write"});
  EXPECT_EQ(written.code, 0) << written.out << written.err;
  EXPECT_EQ(Items(), before);
}

TEST_F(DeviceRepair, SaysWhenNothingCanBeSaved) {
  const std::string rubbish(whole_.size() / 3, 'x');
  directory_.Write("handheld/store.db", rubbish);
  const Ended ended = Device({"repair", handheld_, "--write"});
  EXPECT_EQ(ended.code, 1);
  EXPECT_THAT(ended.err, HasSubstr("store.db: nothing can be saved: it is damaged"));
  EXPECT_EQ(directory_.Read("handheld/store.db"), rubbish);
  EXPECT_FALSE(fs::exists(Path("handheld/store.db.damaged")));
}

TEST_F(DeviceRepair, KeepsEachDamagedStore) {
  for (const char* name : {"store.db.damaged", "store.db.damaged-2"}) {
    Damage(4);
    Device({"repair", handheld_, "--write"});
    EXPECT_TRUE(fs::exists(Path(std::string("handheld/") + name))) << name;
  }
}

}  // namespace
}  // namespace corvane::testing
