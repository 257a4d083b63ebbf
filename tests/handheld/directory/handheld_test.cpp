#include "handheld/directory/handheld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "handheld/base/fault.h"
#include "handheld/directory/handheld_migration.h"
#include "handheld/registry/registry_store.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using namespace ce;
using host::Handheld;
using host::HandheldError;
using host::HandheldSettings;
using host::Migration;
using host::RegistryValue;
using ::testing::HasSubstr;

// What the operation says when it fails; empty when it does not.
template <typename Operation>
std::string ErrorOf(Operation&& operation) {
  try {
    operation();
  } catch (const HandheldError& error) {
    return error.what();
  }
  return {};
}

class HandheldDirectory : public ::testing::Test {
 protected:
  fs::path Path() const { return directory_ / "device"; }
  std::string CreateError() {
    return ErrorOf([this] { Handheld::Create(Path(), {}); });
  }
  std::string OpenError() {
    return ErrorOf([this] { Handheld::Open(Path(), "test"); });
  }

  testing::TemporaryDirectory directory_;
};

using HandheldCreate = HandheldDirectory;
using HandheldOpen = HandheldDirectory;

TEST_F(HandheldCreate, MakesADirectoryThatOpens) {
  Handheld::Create(Path(), {0x0411, 4, 21, "Asia/Tokyo", 0x80000000});
  const auto handheld = Handheld::Open(Path(), "test");
  EXPECT_EQ(handheld->Number(host::setting::kFormatVersion, 0), Handheld::kFormatVersion);
  EXPECT_EQ(handheld->Number(host::setting::kLanguage, 0), 0x0411u);
  EXPECT_EQ(handheld->Number(host::setting::kOsMajor, 0), 4u);
  EXPECT_EQ(handheld->Number(host::setting::kOsMinor, 0), 21u);
  EXPECT_EQ(handheld->Text(host::setting::kZone, u""), u"Asia/Tokyo");
  EXPECT_EQ(handheld->Number(host::setting::kFirstOid, 0), 0x80000000);
  EXPECT_TRUE(fs::is_directory(handheld->filesRoot()));
  EXPECT_FALSE(fs::exists(handheld->storePath())) << "made by its first user";
}

TEST_F(HandheldCreate, LetsNobodyElseLookIn) {
  Handheld::Create(Path(), {});
  EXPECT_EQ(fs::status(Path()).permissions(), fs::perms::owner_all);
}

TEST_F(HandheldCreate, TakesAnEmptyDirectory) {
  fs::create_directory(Path());
  EXPECT_EQ(CreateError(), "");
  EXPECT_EQ(OpenError(), "");
}

TEST_F(HandheldCreate, RefusesADirectoryThatHoldsSomething) {
  fs::create_directory(Path());
  directory_.Write("device/letter.txt", "dear");
  EXPECT_THAT(CreateError(), HasSubstr("is not empty"));
  EXPECT_EQ(directory_.Read("device/letter.txt"), "dear");
  EXPECT_FALSE(fs::exists(Path() / "files"));
}

TEST_F(HandheldCreate, RefusesAFileAndAMissingParent) {
  directory_.Write("device", "");
  EXPECT_THAT(CreateError(), HasSubstr("cannot be made"));
  fs::remove(Path());
  EXPECT_THAT(ErrorOf([this] { Handheld::Create(Path() / "deeper", {}); }),
              HasSubstr("cannot be made"));
}

TEST_F(HandheldCreate, RefusesANameThatIsNoZone) {
  HandheldSettings settings;
  for (const char* zone : {"", "/etc/passwd", "../../etc/passwd", "Europe/../UTC", "a b"}) {
    settings.zone = zone;
    EXPECT_THAT(ErrorOf([&] { Handheld::Create(Path(), settings); }), HasSubstr("time zone"));
    EXPECT_FALSE(fs::exists(Path()));
  }
}

