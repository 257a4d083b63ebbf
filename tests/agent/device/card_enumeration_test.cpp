#include "agent/device/card_enumeration.h"

#include <fstream>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"
#include "tests/agent/device/device_support.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ce::host::FaultPlan;

class CardEnumeration : public DeviceTest {
 protected:
  void MakeCard(const std::string& name) const { DeviceTest::MakeCard(name, target_.path()); }
  static std::string PathOf(ce::LONG index, ce::DWORD characters = 260) {
    std::u16string path(characters + 1, u'#');
    const bool found = GetCardPath(index, path.data(), characters);
    EXPECT_EQ(path.back(), u'#') << "written past its end";
    const std::u16string text = path.c_str();
    if (!found) {
      EXPECT_EQ(text, u"");
      return "none";
    }
    return text::ToUtf8Lossy(text);
  }

  const TemporaryDirectory target_;
};

TEST_F(CardEnumeration, FindsNoCardInAnEmptyRoot) {
  ce::WIN32_FIND_DATAW card;
  EXPECT_EQ(FindFirstCard(&card), ce::INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetCardCount(), 0);
  EXPECT_EQ(PathOf(0), "none");
}

TEST_F(CardEnumeration, TakesNeitherADirectoryNorAFileForACard) {
  fs::create_directory(Root() / "directory");
  std::ofstream(Root() / "file");
  fs::create_symlink(handheld_.directory() / "registry.reg", Root() / "link");
  EXPECT_EQ(GetCardCount(), 0);
  MakeCard("card");
  EXPECT_EQ(GetCardCount(), 1);
  EXPECT_EQ(PathOf(0), "\\card");
  EXPECT_EQ(PathOf(1), "none");
}

TEST_F(CardEnumeration, FindsNoCardBelowTheRoot) {
  fs::create_directory(Root() / "directory");
  MakeCard("directory/card");
  EXPECT_EQ(GetCardCount(), 0);
}

TEST_F(CardEnumeration, WalksTheCardsInAStableOrder) {
  for (const char* name : {"Storage Card2", "CF Card", "storage card"}) MakeCard(name);
  fs::create_directory(Root() / "Dokumente");
  std::ofstream(Root() / "Z file");
  EXPECT_EQ(GetCardCount(), 3);
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(PathOf(0), "\\CF Card");
    EXPECT_EQ(PathOf(1), "\\storage card");
    EXPECT_EQ(PathOf(2), "\\Storage Card2");
    EXPECT_EQ(PathOf(3), "none");
  }
}

TEST_F(CardEnumeration, ClosesItsSearchBehindTheLastCard) {
  MakeCard("a");
  MakeCard("b");
  ce::WIN32_FIND_DATAW card;
  const ce::HANDLE search = FindFirstCard(&card);
  ASSERT_NE(search, ce::INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::u16string(card.cFileName), u"a");
  EXPECT_TRUE(FindNextCard(search, &card));
  EXPECT_EQ(std::u16string(card.cFileName), u"b");
  EXPECT_FALSE(FindNextCard(search, &card));
  EXPECT_FALSE(ce::FindClose(search)) << "it has been closed";
}

TEST_F(CardEnumeration, ClosesEverySearchThatItBegins) {
  for (const char* name : {"a", "b", "c"}) MakeCard(name);
  const auto plan = FaultPlan::CountOnly("FindClose");
  EXPECT_EQ(GetCardCount(), 3);
  EXPECT_EQ(plan.calls(), 1u);
  for (const ce::LONG index : {0, 1, 2, 3}) PathOf(index);
  EXPECT_EQ(plan.calls(), 5u);
}

TEST_F(CardEnumeration, WritesAPathOfTheLongestName) {
  const std::string longest(255, 'n');
  MakeCard(longest);
  EXPECT_EQ(PathOf(0), "\\" + longest);
}

TEST_F(CardEnumeration, CutsANameToTheBuffer) {
  MakeCard("Storage Card");
  EXPECT_EQ(PathOf(0, 14), "\\Storage Card");
  EXPECT_EQ(PathOf(0, 13), "\\Storage Car");
  EXPECT_EQ(PathOf(0, 2), "\\");
}

TEST_F(CardEnumeration, KnowsNoCardWhenTheRootCannotBeRead) {
  MakeCard("a");
  MakeCard("b");
  {
    const auto plan = FaultPlan::FailCalls("FindFirstFileW", ce::ERROR_READ_FAULT);
    EXPECT_EQ(GetCardCount(), 0);
    EXPECT_EQ(PathOf(0), "none");
  }
  const auto plan = FaultPlan::FailCalls("FindNextFileW", ce::ERROR_READ_FAULT);
  EXPECT_EQ(GetCardCount(), 1);
  EXPECT_EQ(PathOf(0), "\\a");
  EXPECT_EQ(PathOf(1), "none");
}

}  // namespace
}  // namespace corvane::testing
