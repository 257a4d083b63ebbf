// A handheld as a page: made beside its agent, and safe by the policy that it carries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class Page : public ToolTest {
 protected:
  static std::string Part(const std::string& page, const std::string& begin,
                          const std::string& end) {
    const std::size_t at = page.find(begin);
    EXPECT_NE(at, page.npos) << begin;
    const std::size_t from = at + begin.size();
    return page.substr(from, page.find(end, from) - from);
  }
  // As a policy writes it, reckoned by the system's own tools.
  std::string HashOf(const std::string& text) const {
    const std::string file = File("hashed", text);
    const Ended ended =
        Shell("printf \"$(sha256sum '" + file + "' | cut -c1-64 | sed 's/../\\\\x&/g')\" | base64");
    EXPECT_EQ(ended.code, 0) << ended.err;
    return "'sha256-" + ended.out.substr(0, ended.out.find('\n')) + "'";
  }
};

TEST_F(Page, IsMadeWhileTheAgentServes) {
  const std::string handheld = MakeFilledHandheld();
  StartAgent(handheld);
  EXPECT_EQ(Desktop({"push", Sample("new-friend.vcf")}).code, 0);
  const Ended made = Device({"page", handheld, "-o", Path("page.html")});
  EXPECT_EQ(made.code, 0) << made.err;
  EXPECT_EQ(made.out, Path("page.html") + ": a page, to be opened in any browser\n");
  EXPECT_EQ(made.err, "");
  const std::string page = directory_.Read("page.html");
  EXPECT_THAT(page, HasSubstr("\"name\":\"Nova Friend\""));
  EXPECT_THAT(page, HasSubstr("\"subject\":\"Team meeting\""));
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
}

TEST_F(Page, CarriesThePolicyOfItsOwnStyleAndScript) {
  const Ended made = Device({"page", MakeHandheld()});
  ASSERT_EQ(made.code, 0) << made.err;
  const std::string policy = Part(made.out, "Content-Security-Policy\" content=\"", "\"");
  EXPECT_THAT(policy,
              HasSubstr("style-src " + HashOf(Part(made.out, "<style>", "</style>")) + ";"));
  EXPECT_THAT(policy,
              HasSubstr("script-src " + HashOf(Part(made.out, "<script>", "</script>")) + ";"));
  EXPECT_THAT(policy, Not(HasSubstr("unsafe")));
}

TEST_F(Page, IsMadeOfAFolderThatIsKeptInStep) {
  const std::string handheld = Path("handheld");
  ASSERT_EQ(Device({"init", handheld, "--zone", "Asia/Tokyo"}).code, 0);
  ASSERT_EQ(Device({"import", handheld, Sample("people.vcf"), Sample("calendar.ics"),
                    Sample("tasks.ics"), Sample("phone-backup.xml"), Sample("phone-calls.xml")})
                .code,
            0);
  StartAgent(handheld);
  ASSERT_EQ(Desktop({"sync", Path("desk"), "--zone", "Asia/Tokyo"}).code, 0);
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EndAgent();
  const Ended made = Desktop({"page", Path("desk"), "-o", Path("desk.html")});
  EXPECT_EQ(made.code, 0) << made.err;
  EXPECT_EQ(made.out, Path("desk.html") + ": a page, to be opened in any browser\n");
  EXPECT_EQ(made.err, "");
  const std::string page = directory_.Read("desk.html");
  for (const char* part : {"\"name\":\"desk\"", "\"zone\":\"Asia/Tokyo\"", "Amara Ngozi Okafor",
                           "Team meeting", "Tax return", "Fika på Björkgatan", "\"+4930555011\""})
    EXPECT_THAT(page, HasSubstr(part));
  EXPECT_THAT(page, HasSubstr("\"notes\":[],\"volumes\":[]"));
}

TEST_F(Page, NamesWhatOfAFolderCannotBeRead) {
  for (const char* folder : {"desk", "desk/messages", "desk/contacts"})
    std::filesystem::create_directory(Path(folder));
  File("desk/messages/2008-02.jsonl", "{\"text\":\"Hi\",\"from\":\"+461\"}\nno JSON\n");
  File("desk/contacts/a.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Brook;Ada\n");
  const Ended made = Run("corvane-desktop", {"page", Path("desk"), "--zone", "UTC"});
  EXPECT_EQ(made.code, 3);
  EXPECT_THAT(made.out, HasSubstr("\"Hi\""));
  EXPECT_THAT(made.err, HasSubstr("contacts/a.vcf: empty or cut off, left alone\n"));
  EXPECT_THAT(made.err, HasSubstr("messages/2008-02.jsonl:2: "));
  EXPECT_THAT(made.out, HasSubstr("\"remarks\":[\"contacts/a.vcf: empty or cut off, left alone\""));
}

TEST_F(Page, IsOfNoFolderThatIsNotThere) {
  const Ended made = Run("corvane-desktop", {"page", Path("nowhere"), "-o", Path("page.html")});
  EXPECT_EQ(made.code, 1);
  EXPECT_THAT(made.err, HasSubstr("nowhere is no folder\n"));
  EXPECT_FALSE(std::filesystem::exists(Path("page.html")));
}

TEST_F(Page, SaysWhyItCannotBeWritten) {
  const Ended made = Device({"page", MakeHandheld(), "-o", Path("nowhere/page.html")});
  EXPECT_EQ(made.code, 1);
  EXPECT_THAT(made.err, HasSubstr("nowhere/page.html"));
}

}  // namespace
}  // namespace corvane::testing