TEST_F(HandheldCreate, LeavesNothingWhenItFails) {
  const auto plan = host::FaultPlan::FailCalls("ReplaceFile", ERROR_DISK_FULL);
  EXPECT_THAT(CreateError(), HasSubstr("cannot be written"));
  EXPECT_FALSE(fs::exists(Path()));
  fs::create_directory(Path());
  EXPECT_THAT(CreateError(), HasSubstr("cannot be written"));
  EXPECT_TRUE(fs::is_empty(Path())) << "the directory was there before";
}

TEST_F(HandheldOpen, SaysWhatIsWrongWithTheDirectory) {
  EXPECT_THAT(OpenError(), HasSubstr("No such file or directory"));
  directory_.Write("device", "");
  EXPECT_THAT(OpenError(), HasSubstr("is not a directory"));
  fs::remove(Path());
  fs::create_directory(Path());
  EXPECT_THAT(OpenError(), HasSubstr("is not a handheld"));
  directory_.Write("device/registry.reg", "Windows Registry Editor Version 5.00\r\n");
  EXPECT_THAT(OpenError(), HasSubstr("no directory \"files\""));
  fs::create_directory(Path() / "files");
  EXPECT_THAT(OpenError(), HasSubstr("names no format version"));
}

TEST_F(HandheldOpen, NamesTheDamagedLineOfTheRegistry) {
  Handheld::Create(Path(), {});
  directory_.Write("device/registry.reg", directory_.Read("device/registry.reg") + "rubbish\r\n");
  EXPECT_THAT(OpenError(), HasSubstr("registry.reg is damaged in line"));
}

TEST_F(HandheldOpen, SaysThatTheRegistryCannotBeRead) {
  Handheld::Create(Path(), {});
  fs::remove(Path() / "registry.reg");
  fs::create_directory(Path() / "registry.reg");
  EXPECT_THAT(OpenError(), HasSubstr("registry.reg cannot be read: Is a directory"));
}

TEST_F(HandheldOpen, LocksTheDirectoryAndSaysWhoHasIt) {
  Handheld::Create(Path(), {});
  auto first = Handheld::Open(Path(), "corvane");
  EXPECT_EQ(OpenError(),
            Path().string() + " is in use by corvane (process " + std::to_string(::getpid()) + ")");
  first.reset();
  EXPECT_EQ(OpenError(), "");
}

TEST_F(HandheldOpen, StaysLockedWithoutTheFileThatNamesTheHolder) {
  Handheld::Create(Path(), {});
  auto first = Handheld::Open(Path(), "corvane");
  fs::remove(Path() / ".lock");
  EXPECT_EQ(OpenError(), Path().string() + " is in use by another program");
  EXPECT_EQ(OpenError(), Path().string() + " is in use by another program");
  first.reset();
  EXPECT_EQ(OpenError(), "");
}

TEST_F(HandheldOpen, TakesOverFromAProgramThatDied) {
  Handheld::Create(Path(), {});
  directory_.Write("device/.lock", "1 corvane\n");
  EXPECT_EQ(OpenError(), "");
}

TEST_F(HandheldOpen, RefusesANewerFormat) {
  Handheld::Create(Path(), {});
  Handheld::Open(Path(), "test")->Set(host::setting::kFormatVersion, Handheld::kFormatVersion + 1);
  EXPECT_THAT(OpenError(), HasSubstr("has format 2; this program knows formats up to 1"));
}

TEST_F(HandheldOpen, RefusesAFormatThatNeverWas) {
  Handheld::Create(Path(), {});
  Handheld::Open(Path(), "test")->Set(host::setting::kFormatVersion, DWORD{0});
  EXPECT_THAT(OpenError(), HasSubstr("cannot be brought up to date"));
}

class HandheldMigration : public HandheldDirectory {
 protected:
  void SetUp() override {
    ASSERT_EQ(registry_.SetValue(host::setting::kKey, host::setting::kFormatVersion,
                                 RegistryValue::Number(1)),
              0u);
  }
  DWORD Version() const {
    return *registry_.Value(host::setting::kKey, host::setting::kFormatVersion)->AsNumber();
  }

  host::Registry registry_{directory_ / "registry.reg"};
};

