// corvane-desktop against the real agent: what it pushes, and what it deletes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kTwo[] =
    "BEGIN:VCARD\nVERSION:3.0\nUID:ada-1\nN:Brook;Ada;;;\nFN:Ada Brook\nTEL;TYPE=CELL:01\n"
    "END:VCARD\n"
    "BEGIN:VCARD\nVERSION:3.0\nUID:ben-1\nN:Field;Ben;;;\nFN:Ben Field\nEND:VCARD\n";

class DesktopPush : public ToolTest {
 protected:
  // A Japanese handheld takes phonetic names, too.
  void SetUp() override { StartAgent(MakeHandheld("handheld", "ja-JP")); }
  std::string Pulled() { return Desktop({"pull", "contacts", "--format", "json"}).out; }
  void ExpectPush(const Ended& push, const std::string& out, const std::string& summary) {
    EXPECT_EQ(push.code, 0);
    EXPECT_EQ(push.out, out);
    EXPECT_EQ(push.err, summary);
  }
};

TEST_F(DesktopPush, AddsOnceAndThenKnowsThemUnchanged) {
  const std::string file = File("two.vcf", kTwo);
  ExpectPush(
      Desktop({"push", "-v", file}),
      file + ":1: Brook, Ada: added with OID 1\n" + file + ":8: Field, Ben: added with OID 2\n",
      "2 added\n");
  const std::string contacts = Pulled();
  ExpectPush(
      Desktop({"push", "-v", file}),
      file + ":1: Brook, Ada: unchanged (OID 1)\n" + file + ":8: Field, Ben: unchanged (OID 2)\n",
      "2 unchanged\n");
  EXPECT_EQ(Pulled(), contacts);
}

TEST_F(DesktopPush, ChangesTheSameItemAfterAnEdit) {
  const std::string file = File("two.vcf", kTwo);
  Desktop({"push", "-v", file});
  std::string edited = kTwo;
  File("two.vcf", edited.replace(edited.find("CELL:01"), 7, "CELL:02"));
  ExpectPush(
      Desktop({"push", "-v", file}),
      file + ":1: Brook, Ada: changed (OID 1)\n" + file + ":8: Field, Ben: unchanged (OID 2)\n",
      "1 changed, 1 unchanged\n");
  EXPECT_EQ(Pulled(),
            "{\"oid\":1,\"FirstName\":\"Ada\",\"LastName\":\"Brook\",\"FileAs\":\"Brook, Ada\","
            "\"MobileTelephoneNumber\":\"02\"}\n"
            "{\"oid\":2,\"FirstName\":\"Ben\",\"LastName\":\"Field\",\"FileAs\":\"Field, Ben\"}\n");
}

TEST_F(DesktopPush, KnowsWhatItHasPulled) {
  Desktop({"push", File("two.vcf", kTwo)});
  const std::string file = Path("pulled.vcf");
  EXPECT_EQ(Desktop({"pull", "contacts", "-o", file}).code, 0);
  const Ended push = Desktop({"push", file});
  EXPECT_EQ(push.code, 0);
  EXPECT_EQ(push.err, "2 unchanged\n");
}

TEST_F(DesktopPush, OnlySaysWhatADryRunWouldSend) {
  const Ended dry = Desktop({"push", "--dry-run", File("two.vcf", kTwo)});
  EXPECT_EQ(dry.code, 0);
  EXPECT_EQ(dry.err, "2 would add\n");
  EXPECT_THAT(dry.out, HasSubstr("<FIRST_NAME>Ada</FIRST_NAME>"));
  EXPECT_EQ(Pulled(), "");
  EXPECT_EQ(Desktop({"push", Path("two.vcf")}).err, "2 added\n") << "nor remembered as sent";
}

TEST_F(DesktopPush, ReportsAsJson) {
  const Ended push = Desktop({"push", "--json", File("two.vcf", kTwo)});
  EXPECT_EQ(push.code, 0);
  EXPECT_EQ(push.err, "2 added\n");
  EXPECT_THAT(push.out, StartsWith("{\"source\":"));
  EXPECT_THAT(push.out, HasSubstr("\"name\":\"Brook, Ada\",\"outcome\":\"added\",\"oid\":1,"
                                  "\"code\":0}\n"));
}

TEST_F(DesktopPush, SendsNothingWhereAFileCannotBeRead) {
  const Ended push = Desktop({"push", File("two.vcf", kTwo), Path("missing.vcf")});
  EXPECT_EQ(push.code, 1);
  EXPECT_EQ(push.out, "");
  EXPECT_THAT(push.err, HasSubstr(Path("missing.vcf")));
  EXPECT_EQ(Pulled(), "");
}

