#include "common/calendar/pattern_words.h"

#include <gtest/gtest.h>

namespace calendar::testing {
namespace {

struct WordsCase {
  Pattern pattern;
  const char* words;
};

TEST(PatternWords, SaysEachType) {
  const WordsCase cases[] = {
      {{PatternType::kDaily, 1, 0, 0, 0, 0, {}, {}}, "daily"},
      {{PatternType::kDaily, 3, 0, 0, 0, 0, {}, {}}, "every 3 days"},
      {{PatternType::kWeekly, 1, 10, 0, 0, 0, {}, {}}, "weekly on Mon, Wed"},
      {{PatternType::kWeekly, 2, 64, 0, 0, 0, {}, {}}, "every 2 weeks on Sat"},
      {{PatternType::kMonthly, 1, 0, 31, 0, 0, {}, {}}, "monthly on day 31"},
      {{PatternType::kMonthNth, 2, 32, 0, 5, 0, {}, {}}, "every 2 months on the last Fri"},
      {{PatternType::kMonthNth, 1, 62, 0, 1, 0, {}, {}}, "monthly on the first weekday"},
      {{PatternType::kMonthNth, 1, 65, 0, 2, 0, {}, {}}, "monthly on the second weekend day"},
      {{PatternType::kMonthNth, 1, 127, 0, 3, 0, {}, {}}, "monthly on the third day"},
      {{PatternType::kMonthNth, 1, 3, 0, 4, 0, {}, {}}, "monthly on the fourth Sun or Mon"},
      {{PatternType::kYearly, 1, 0, 25, 0, 12, {}, {}}, "yearly on 25 Dec"},
      {{PatternType::kYearNth, 1, 1, 0, 5, 3, {}, {}}, "yearly on the last Sun of Mar"},
  };
  for (const WordsCase& each : cases) EXPECT_EQ(PatternWords(each.pattern), each.words);
}

TEST(PatternWords, SaysWhenItEnds) {
  Pattern pattern;
  pattern.until = calendar::local_days{std::chrono::year{2008} / 6 / 30};
  EXPECT_EQ(PatternWords(pattern), "daily until 2008-06-30");
  pattern.until.reset();
  pattern.occurrences = 10;
  EXPECT_EQ(PatternWords(pattern), "daily, 10 times");
}

TEST(PatternWords, SaysLittleOfOneThatIsNotValid) {
  Pattern pattern;
  pattern.type = PatternType::kYearNth;
  EXPECT_EQ(PatternWords(pattern), "recurring");
  pattern.type = static_cast<PatternType>(4);
  EXPECT_EQ(PatternWords(pattern), "recurring");
}

}  // namespace
}  // namespace calendar::testing
