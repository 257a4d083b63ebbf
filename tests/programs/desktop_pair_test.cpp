// corvane-desktop: pairs by name, and the zone that commands take from them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kChoir[] =
    "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:choir\nSUMMARY:Choir\n"
    "DTSTART:20240506T093000\nDTEND:20240506T103000\nEND:VEVENT\nEND:VCALENDAR\n";

class DesktopPair : public ToolTest {
 protected:
  void SetUp() override { StartAgent(MakeHandheld()); }
  Ended Pair(const Arguments& more) {
    Arguments arguments = {"pair", "work"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Desktop(arguments);
  }
};

TEST_F(DesktopPair, GivesItsZoneToPullAndPush) {
  const std::string file = File("choir.ics", kChoir);
  EXPECT_EQ(Pair({"--folder", Path("desk"), "--zone", "Asia/Kolkata"}).code, 0);
  const Ended push = Desktop({"push", file});
  EXPECT_EQ(push.err, "1 added\n");
  EXPECT_THAT(Desktop({"pull", "calendar", "--format", "xml"}).out, HasSubstr("20240506T040000"));
  const Ended byName = Run("corvane-desktop", {"pull", "calendar", "--pair", "work"});
  EXPECT_EQ(byName.code, 0);
  EXPECT_EQ(byName.err, "");
  EXPECT_THAT(byName.out, HasSubstr("DTSTART;TZID=Asia/Kolkata:20240506T093000"));
}

TEST_F(DesktopPair, AGuessedZoneIsSaidWhereTimesGoByIt) {
  const std::string guess = "--zone says otherwise\n";
  EXPECT_THAT(Desktop({"push", File("choir.ics", kChoir)}).err, HasSubstr(guess));
  EXPECT_THAT(Desktop({"pull", "calendar"}).err, HasSubstr(guess));
  EXPECT_THAT(Desktop({"pull", "tasks"}).err, HasSubstr(guess));
  EXPECT_THAT(Desktop({"pull", "tasks", "--format", "xml"}).err, Not(HasSubstr(guess)));
  EXPECT_THAT(Desktop({"pull", "contacts"}).err, Not(HasSubstr(guess)));
  EXPECT_THAT(Desktop({"push", Sample("people.vcf")}).err, Not(HasSubstr(guess)));
  EXPECT_THAT(Desktop({"pull", "calendar", "--zone", "UTC"}).err, Not(HasSubstr(guess)));
}

TEST_F(DesktopPair, SaysWhatIsWrongWithItsFile) {
  EXPECT_EQ(Pair({"--folder", Path("desk")}).code, 2);
  const Ended unknown = Desktop({"pull", "contacts", "--pair", "work"});
  EXPECT_EQ(unknown.code, 1);
  EXPECT_EQ(unknown.err, "corvane-desktop: there is no pair work: \"pair\" lists them\n");
  EXPECT_EQ(Pair({"--folder", Path("desk"), "--zone", "UTC"}).code, 0);
  const std::string config = Path("config/corvane/config.toml");
  Shell("echo 'zone = 5' >> " + config);
  const Ended damaged = Desktop({"pull", "contacts"});
  EXPECT_EQ(damaged.code, 1);
  EXPECT_THAT(damaged.err, HasSubstr(config + ":"));
}

}  // namespace
}  // namespace corvane::testing
