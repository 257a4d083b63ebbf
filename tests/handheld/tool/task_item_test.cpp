#include "handheld/tool/records.h"

#include <gmock/gmock.h>

#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using formats::Task;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class TaskItem : public ItemTest {};

Task Shopping() {
  Task task;
  task.subject = "Shopping";
  task.due = Day(2008, 2, 15);
  return task;
}

TEST_F(TaskItem, KeepsEveryField) {
  Task task = Shopping();
  task.body = "milk\nbread";
  task.categories = {"Home"};
  task.start = Day(2008, 2, 14);
  task.reminder = At(Day(2008, 2, 15), 8, 30);
  task.isPrivate = true;
  task.complete = true;
  task.completed = Day(2008, 2, 16);
  task.importance = formats::Importance::kHigh;
  task.pattern = calendar::PatternFrom(calendar::PatternType::kMonthly, Day(2008, 2, 14));
  EXPECT_EQ(StoreAndRead(task), task);
  EXPECT_THAT(notKept_, IsEmpty());
}

TEST_F(TaskItem, KeepsWhatIsMissingMissing) {
  Task bare;
  EXPECT_EQ(StoreAndRead(bare), bare);
}

TEST_F(TaskItem, DoesNotStampACompletedOneWithToday) {
  Task task = Shopping();
  task.complete = true;
  EXPECT_EQ(StoreAndRead(task).completed, std::nullopt);
  EXPECT_TRUE(OnlyRecord<Task>(*session_).complete);
}

TEST_F(TaskItem, BecomesOpenAndSingleAgain) {
  const auto item = New<Task>();
  Task task = Shopping();
  task.complete = true;
  task.completed = Day(2008, 2, 16);
  task.pattern = calendar::PatternFrom(calendar::PatternType::kDaily, Day(2008, 2, 15));
  StoreIn(task, *item.get());
  StoreIn(Shopping(), *item.get());
  EXPECT_EQ(OnlyRecord<Task>(*session_), Shopping());
}

TEST_F(TaskItem, CountsASeriesFromItsStartElseFromWhenItIsDue) {
  Task task = Shopping();
  task.pattern = calendar::PatternFrom(calendar::PatternType::kDaily, Day(2008, 2, 15));
  task.pattern->occurrences = 3;
  const auto item = New<Task>();
  StoreIn(task, *item.get());
  EXPECT_EQ(OnlyRecord<Task>(*session_).pattern->until, Day(2008, 2, 17));
  task.start = Day(2008, 2, 10);
  StoreIn(task, *item.get());
  EXPECT_EQ(OnlyRecord<Task>(*session_).pattern->until, Day(2008, 2, 12));
}

TEST_F(TaskItem, KeepsASeriesOfATaskWithoutDates) {
  Task task;
  task.subject = "Water the plants";
  task.pattern = calendar::PatternFrom(calendar::PatternType::kDaily, Day(2008, 2, 15));
  EXPECT_EQ(StoreAndRead(task), task);
}

TEST_F(TaskItem, NamesWhatAHandheldDoesNotKeep) {
  Task task = Shopping();
  task.subject = std::string(5000, 'x');
  task.due = Day(3001, 1, 1);
  task.reminder = At(Day(1899, 12, 31), 8);
  task.pattern = calendar::PatternFrom(calendar::PatternType::kDaily, Day(2008, 2, 15));
  task.pattern->until = Day(1950, 1, 1);
  const Task stored = StoreAndRead(task);
  EXPECT_THAT(notKept_,
              ElementsAre(StartsWith("Subject: cut from 5000 to 4095 characters"),
                          "DueDate: 3001-01-01 is no date that a handheld keeps",
                          "ReminderTime: 1899-12-31T08:00:00 is no date that a handheld keeps",
                          "Recurrence: the series has no day that a handheld keeps"));
  EXPECT_EQ(stored.due, std::nullopt);
  EXPECT_EQ(stored.reminder, std::nullopt);
  EXPECT_EQ(stored.pattern, std::nullopt);
}

TEST_F(TaskItem, ReadsAReminderWithoutATimeAsNone) {
  const auto item = New<Task>();
  item->put_ReminderSet(ce::VARIANT_TRUE);
  ASSERT_EQ(item->Save(), ce::S_OK);
  EXPECT_EQ(OnlyRecord<Task>(*session_).reminder, std::nullopt);
}

}  // namespace
}  // namespace tool::testing
