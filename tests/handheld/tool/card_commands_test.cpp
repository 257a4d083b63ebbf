#include "handheld/tool/card_commands.h"

#include <nlohmann/json.hpp>

#include "platform/find_files.h"
#include "tests/handheld/tool/maintenance_support.h"

namespace tool::testing {
namespace {

namespace fs = std::filesystem;

class CardCommands : public MaintenanceTest {
 protected:
  CardCommands() {
    Init();
    fs::create_directories(directory_ / "sd");
    fs::create_directories(directory_ / "cf");
  }
  std::string Add(const std::string& name, const fs::path& target) {
    const auto add = [&](Session& session, const Report& report) {
      return AddCard(session, name, target, report);
    };
    EXPECT_EQ(Run(add), Outcome::kDone);
    return out_;
  }
  Outcome Remove(const std::string& name) {
    return Run(
        [&](Session& session, const Report& report) { return RemoveCard(session, name, report); });
  }
  std::string List() {
    EXPECT_EQ(Run(ShowCards), Outcome::kDone);
    return out_;
  }
  std::string Info(bool json) {
    Run([&](Session& session, const Report& report) {
      return ShowHandheld(session, json ? AsJson(report) : report);
    });
    return out_;
  }
  fs::path Files() const { return HandheldPath() / "files"; }
  std::string Target(const std::string& name) const {
    return fs::canonical(directory_ / name).string();
  }
};

TEST_F(CardCommands, AddsACardThatTheDeviceSees) {
  EXPECT_EQ(Add("Storage Card", directory_ / "sd"), "Storage Card -> " + Target("sd") + "\n");
  Session session(HandheldPath());
  ce::WIN32_FIND_DATAW found;
  const ce::HANDLE search = ce::FindFirstFileW(u"\\Storage Card", &found);
  ASSERT_NE(search, ce::INVALID_HANDLE_VALUE);
  EXPECT_TRUE(found.dwFileAttributes & ce::FILE_ATTRIBUTE_TEMPORARY);
  ce::FindClose(search);
}

TEST_F(CardCommands, ListsCardsByNameAndSaysWhichAreOut) {
  EXPECT_EQ(List(), "0 cards\n");
  Add("b", directory_ / "sd");
  Add("A", directory_ / "cf");
  fs::create_directory(Files() / "plain");
  EXPECT_EQ(List(), "A -> " + Target("cf") + "\nb -> " + Target("sd") + "\n2 cards\n");
  const std::string out = Target("cf");
  fs::remove(directory_ / "cf");
  EXPECT_EQ(List(), "A -> " + out + "  (taken out)\nb -> " + Target("sd") + "\n2 cards\n");
}

TEST_F(CardCommands, TakesARelativeDirectoryForWhatItIsNow) {
  const fs::path here = fs::current_path();
  fs::current_path(directory_);
  Add("Card", "sd");
  fs::current_path(here);
  EXPECT_EQ(fs::read_symlink(Files() / "Card"), Target("sd"));
}

TEST_F(CardCommands, RefusesNamesThatNoCardCanHave) {
  for (const char* name : {"", ".", "..", "../sd", "a/b", "a\\b", "\\Card", "a*", "NUL", "a\xFF"})
    EXPECT_THROW(Add(name, directory_ / "sd"), UsageError) << name;
  EXPECT_EQ(List(), "0 cards\n");
}

TEST_F(CardCommands, RefusesANameThatIsTaken) {
  Add("Card", directory_ / "sd");
  EXPECT_THROW(Add("CARD", directory_ / "cf"), UsageError);
  WriteFile("handheld/files/Plain", "x");
  EXPECT_THROW(Add("plain", directory_ / "cf"), UsageError);
  EXPECT_EQ(fs::read_symlink(Files() / "Card"), Target("sd"));
}

TEST_F(CardCommands, RefusesWhatIsNoDirectoryOrHoldsTheHandheld) {
  const fs::path wrong[] = {
      directory_ / "absent", WriteFile("file", "x"), HandheldPath(), Files(), directory_, "/"};
  for (const fs::path& target : wrong) EXPECT_THROW(Add("Card", target), UsageError) << target;
  fs::create_directory_symlink(HandheldPath(), directory_ / "around");
  EXPECT_THROW(Add("Card", directory_ / "around"), UsageError);
  EXPECT_EQ(List(), "0 cards\n");
}

TEST_F(CardCommands, RemovesTheLinkAndNothingElse) {
  Add("Card", directory_ / "sd");
  WriteFile("sd/photo", "x");
  EXPECT_EQ(Remove("card"), Outcome::kDone);
  EXPECT_EQ(out_, "removed Card\n");
  EXPECT_FALSE(fs::exists(fs::symlink_status(Files() / "Card")));
  EXPECT_EQ(ReadFile(directory_ / "sd" / "photo"), "x");
}

TEST_F(CardCommands, RemovesACardThatIsTakenOut) {
  Add("Card", directory_ / "sd");
  fs::remove(directory_ / "sd");
  EXPECT_EQ(Remove("Card"), Outcome::kDone);
  EXPECT_EQ(List(), "0 cards\n");
}

TEST_F(CardCommands, RemovesNothingButCards) {
  fs::create_directory(Files() / "plain");
  EXPECT_EQ(Remove("plain"), Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: plain: no such card\n");
  EXPECT_EQ(Remove("../files"), Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: ../files: no such card\n");
  EXPECT_TRUE(fs::exists(Files() / "plain"));
}

TEST_F(CardCommands, AreNamedByInfo) {
  Add("Card", directory_ / "sd");
  EXPECT_NE(Info(false).find("Cards       Card\n"), std::string::npos) << out_;
  fs::remove(directory_ / "sd");
  const auto card = nlohmann::json::parse(Info(true))["cards"][0];
  EXPECT_EQ(card["name"], "Card");
  EXPECT_EQ(card["present"], false);
  EXPECT_NE(Info(false).find("Cards       Card (taken out)\n"), std::string::npos) << out_;
}

}  // namespace
}  // namespace tool::testing
