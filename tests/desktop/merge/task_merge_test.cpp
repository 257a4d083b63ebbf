#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "tests/desktop/merge/merge_support.h"

namespace desktop::testing {
namespace {

using std::chrono::days;
using std::chrono::local_days;

local_days March(int day) {
  return local_days{std::chrono::year{2008} / 3 / 1} + days{day - 1};
}

Task Milk() {
  Task task;
  task.subject = "Buy milk";
  return task;
}

Task DueOn(Task task, int day) {
  task.due = March(day);
  return task;
}

Task DoneOn(Task task, std::optional<local_days> day) {
  task.complete = true;
  task.completed = day;
  return task;
}

Task Daily(Task task) {
  task.pattern = calendar::Pattern();
  return task;
}

TEST(TaskMerge, FieldsOfBothSidesComeTogether) {
  Task handheld = DueOn(Milk(), 5);
  handheld.reminder = March(5);
  handheld.importance = formats::Importance::kHigh;
  Task desk = Milk();
  desk.body = "two";
  Task both = handheld;
  both.body = "two";
  ExpectAgreed(MergeOf(Milk(), desk, handheld), both);
}

TEST(TaskMerge, StartAndDueAreFieldsOfTheirOwn) {
  Task desk = Milk();
  desk.start = March(3);
  Task both = desk;
  both.due = March(5);
  ExpectAgreed(MergeOf(Milk(), desk, DueOn(Milk(), 5)), both);
}

TEST(TaskMerge, CompleteTravelsWithItsDay) {
  ExpectAgreed(MergeOf(Milk(), DueOn(Milk(), 5), DoneOn(Milk(), March(4))),
               DoneOn(DueOn(Milk(), 5), March(4)));
  EXPECT_EQ(MergeOf(Milk(), DoneOn(Milk(), March(4)), DoneOn(Milk(), March(6))).conflicts,
            (Conflicts{{"Complete", "on 2008-03-04", "on 2008-03-06"}}));
}

TEST(TaskMerge, OpenedAgainHasNoDay) {
  const Task done = DoneOn(Milk(), March(4));
  ExpectAgreed(MergeOf(done, Milk(), done), Milk());
}

TEST(TaskMerge, JoinedAnOpenOneYieldsToACompleteOne) {
  ExpectAgreed(MergeOfJoined(Milk(), DoneOn(Milk(), March(4))), DoneOn(Milk(), March(4)));
}

TEST(TaskMerge, ARuleKeepsItsDay) {
  const Task base = DueOn(Milk(), 5);
  const Task handheld = Daily(base);
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(base, Milk(), handheld, winner);
    const Task expected = winner == Winner::kDesk ? Milk() : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts, (Conflicts{{"Recurrence", "", "daily"}}));
  }
}

}  // namespace
}  // namespace desktop::testing