TEST_F(DesktopPush, PushesTheSamplesAsTheMaintenanceImportsThem) {
  EXPECT_EQ(Desktop({"push", Sample("people.vcf"), Sample("old-phone.vcf")}).code, 0);
  StopAgent(SIGTERM);
  const std::string imported = MakeHandheld("imported", "ja-JP");
  Device({"import", imported, Sample("people.vcf"), Sample("old-phone.vcf")});
  EXPECT_EQ(Contacts(Path("handheld")), AsCarried(Contacts(imported)));
}

TEST_F(DesktopPush, AddsNothingThatTheMaintenanceHasImported) {
  StopAgent(SIGTERM);
  const std::string handheld = MakeHandheld("imported", "ja-JP");
  Device({"import", handheld, Sample("people.vcf")});
  StartAgent(handheld);
  const Ended dry = Desktop({"push", "--dry-run", Sample("people.vcf")});
  EXPECT_THAT(dry.err, HasSubstr("27 unchanged\n"));
  const Ended push = Desktop({"push", Sample("people.vcf")});
  EXPECT_EQ(push.code, 0);
  EXPECT_THAT(push.err, HasSubstr("27 unchanged\n"));
}

TEST_F(DesktopPush, KnowsAHandheldUnderAnotherPort) {
  Desktop({"push", Sample("people.vcf")});
  StopAgent(SIGTERM);
  StartAgent(Path("handheld"));
  EXPECT_THAT(Desktop({"push", Sample("people.vcf")}).err, HasSubstr("27 unchanged\n"));
}

TEST_F(DesktopPush, NamesPhoneticNamesThatTheHandheldIgnores) {
  StopAgent(SIGTERM);
  StartAgent(MakeHandheld("western"));
  const std::string file = File(
      "sato.vcf",
      "BEGIN:VCARD\nVERSION:3.0\nUID:s\nN:Sato;Eri;;;\nX-PHONETIC-LAST-NAME:satou\nEND:VCARD\n");
  EXPECT_EQ(Desktop({"push", "-v", file}).err,
            file + ":1: YomiLastName: the handheld does not keep it\n1 added\n");
}

TEST_F(DesktopPush, SaysThatWhatIsToBeDeletedIsNotThere) {
  const Ended ended = Desktop({"delete", "contacts", "--oid", "99999"});
  EXPECT_EQ(ended.code, 3);
  EXPECT_EQ(ended.out, "contact: not found (OID 99999)\n");
  EXPECT_EQ(ended.err, "1 not found\n");
}

TEST_F(DesktopPush, DeletesTheContactsNamed) {
  Desktop({"push", Sample("people.vcf")});
  const Ended ended = Desktop({"delete", "contacts", "--oid", "1", "--oid", "5"});
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out,
            "contact: is not there any more (OID 1)\ncontact: is not there any more (OID 5)\n");
  EXPECT_EQ(ended.err, "2 deleted\n");
  const std::string left = Pulled();
  EXPECT_THAT(left, Not(HasSubstr("{\"oid\":1,")));
  EXPECT_THAT(left, Not(HasSubstr("{\"oid\":5,")));
  EXPECT_THAT(left, HasSubstr("{\"oid\":2,"));
  EXPECT_THAT(Desktop({"push", Sample("people.vcf")}).err, HasSubstr("2 added, 25 unchanged\n"))
      << "it knows that they have gone";
}

TEST_F(DesktopPush, DeletesAllOnlyWhenToldThatItIsMeant) {
  Desktop({"push", File("two.vcf", kTwo)});
  const std::string contacts = Pulled();
  const Ended unasked = Desktop({"delete", "contacts"});  // there is no terminal to ask at
  EXPECT_EQ(unasked.code, 2);
  EXPECT_EQ(unasked.out, "");
  EXPECT_EQ(unasked.err, "corvane-desktop: deleting all contacts needs --yes\n");
  EXPECT_EQ(Pulled(), contacts);

  const Ended meant = Desktop({"delete", "contacts", "--yes"});
  EXPECT_EQ(meant.code, 0);
  EXPECT_EQ(meant.out, "all contacts deleted\n");
  EXPECT_EQ(meant.err, "");
  EXPECT_EQ(Pulled(), "");
}

}  // namespace
}  // namespace corvane::testing
