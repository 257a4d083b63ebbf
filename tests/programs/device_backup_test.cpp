// A handheld as one file and back, and its clone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class DeviceBackup : public ToolTest {
 protected:
  void SetUp() override {
    handheld_ = MakeFilledHandheld();
    fs::create_directory(Path("card"));
    ASSERT_EQ(Device({"card", handheld_, "add", "Card", Path("card")}).code, 0);
    ASSERT_EQ(Device({"note", handheld_, "add", File("note.txt", "A note"), "n.txt"}).code, 0);
  }

  // All that can be seen of it.
  std::string Seen(const std::string& handheld) const {
    std::string seen = Device({"card", handheld, "list"}).out;
    for (const char* kind : {"contacts", "calendar", "tasks", "messages", "calls"})
      seen += Device({"show", handheld, kind, "--list", "--json"}).out;
    return seen + directory_.Read(fs::path(handheld) / "files/My Documents/n.txt");
  }

  void ExpectTheSame(const std::string& other) {
    EXPECT_THAT(Seen(other), HasSubstr("A note"));
    EXPECT_EQ(Seen(other), Seen(handheld_));
    EXPECT_EQ(Device({"check", other}).out, "The store is sound.\n");
    struct ::stat status {};
    ASSERT_EQ(::stat(other.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
  }

  std::string handheld_;
};

TEST_F(DeviceBackup, ComesBackAsItWas) {
  const Ended made = Device({"backup", handheld_, Path("b.tar")});
  EXPECT_EQ(made.code, 0) << made.err;
  EXPECT_THAT(made.out, ::testing::MatchesRegex(".*/b.tar: 4 files, [0-9]+ bytes\n"));
  EXPECT_EQ(fs::status(Path("b.tar")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(Device({"backup", "--verify", Path("b.tar")}).code, 0);
  const Ended restored = Device({"restore", Path("b.tar"), Path("second")});
  EXPECT_EQ(restored.out, Path("second") + ": restored from " + Path("b.tar") + "\n");
  ExpectTheSame(Path("second"));
}

TEST_F(DeviceBackup, IsReadByTarAsWell) {
  ASSERT_EQ(Device({"backup", handheld_, Path("b.tar")}).code, 0);
  const Ended listed = Shell("tar -tf '" + Path("b.tar") + "'");
  EXPECT_EQ(listed.code, 0) << listed.err;
  EXPECT_EQ(listed.out,
            "corvane-backup\nregistry.reg\nstore.db\nfiles\nfiles/Card\nfiles/My Documents\n"
            "files/My Documents/n.txt\ncorvane-sums\n");
}

TEST_F(DeviceBackup, GoesThroughAPipe) {
  const Ended piped = Shell("corvane-device backup '" + handheld_ +
                            "' - | corvane-device restore - '" + Path("second") + "'");
  EXPECT_EQ(piped.code, 0) << piped.err;
  EXPECT_EQ(piped.out, Path("second") + ": restored from -\n");
  ExpectTheSame(Path("second"));
}

TEST_F(DeviceBackup, IsMadeWhileTheAgentServes) {
  StartAgent(handheld_);
  ASSERT_EQ(Desktop({"push", Sample("new-friend.vcf")}).code, 0);
  EXPECT_EQ(Device({"backup", handheld_, Path("b.tar")}).code, 0);
  EXPECT_EQ(Device({"clone", handheld_, Path("clone")}).code, 0);
  ASSERT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
  EXPECT_EQ(Device({"restore", Path("b.tar"), Path("second")}).code, 0);
  EXPECT_THAT(Contacts(Path("second")), HasSubstr("Nova"));
  ExpectTheSame(Path("second"));
  ExpectTheSame(Path("clone"));
}

TEST_F(DeviceBackup, OfAHandheldWithoutAStore) {
  const std::string fresh = MakeHandheld("fresh");
  EXPECT_EQ(Device({"backup", fresh, Path("f.tar")}).code, 0);
  EXPECT_EQ(Device({"restore", Path("f.tar"), Path("second")}).code, 0);
  EXPECT_EQ(Device({"check", Path("second")}).code, 0);
}

TEST_F(DeviceBackup, IsRefusedWhenAByteOfItHasChanged) {
  ASSERT_EQ(Device({"backup", handheld_, Path("b.tar")}).code, 0);
  const std::string whole = directory_.Read("b.tar");
  const std::size_t note = whole.find("A note");
  ASSERT_NE(note, std::string::npos);
  for (const std::size_t at : {std::size_t{0}, std::size_t{512}, note, whole.size() / 2}) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    directory_.Write("b.tar", damaged);
    const Ended verified = Device({"backup", "--verify", Path("b.tar")});
    EXPECT_EQ(verified.code, 1) << at;
    EXPECT_THAT(verified.err, HasSubstr("b.tar cannot be restored: "));
    EXPECT_EQ(Device({"restore", Path("b.tar"), Path("second")}).code, 1);
    EXPECT_FALSE(fs::exists(Path("second"))) << "whole or not at all";
  }
}

TEST_F(DeviceBackup, IsRefusedWhenItIsCutOff) {
  ASSERT_EQ(Device({"backup", handheld_, Path("b.tar")}).code, 0);
  fs::resize_file(Path("b.tar"), fs::file_size(Path("b.tar")) - 2000);
  EXPECT_THAT(Device({"restore", Path("b.tar"), Path("second")}).err, HasSubstr("is cut off"));
}

TEST_F(DeviceBackup, OfADamagedStoreIsFoundOut) {
  const std::string whole = directory_.Read("handheld/store.db");
  constexpr std::size_t kPage = 4096;
  int found = 0;
  // Some pages tell when the store is opened already, others only to whoever reads it all.
  for (std::size_t page = whole.size() / kPage - 1; page > 0 && found < 2; --page) {
    std::string store = whole;
    std::fill_n(store.begin() + static_cast<std::ptrdiff_t>(page * kPage), kPage, 'x');
    directory_.Write("handheld/store.db", store);
    if (Device({"backup", handheld_, Path("b.tar")}).code != 0) continue;
    ++found;
    const Ended verified = Device({"backup", "--verify", Path("b.tar")});
    EXPECT_EQ(verified.code, 1) << page;
    EXPECT_THAT(verified.err, HasSubstr("b.tar holds a damaged handheld: "));
    EXPECT_EQ(Device({"restore", Path("b.tar"), Path("second")}).code, 1);
    EXPECT_FALSE(fs::exists(Path("second")));
  }
  EXPECT_EQ(found, 2);
}

TEST_F(DeviceBackup, DoesNotRestoreOverAHandheld) {
  ASSERT_EQ(Device({"backup", handheld_, Path("b.tar")}).code, 0);
  const std::string before = Seen(handheld_);
  for (const Arguments& command :
       {Arguments{"restore", Path("b.tar"), handheld_}, Arguments{"clone", handheld_, handheld_}}) {
    const Ended refused = Device(command);
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr(handheld_ + " is not empty"));
  }
  EXPECT_EQ(Seen(handheld_), before);
}

TEST_F(DeviceBackup, OfAStrangerLeadsNowhereElse) {
  fs::create_directories(Path("t/files"));
  fs::create_directory(Path("outside"));
  for (const char* path : {"../outside/x", "files/../../outside/x", "/tmp/x", "other"}) {
    directory_.Write("t/corvane-backup", "1\n");
    directory_.Write("t/x", "evil");
    const Ended made = Shell("cd '" + Path("t") + "' && tar --format=posix --transform='s,^x$," +
                             path + ",' -P -cf ../evil.tar corvane-backup x");
    ASSERT_EQ(made.code, 0) << made.err;
    const Ended restored = Device({"restore", Path("evil.tar"), Path("second")});
    EXPECT_EQ(restored.code, 1) << path;
    EXPECT_THAT(restored.err, HasSubstr("it holds \"" + std::string(path)));
    EXPECT_TRUE(fs::is_empty(Path("outside")));
  }
}

TEST_F(DeviceBackup, OfAStrangerDoesNotWriteByWayOfALink) {
  fs::create_directories(Path("t/files"));
  fs::create_directory(Path("outside"));
  fs::create_directory_symlink(Path("outside"), Path("t/files/card"));
  directory_.Write("t/corvane-backup", "1\n");
  directory_.Write("t/x", "evil");
  const Ended made =
      Shell("cd '" + Path("t") +
            "' && tar --format=posix --no-recursion --transform='s,^x$,files/card/x,' "
            "-cf ../evil.tar corvane-backup files files/card x");
  ASSERT_EQ(made.code, 0) << made.err;
  EXPECT_EQ(Device({"restore", Path("evil.tar"), Path("second")}).code, 1);
  EXPECT_TRUE(fs::is_empty(Path("outside")));
  EXPECT_FALSE(fs::exists(Path("second")));
}

TEST_F(DeviceBackup, ClonesAndBothGoTheirOwnWays) {
  EXPECT_EQ(Device({"clone", handheld_, Path("clone")}).out,
            Path("clone") + ": the same as " + handheld_ + "\n");
  ExpectTheSame(Path("clone"));
  EXPECT_EQ(Device({"remove", Path("clone"), "1"}).code, 0);
  EXPECT_THAT(Contacts(handheld_), HasSubstr("\"oid\":1,"));
  EXPECT_THAT(Contacts(Path("clone")), ::testing::Not(HasSubstr("\"oid\":1,")));
}

}  // namespace
}  // namespace corvane::testing
