#include "handheld/tool/kept_form.h"

#include <gtest/gtest.h>

#include "handheld/tool/imported_items.h"

namespace tool::testing {
namespace {

using calendar::PatternType;
using formats::Appointment;
using formats::local_days;
using formats::Task;

constexpr local_days kMonday{std::chrono::year{2008} / 2 / 18};
constexpr std::chrono::hours kNine{9};

// On Wednesdays.
Appointment Weekly(local_days start) {
  Appointment appointment;
  appointment.start = start + kNine;
  appointment.end = start + kNine + std::chrono::hours{1};
  calendar::Pattern pattern;
  pattern.type = PatternType::kWeekly;
  pattern.daysOfWeek = 8;
  appointment.series = {pattern, {}, {}};
  return appointment;
}

TEST(KeptForm, LeavesASingleAppointmentAsItIs) {
  Appointment single = Weekly(kMonday);
  single.series.reset();
  EXPECT_EQ(KeptForm(single), single);
}

TEST(KeptForm, BeginsASeriesWithItsFirstDay) {
  const local_days wednesday = kMonday + std::chrono::days{2};
  EXPECT_EQ(KeptForm(Weekly(kMonday)), Weekly(wednesday));
  EXPECT_EQ(KeptForm(Weekly(wednesday)), Weekly(wednesday));
}

TEST(KeptForm, SaysEveryEndAsTheLastDay) {
  Appointment counted = Weekly(kMonday);
  counted.series->pattern.occurrences = 3;
  Appointment dated = Weekly(kMonday);
  dated.series->pattern.until = local_days{std::chrono::year{2008} / 3 / 10};  // a Monday
  EXPECT_EQ(KeptForm(counted), KeptForm(dated));
  EXPECT_EQ(KeptForm(counted).series->pattern.until, local_days{std::chrono::year{2008} / 3 / 5});
}

TEST(KeptForm, HasNoSeriesWithoutADay) {
  Appointment never = Weekly(kMonday);
  never.series->pattern.until = kMonday;
  EXPECT_EQ(KeptForm(never).series, std::nullopt);
  Appointment nowhere = Weekly(kMonday);
  nowhere.start.reset();
  EXPECT_EQ(KeptForm(nowhere).series, std::nullopt);
}

TEST(KeptForm, CountsATaskFromItsStartElseFromWhenItIsDue) {
  Task task;
  task.pattern = calendar::PatternFrom(PatternType::kDaily, kMonday);
  task.pattern->occurrences = 2;
  EXPECT_EQ(KeptForm(task).pattern, std::nullopt) << "it begins whenever it is stored";
  task.due = kMonday;
  EXPECT_EQ(KeptForm(task).pattern->until, kMonday + std::chrono::days{1});
  task.start = kMonday - std::chrono::days{7};
  EXPECT_EQ(KeptForm(task).pattern->until, kMonday - std::chrono::days{6});
}

TEST(KeptForm, BeginsATaskWithItsFirstDay) {
  Task task;
  task.start = kMonday;
  task.due = kMonday + std::chrono::days{1};
  task.pattern = Weekly(kMonday).series->pattern;
  const Task kept = KeptForm(task);
  EXPECT_EQ(kept.start, kMonday + std::chrono::days{2});
  EXPECT_EQ(kept.due, kMonday + std::chrono::days{3});
}

TEST(KeptForm, EndsWhatHasNoEndWhenItStarts) {
  Appointment open = Weekly(kMonday);
  open.end.reset();
  formats::Occurrence nowhere;
  formats::Occurrence endless;
  endless.start = kMonday + kNine;
  open.series->changed = {{kMonday + std::chrono::days{2}, nowhere},
                          {kMonday + std::chrono::days{9}, endless}};
  const Appointment kept = KeptForm(open);
  EXPECT_EQ(kept.end, kept.start);
  ASSERT_EQ(kept.series->changed.size(), 1u);
  EXPECT_EQ(kept.series->changed[0].occurrence.end, endless.start);
}

TEST(RecordIdentity, IsTheUidElseTheContent) {
  Appointment appointment = Weekly(kMonday);
  EXPECT_EQ(IdentityOf(appointment).name, "content:" + IdentityOf(appointment).contentHash);
  const std::string hash = IdentityOf(appointment).contentHash;
  appointment.uid = "a@b";
  EXPECT_EQ(IdentityOf(appointment).name, "uid:a@b");
  EXPECT_EQ(IdentityOf(appointment).contentHash, hash);
}

TEST(RecordIdentity, IsTheSameForWhatAHandheldKeepsAlike) {
  Appointment counted = Weekly(kMonday);
  counted.series->pattern.occurrences = 1;
  Appointment dated = Weekly(kMonday + std::chrono::days{2});
  dated.series->pattern.until = kMonday + std::chrono::days{2};
  EXPECT_EQ(IdentityOf(counted).contentHash, IdentityOf(dated).contentHash);
}

}  // namespace
}  // namespace tool::testing
