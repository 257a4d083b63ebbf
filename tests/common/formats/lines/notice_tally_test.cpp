#include "common/formats/lines/notice_tally.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/common/formats/vcard/card_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(NoticeTally, CountsTheSameTextFromItsFirstLine) {
  NoticeTally tally;
  tally.Add(7, "b");
  tally.Add(3, "a");
  tally.Add(8, "b");
  EXPECT_THAT(Texts(tally.Release()), ElementsAre("3: a", "7: b (2 times)"));
}

TEST(NoticeTally, IsEmptyAfterwards) {
  NoticeTally tally;
  tally.Add(1, "a");
  tally.Release();
  EXPECT_THAT(tally.Release(), IsEmpty());
}

TEST(NoticeTally, BoundsTextsOfTheirOwn) {
  NoticeTally tally;
  for (int i = 1; i <= 300; ++i) tally.Add(static_cast<std::size_t>(i), std::to_string(i));
  tally.Add(400, "1");
  const std::vector<std::string> texts = Texts(tally.Release());
  ASSERT_EQ(texts.size(), 201u);
  EXPECT_EQ(texts.front(), "1: 1 (2 times)");
  EXPECT_EQ(texts.back(), "400: 100 more notices were left out");
}

}  // namespace
}  // namespace formats::testing
