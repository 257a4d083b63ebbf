#include "handheld/system/language.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <set>

namespace corvane {
namespace {

using ce::LANGID;
using ce::host::FindLanguage;
using ce::host::HostLanguage;

LANGID IdOf(std::string_view tag) {
  const ce::host::Language* language = FindLanguage(tag);
  return language ? language->id : LANGID{0};
}

TEST(FindLanguage, KnowsTagsInAnyForm) {
  EXPECT_EQ(IdOf("en-US"), 0x0409);
  EXPECT_EQ(IdOf("de-DE"), 0x0407);
  EXPECT_EQ(IdOf("ja_JP"), 0x0411);
  EXPECT_EQ(IdOf("PT-br"), 0x0416);
  EXPECT_EQ(IdOf("pt"), 0x0416);
  EXPECT_EQ(IdOf("de"), 0x0407);
  EXPECT_EQ(IdOf("en"), 0x0409);
  EXPECT_EQ(IdOf("no"), 0x0414);
  EXPECT_EQ(IdOf("no_NO"), 0x0414);
}

TEST(FindLanguage, TakesTheLanguageForAnUnknownRegion) {
  EXPECT_EQ(IdOf("de-LI"), 0x0407);
  EXPECT_EQ(IdOf("es-PE"), 0x0C0A);
}

TEST(FindLanguage, DoesNotKnowEverything) {
  for (const char* tag : {"", "-", "x", "tlh", "deutsch", "C", "POSIX"}) {
    EXPECT_EQ(FindLanguage(tag), nullptr) << tag;
  }
  EXPECT_EQ(FindLanguage(LANGID{0}), nullptr);
  EXPECT_EQ(FindLanguage(LANGID{0x0407})->tag, "de-DE");
}

TEST(Languages, NamesEachOnce) {
  std::set<LANGID> ids;
  std::set<std::string_view> tags;
  for (const ce::host::Language& language : ce::host::Languages()) {
    EXPECT_TRUE(ids.insert(language.id).second) << language.tag;
    EXPECT_TRUE(tags.insert(language.tag).second) << language.tag;
    EXPECT_EQ(FindLanguage(language.tag)->id, language.id);
  }
}

class HostLanguageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) ::unsetenv(name);
  }
  void TearDown() override { SetUp(); }
};

TEST_F(HostLanguageTest, IsEnglishWhenNothingIsSaid) {
  EXPECT_EQ(HostLanguage(), 0x0409);
  ::setenv("LANG", "C.UTF-8", 1);
  EXPECT_EQ(HostLanguage(), 0x0409);
}

TEST_F(HostLanguageTest, TakesTheStrongestVariable) {
  ::setenv("LANG", "de_DE.UTF-8", 1);
  EXPECT_EQ(HostLanguage(), 0x0407);
  ::setenv("LC_MESSAGES", "fr_CH@euro", 1);
  EXPECT_EQ(HostLanguage(), 0x100C);
  ::setenv("LC_ALL", "ja_JP", 1);
  EXPECT_EQ(HostLanguage(), 0x0411);
  ::setenv("LC_ALL", "", 1);
  EXPECT_EQ(HostLanguage(), 0x100C) << "an empty variable says nothing";
}

}  // namespace
}  // namespace corvane
