#include "handheld/tool/show_messages.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "tests/handheld/tool/message_support.h"

namespace tool::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kCorrespondents[] =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lovelace;Ada;;;\r\nTEL;TYPE=CELL:+46 70 1\r\n"
    "TEL;TYPE=HOME:+46 8 2\r\nEND:VCARD\r\n";

class ShownThreads : public MessageTest {
 protected:
  void Fill() {
    Import(
        {WriteFile("people.vcf", kCorrespondents),
         WriteFile("sms.xml", Backup(Sms(1, "+46701", "Hello&#10;there") +
                                     Sms(2, "+4682", "From my desk", "1203083161250") +
                                     Sms(3, "+4670999", "Some day", "1203173161250") +
                                     Sms(1, "Bank", "Balance \xE2\x80\xAE!", "1203003161250")))});
  }
  std::string Threads(bool json = false) {
    Run([&](Session& session, const Report& report) { return ShowThreads(session, json, report); });
    return out_;
  }
};

TEST_F(ShownThreads, BringWhatWentToAndFroWithAPersonTogether) {
  Fill();
  EXPECT_THAT(Threads(), HasSubstr("Ada Lovelace\n"
                                   "  Friday 15 February 2008\n"
                                   "    13:45  Hello\n"
                                   "           there\n"
                                   "    13:46  I: From my desk\n"
                                   "\n"));
  EXPECT_THAT(out_, HasSubstr("+4670999\n"
                              "  Saturday 16 February 2008\n"
                              "    14:46  I: Some day [draft]\n"));
  EXPECT_THAT(out_, HasSubstr("\n4 messages in 3 threads\n"));
}

TEST_F(ShownThreads, BeginWithTheNewest) {
  Fill();
  const std::string threads = Threads();
  EXPECT_EQ(threads.find("+4670999\n"), 0u);
  EXPECT_LT(threads.find("Ada Lovelace\n"), threads.find("Bank\n"));
}

TEST_F(ShownThreads, SendNoControlsToATerminal) {
  Fill();
  EXPECT_THAT(Threads(), Not(HasSubstr("\xE2\x80\xAE")));
  EXPECT_THAT(out_, HasSubstr("Balance"));
}

TEST_F(ShownThreads, AreALineOfJsonEach) {
  Fill();
  std::istringstream lines(Threads(true));
  std::vector<nlohmann::json> threads;
  for (std::string line; std::getline(lines, line);) threads.push_back(nlohmann::json::parse(line));
  ASSERT_EQ(threads.size(), 3u);
  EXPECT_EQ(threads[0]["people"], nlohmann::json::array());
  EXPECT_EQ(threads[0]["others"][0]["address"], "+4670999");
  EXPECT_EQ(threads[1]["people"][0]["name"], "Ada Lovelace");
  ASSERT_EQ(threads[1]["messages"].size(), 2u);
  EXPECT_EQ(threads[1]["messages"][0]["text"], "Hello\nthere");
  const std::string id = threads[1]["messages"][0]["oid"];
  EXPECT_THAT(Messages(), HasSubstr("\"oid\":\"" + id + "\",\"folder\":\"/Inbox\""));
}

TEST_F(ShownThreads, AreNoneOfAnEmptyHandheld) {
  EXPECT_EQ(Threads(), "0 messages\n");
  EXPECT_EQ(Threads(true), "");
}

}  // namespace
}  // namespace tool::testing
