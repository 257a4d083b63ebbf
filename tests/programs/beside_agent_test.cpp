// corvane-device looks at a handheld while its agent serves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

class BesideAgent : public ToolTest {
 protected:
  void SetUp() override { handheld_ = MakeFilledHandheld(); }

  // The same with and without an agent.
  void ExpectSame(const Arguments& command) {
    const Ended alone = Device(command);
    StartAgent(handheld_);
    EXPECT_EQ(Desktop({"time", "get"}).code, 0);
    const Ended beside = Device(command);
    EXPECT_EQ(Desktop({"quit"}).code, 0);
    EXPECT_EQ(EndAgent().code, 0);
    EXPECT_EQ(beside.code, 0);
    EXPECT_EQ(beside.out, alone.out);
    EXPECT_EQ(beside.err, alone.err);
    EXPECT_NE(beside.out, "");
  }

  std::string handheld_;
};

TEST_F(BesideAgent, ShowsAndExportsWhatIsThere) {
  for (const char* kind : {"contacts", "calendar", "messages", "calls"}) {
    ExpectSame({"show", handheld_, kind});
    ExpectSame({"export", handheld_, kind});
  }
  ExpectSame({"check", handheld_});
}

TEST_F(BesideAgent, SeesWhatTheAgentHasJustStored) {
  StartAgent(handheld_);
  EXPECT_EQ(Desktop({"push", Sample("new-friend.vcf")}).code, 0);
  EXPECT_THAT(Device({"show", handheld_, "contacts"}).out, HasSubstr("Friend, Nova"));
  EXPECT_EQ(Device({"info", handheld_}).code, 0);
  EXPECT_EQ(Device({"check", handheld_}).out, "The store is sound.\n");
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
}

TEST_F(BesideAgent, LeavesItsLockAlone) {
  StartAgent(handheld_);
  EXPECT_EQ(Device({"show", handheld_, "contacts"}).code, 0);
  const std::string user = "in use by corvane (process " + std::to_string(agent().pid()) + ")";
  for (const Arguments& change :
       {Arguments{"import", handheld_, Sample("new-friend.vcf")},
        Arguments{"remove", handheld_, "1"}, Arguments{"clock", handheld_, "reset"}}) {
    const Ended refused = Device(change);
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr(user));
    EXPECT_THAT(refused.err, HasSubstr("corvane-desktop"));
  }
}

}  // namespace
}  // namespace corvane::testing
