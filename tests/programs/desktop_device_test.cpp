// corvane-desktop against the real agent: what the handheld is, and what room it has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handheld/directory/handheld.h"
#include "tests/programs/tool_test.h"
#include "tests/support/paths.h"
#include "tests/support/volume_room.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

std::string Json(const VolumeRoom& room) {
  return "\"total\":" + std::to_string(room.total) + ",\"free\":" + std::to_string(room.free);
}

std::string Text(const VolumeRoom& room) {
  return "(" + std::to_string(room.free) + " of " + std::to_string(room.total) + " bytes)\n";
}

class DesktopDevice : public ToolTest {
 protected:
  void SetUp() override { handheld_ = MakeHandheld("handheld", "ja-JP"); }
  fs::path Root() const { return fs::path(handheld_) / "files"; }
  void MakeCard(const std::string& name, const fs::path& target) const {
    fs::create_directory_symlink(target, Root() / name);
  }
  // What the command says while the room on these volumes stands still.
  Ended AtRest(const std::vector<fs::path>& volumes, const Arguments& command) {
    return AskAtRest(
        volumes, &truth_, [&] { return Desktop(command); }, Tells);
  }
  static bool Tells(const Ended& ended, const VolumeRoom& room) {
    return ended.out.find(Json(room)) != std::string::npos ||
           ended.out.find(Text(room)) != std::string::npos;
  }

  std::string handheld_;
  const TemporaryDirectory card_;
  VolumeRoom truth_;
};

TEST_F(DesktopDevice, TellsWhatTheHandheldIs) {
  MakeCard("Storage Card", card_.path());
  StartAgent(handheld_);
  const Ended info = Desktop({"info"});
  EXPECT_EQ(info.code, 0);
  EXPECT_EQ(info.err, "");
  EXPECT_THAT(info.out, MatchesRegex("agent     4\\.12, built Tue Jun 26 10:41:20 2007\n"
                                     "language  ja-JP \\(0x0411\\)\n"
                                     "time      [0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z\n"
                                     "ink       yes\n"
                                     "card 0    .Storage Card: .* bytes\\)\n"));
  const Ended json = AtRest({card_.path()}, {"info", "--json"});
  EXPECT_EQ(json.code, 0);
  EXPECT_THAT(json.out, HasSubstr("\"language\":{\"tag\":\"ja-JP\",\"id\":1041}"));
  EXPECT_THAT(json.out,
              HasSubstr("\"ink\":true,\"cards\":[{\"card\":0,\"directory\":\"\\\\Storage Card\"," +
                        Json(truth_) + "}]}\n"));
}

TEST_F(DesktopDevice, TellsThatThereIsNoInkAndNoCard) {
  ce::host::Handheld::Open(handheld_, "a test")->Set(u"RichInk", ce::DWORD{0});
  StartAgent(handheld_);
  const Ended info = Desktop({"info"});
  EXPECT_EQ(info.code, 0);
  EXPECT_THAT(info.out, HasSubstr("ink       no\ncards     none\n"));
  EXPECT_EQ(Desktop({"cards"}).out, "no storage cards\n");
  EXPECT_EQ(Desktop({"storage"}).out, "no storage cards\n");
  EXPECT_EQ(Desktop({"cards", "--json"}).out, "");
}

// A volume that nobody writes to.
const fs::path kDevices = "/dev";

TEST_F(DesktopDevice, TellsTheRoomAsTheSystemHasIt) {
  MakeCard("A", card_.path());
  MakeCard("B", kDevices);
  fs::create_directory(Root() / "Notes");
  StartAgent(handheld_);
  const Ended all = AtRest({card_.path(), kDevices}, {"storage", "--json"});
  EXPECT_EQ(all.code, 0);
  EXPECT_EQ(all.out, "{" + Json(truth_) + "}\n");
  for (const std::string path : {"\\Notes", "/Notes", "notes", "\\"}) {
    const Ended own = AtRest({Root()}, {"storage", path, "--json"});
    EXPECT_EQ(own.out, "{" + Json(truth_) + "}\n") << path;
  }
  const Ended card = AtRest({kDevices}, {"storage", "/B", "--json"});
  EXPECT_EQ(card.out, "{" + Json(truth_) + "}\n");
  const Ended lines = AtRest({Root()}, {"storage", "/Notes"});
  EXPECT_THAT(lines.out, HasSubstr(Text(truth_)));
}

TEST_F(DesktopDevice, ListsTheCards) {
  MakeCard("B", SourcePath("."));
  MakeCard("A", card_.path());
  StartAgent(handheld_);
  const Ended cards = Desktop({"cards"});
  EXPECT_EQ(cards.code, 0);
  EXPECT_THAT(cards.out, MatchesRegex("0  .A: .*\n1  .B: .*\n"));
  const Ended json = AtRest({SourcePath(".")}, {"cards", "--json"});
  EXPECT_THAT(json.out, HasSubstr("{\"card\":1,\"directory\":\"\\\\B\"," + Json(truth_) + "}\n"));
}

TEST_F(DesktopDevice, SaysWhatIsWrongWithADirectory) {
  StartAgent(handheld_);
  const std::pair<std::string, std::string> cases[] = {
      {"\\Nowhere", "corvane-desktop: there is no directory \\Nowhere on the handheld\n"},
      {"\\a?", "corvane-desktop: \\a? is no path of the handheld\n"}};
  for (const auto& [path, message] : cases) {
    const Ended storage = Desktop({"storage", path});
    EXPECT_EQ(storage.code, 1);
    EXPECT_EQ(storage.err, message);
    EXPECT_EQ(storage.out, "");
  }
}

}  // namespace
}  // namespace corvane::testing