constexpr std::array<Migration, 2> kSteps = {
    Migration{2,
              [](const fs::path&, host::Registry& registry) {
                ASSERT_EQ(registry.SetValue(u"Steps", u"2", RegistryValue::Number(2)), 0u);
              }},
    Migration{1, [](const fs::path&, host::Registry& registry) {
                ASSERT_EQ(registry.SetValue(u"Steps", u"1", RegistryValue::Number(1)), 0u);
              }}};
constexpr std::array<Migration, 2> kFailingSecondStep = {
    kSteps[1], Migration{2, [](const fs::path&, host::Registry&) { throw HandheldError("no"); }}};

TEST_F(HandheldMigration, RunsEachStepUpToTheTarget) {
  host::MigrateHandheld(Path(), registry_, 3, kSteps);
  EXPECT_EQ(Version(), 3u);
  EXPECT_EQ(registry_.Values(u"Steps").size(), 2u);
}

TEST_F(HandheldMigration, RunsNothingOnThePresentFormat) {
  host::MigrateHandheld(Path(), registry_, 1, kSteps);
  EXPECT_EQ(Version(), 1u);
  EXPECT_TRUE(registry_.Values(u"Steps").empty());
}

TEST_F(HandheldMigration, GoesOnWhereAFailedOneStopped) {
  EXPECT_EQ(ErrorOf([this] { host::MigrateHandheld(Path(), registry_, 3, kFailingSecondStep); }),
            "no");
  EXPECT_EQ(Version(), 2u);
  host::MigrateHandheld(Path(), registry_, 3, kSteps);
  EXPECT_EQ(Version(), 3u);
}

TEST_F(HandheldMigration, StoresTheVersionOrFails) {
  const auto plan = host::FaultPlan::FailNthCall("ReplaceFile", 2, ERROR_DISK_FULL);
  EXPECT_THAT(ErrorOf([this] { host::MigrateHandheld(Path(), registry_, 2, kSteps); }),
              HasSubstr("cannot be written"));
  EXPECT_EQ(Version(), 1u);
}

class HandheldSettingsTest : public testing::HandheldTest {};

TEST_F(HandheldSettingsTest, FallBackWhenMissingOrOfAnotherType) {
  EXPECT_EQ(handheld_->Number(host::setting::kPeerTimeout, 600), 600u);
  EXPECT_EQ(handheld_->Number(host::setting::kZone, 7), 7u);
  EXPECT_EQ(handheld_->Text(host::setting::kOwner, u"nobody"), u"nobody");
  EXPECT_EQ(handheld_->Text(host::setting::kLanguage, u"none"), u"none");
}

TEST_F(HandheldSettingsTest, StayWhenTheHandheldIsOpenedAgain) {
  handheld_->Set(host::setting::kOwner, u"Ada Müller");
  handheld_->Set(host::setting::kPeerTimeout, DWORD{5});
  handheld_.Reopen();
  EXPECT_EQ(handheld_->Text(host::setting::kOwner, u""), u"Ada Müller");
  EXPECT_EQ(handheld_->Number(host::setting::kPeerTimeout, 0), 5u);
}

TEST_F(HandheldSettingsTest, ThrowWhenTheyCannotBeStored) {
  const auto plan = host::FaultPlan::FailCalls("ReplaceFile", ERROR_DISK_FULL);
  EXPECT_THROW(handheld_->Set(host::setting::kPeerTimeout, DWORD{5}), HandheldError);
}

TEST(HandheldCurrent, IsNullOutsideASession) {
  EXPECT_EQ(Handheld::Current(), nullptr);
  {
    const testing::TestHandheld handheld;
    EXPECT_NE(Handheld::Current(), nullptr);
  }
  EXPECT_EQ(Handheld::Current(), nullptr);
}

TEST(TestHandheldDirectory, IsGoneAfterTheTest) {
  fs::path directory;
  {
    const testing::TestHandheld handheld;
    directory = handheld.directory();
    EXPECT_TRUE(fs::exists(directory / "registry.reg"));
  }
  EXPECT_FALSE(fs::exists(directory));
}

}  // namespace
}  // namespace corvane
