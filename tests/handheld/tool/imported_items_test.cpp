#include "handheld/tool/imported_items.h"

#include <gtest/gtest.h>

namespace tool::testing {
namespace {

using formats::Appointment;
using formats::local_days;

constexpr local_days kMonday{std::chrono::year{2008} / 2 / 18};

// On Wednesdays.
Appointment Weekly(local_days start) {
  Appointment appointment;
  appointment.start = start + std::chrono::hours{9};
  appointment.end = start + std::chrono::hours{10};
  appointment.series =
      formats::Series{{.type = calendar::PatternType::kWeekly, .daysOfWeek = 8}, {}, {}};
  return appointment;
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

// A handheld remembers them from one version to the next.
TEST(RecordIdentity, StaysTheSameOverVersions) {
  formats::Contact contact;
  contact[formats::ContactField::kFirstName] = "Ada \"A\"";
  contact[formats::ContactField::kLastName] = "Lovelace";
  contact[formats::ContactField::kBody] = "one\r\ntwo\t\x01\\";
  contact.categories = {"x", "y"};
  contact.birthday = std::chrono::year{1815} / 12 / 10;
  EXPECT_EQ(IdentityOf(contact).contentHash, "82c23ea99b3c6d30ac3b703fe4d9a1dc");
  Appointment appointment = Weekly(kMonday);
  appointment.body = "one\r\ntwo";
  appointment.series->pattern.occurrences = 3;
  EXPECT_EQ(IdentityOf(appointment).contentHash, "5b9789693674602836d7c1ac31c3483c");
  formats::Task task;
  task.subject = "Tax";
  task.due = kMonday;
  EXPECT_EQ(IdentityOf(task).contentHash, "b2e797dff0ffd7f09caa9f3bc46a029c");
}

}  // namespace
}  // namespace tool::testing
