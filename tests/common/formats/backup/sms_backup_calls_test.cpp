// Calls of a backup.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Items ReadCall(const std::string& attributes) {
  return ReadBackupText("<calls count=\"1\">\n<call " + attributes + " />\n</calls>");
}

Call OnlyCall(const Items& items) {
  EXPECT_THAT(items.calls, SizeIs(1));
  return items.calls.empty() ? Call{} : items.calls.front();
}

TEST(SmsBackupCalls, ReadsAnAnsweredCall) {
  const Items items = ReadCall(
      "number=\"+4912345\" duration=\"61\" date=\"1203083101250\" type=\"1\" presentation=\"1\" "
      "subscription_id=\"1\" readable_date=\"whenever\" contact_name=\"\u00C5sa\"");
  Call expected;
  expected.number = "+4912345";
  expected.name = "\u00C5sa";
  expected.start = TimeOf("2008-02-15T13:45:01.250Z");
  expected.end = TimeOf("2008-02-15T13:46:02.250Z");
  expected.connected = expected.ended = true;
  expected.callerId = kCallerIdAvailable;
  EXPECT_EQ(OnlyCall(items), expected);
  EXPECT_THAT(items.lines, ElementsAre(2u));
  EXPECT_THAT(items.notices, IsEmpty());
}

struct KindCase {
  const char* name;
  const char* type;
  const char* duration;
  bool outgoing;
  bool missed;
  bool connected;
  const char* notice = nullptr;
};
class CallKindTest : public ::testing::TestWithParam<KindCase> {};

TEST_P(CallKindTest, IsWhatAHandheldMakesOfIt) {
  const Items items = ReadCall(std::string("number=\"1\" date=\"0\" type=\"") + GetParam().type +
                               "\" duration=\"" + GetParam().duration + "\"");
  const Call call = OnlyCall(items);
  EXPECT_EQ(call.outgoing, GetParam().outgoing);
  EXPECT_EQ(call.missed, GetParam().missed);
  EXPECT_EQ(call.connected, GetParam().connected);
  EXPECT_TRUE(call.ended);
  std::vector<std::string> notices;
  if (GetParam().notice != nullptr) notices.push_back(std::string("2: ") + GetParam().notice);
  EXPECT_EQ(items.notices, notices);
}

INSTANTIATE_TEST_SUITE_P(
    SmsBackupCalls, CallKindTest,
    ::testing::Values(KindCase{"Incoming", "1", "60", false, false, true},
                      KindCase{"IncomingAndEndedAtOnce", "1", "0", false, false, true},
                      KindCase{"Outgoing", "2", "60", true, false, true},
                      KindCase{"OutgoingWithoutAnAnswer", "2", "0", true, false, false},
                      KindCase{"Missed", "3", "0", false, true, false},
                      KindCase{"Voicemail", "4", "20", false, true, false,
                               "type: calls that went to voicemail are kept as missed ones"},
                      KindCase{"Rejected", "5", "0", false, true, false,
                               "type: rejected calls are kept as missed ones"},
                      KindCase{"Refused", "6", "0", false, true, false,
                               "type: refused calls are kept as missed ones"},
                      KindCase{"AnsweredElsewhere", "7", "0", false, true, false,
                               "type: calls answered on another telephone are kept as missed ones"},
                      KindCase{"Unknown", "12", "5", false, false, true,
                               "type: not a known kind of call, taken as an incoming one: 12"},
                      KindCase{"DurationIsText", "3", "long", false, true, false,
                               "duration: not a number of seconds: long"},
                      KindCase{"DurationBelowZero", "3", "-5", false, true, false,
                               "duration: not a number of seconds: -5"},
                      KindCase{"DurationOfYears", "3", "99999999999", false, true, false,
                               "duration: not a number of seconds: 99999999999"}),
    [](const auto& test) { return std::string(test.param.name); });

struct CallerCase {
  const char* name;
  const char* attributes;
  const char* number;
  int callerId;
  const char* notice = nullptr;
};
class CallerIdTest : public ::testing::TestWithParam<CallerCase> {};

TEST_P(CallerIdTest, FollowsFromPresentationAndNumber) {
  const Items items =
      ReadCall(std::string("date=\"0\" type=\"3\" duration=\"0\" ") + GetParam().attributes);
  EXPECT_EQ(OnlyCall(items).number, GetParam().number);
  EXPECT_EQ(OnlyCall(items).callerId, GetParam().callerId);
  std::vector<std::string> notices;
  if (GetParam().notice != nullptr) notices.push_back(std::string("2: ") + GetParam().notice);
  EXPECT_EQ(items.notices, notices);
}

INSTANTIATE_TEST_SUITE_P(
    SmsBackupCalls, CallerIdTest,
    ::testing::Values(
        CallerCase{"Allowed", "number=\"1\" presentation=\"1\"", "1", kCallerIdAvailable},
        CallerCase{"Restricted", "number=\"\" presentation=\"2\"", "", kCallerIdBlocked},
        CallerCase{"Unknown", "number=\"\" presentation=\"3\"", "", kCallerIdUnavailable},
        CallerCase{"Payphone", "number=\"\" presentation=\"4\"", "", kCallerIdUnavailable,
                   "presentation: a call from a payphone is kept as one from an unknown number"},
        CallerCase{"Other", "number=\"1\" presentation=\"8\"", "1", kCallerIdUnavailable,
                   "presentation: not a known kind: 8"},
        CallerCase{"OldUnknown", "number=\"-1\"", "", kCallerIdUnavailable},
        CallerCase{"OldRestricted", "number=\"-2\"", "", kCallerIdBlocked},
        CallerCase{"OldPayphone", "number=\"-3\"", "", kCallerIdUnavailable,
                   "presentation: a call from a payphone is kept as one from an unknown number"},
        CallerCase{"OldAllowed", "number=\"1\" presentation=\"null\"", "1", kCallerIdAvailable},
        CallerCase{"OldNone", "number=\"null\"", "", kCallerIdUnavailable}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SmsBackupCalls, KeepsACallWithoutATime) {
  const Items items = ReadCall("number=\"1\" type=\"2\" duration=\"5\"");
  EXPECT_EQ(OnlyCall(items).start, std::nullopt);
  EXPECT_EQ(OnlyCall(items).end, std::nullopt);
  EXPECT_TRUE(OnlyCall(items).connected);
  EXPECT_THAT(items.notices, ElementsAre("2: date: not a time: "));
}

}  // namespace
}  // namespace formats::testing
