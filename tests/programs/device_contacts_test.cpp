// corvane-device as a person calls it: contacts in, shown, out and away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kAda[] =
    "BEGIN:VCARD\nVERSION:3.0\nUID:ada-1\nN:Brook;Ada;;;\nFN:Ada Brook\nTEL;TYPE=CELL:01\n"
    "END:VCARD\n";
constexpr char kAdaMoved[] =
    "BEGIN:VCARD\nVERSION:3.0\nUID:ada-1\nN:Brook;Ada;;;\nFN:Ada Brook\nTEL;TYPE=CELL:02\n"
    "END:VCARD\n";

class DeviceContacts : public ToolTest {};

std::size_t Count(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
    ++count;
  return count;
}

TEST_F(DeviceContacts, ImportsEverySampleAndKnowsItAgain) {
  const std::string handheld = MakeHandheld();
  const Arguments import{"import", handheld, Sample("people.vcf"), Sample("old-phone.vcf")};
  const Ended first = Device(import);
  EXPECT_EQ(first.code, 0);
  EXPECT_THAT(first.out, HasSubstr("people.vcf: 27 added, 0 changed, 0 unchanged, 0 failed;"));
  EXPECT_THAT(first.out, HasSubstr("old-phone.vcf: 6 added, 0 changed, 0 unchanged, 0 failed;"));
  EXPECT_THAT(first.err, HasSubstr("old-phone.vcf: NICKNAME: 1 contact ("));
  const std::string contacts = Contacts(handheld);
  EXPECT_EQ(Count(contacts, "\"oid\":"), 33u);
  for (const char* name : {"Okafor", "Grünwald-Straßer", "Björkman", "山田", "TAXI STAND"})
    EXPECT_THAT(contacts, HasSubstr(std::string("\"LastName\":\"") + name + "\""));

  const Ended again = Device(import);
  EXPECT_EQ(again.code, 0);
  EXPECT_THAT(again.out, HasSubstr("people.vcf: 0 added, 0 changed, 27 unchanged, 0 failed;"));
  EXPECT_THAT(again.out, HasSubstr("old-phone.vcf: 0 added, 0 changed, 6 unchanged, 0 failed;"));
  EXPECT_EQ(Contacts(handheld), contacts);
}

TEST_F(DeviceContacts, ImportsAChangedContactIntoTheSameItem) {
  const std::string handheld = MakeHandheld();
  const std::string card = File("ada.vcf", kAda);
  EXPECT_EQ(Device({"import", "-v", handheld, card}).out,
            "added             1  Brook, Ada\n" + card +
                ": 1 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  File("ada.vcf", kAdaMoved);
  EXPECT_EQ(Device({"import", handheld, card, "--verbose"}).out,
            "changed           1  Brook, Ada\n" + card +
                ": 0 added, 1 changed, 0 unchanged, 0 failed; 0 notices\n");
  const std::string contacts = Contacts(handheld);
  EXPECT_EQ(Count(contacts, "\"oid\":"), 1u);
  EXPECT_THAT(contacts, HasSubstr("\"MobileTelephoneNumber\":\"02\""));
}

TEST_F(DeviceContacts, ImportsOnceMoreOnlyWhenAskedTo) {
  const std::string handheld = MakeHandheld();
  const std::string card = File("ada.vcf", kAda);
  Device({"import", handheld, card});
  EXPECT_EQ(Device({"import", handheld, card, "--duplicate"}).code, 0);
  EXPECT_EQ(Count(Contacts(handheld), "\"LastName\":\"Brook\""), 2u);
}

TEST_F(DeviceContacts, OnlySaysWhatADryRunWouldDo) {
  const std::string handheld = MakeHandheld();
  const std::string card = File("ada.vcf", kAda);
  Device({"import", handheld, card});
  const std::string before = Contacts(handheld);
  File("ada.vcf", kAdaMoved);
  const Ended dry = Device({"import", handheld, card, Sample("people.vcf"), "--dry-run", "-v"});
  EXPECT_EQ(dry.code, 0);
  EXPECT_THAT(dry.out, HasSubstr("would be changed  Brook, Ada\n"));
  EXPECT_THAT(dry.out, HasSubstr("would be added    Okafor, Amara\n"));
  EXPECT_THAT(dry.out, HasSubstr("people.vcf: would be 27 added, 0 changed, "));
  EXPECT_EQ(Contacts(handheld), before);
  EXPECT_THAT(Device({"import", handheld, card}).out, HasSubstr("0 added, 1 changed"))
      << "nor has it been remembered as done";
}

TEST_F(DeviceContacts, SaysHowFarAnImportIsOnATerminalAlone) {
  const std::string import = "corvane-device import " + MakeHandheld() + " " + Sample("people.vcf");
  const Ended shown = Shell("script -qec '" + import + "' /dev/null");
  EXPECT_EQ(shown.code, 0) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("\r\x1B[KImporting people.vcf [#"));
  EXPECT_THAT(shown.out, HasSubstr("people.vcf: 27 added, "));
  const Ended piped = Shell(import);
  EXPECT_EQ(piped.err, "");
  EXPECT_THAT(piped.out, Not(HasSubstr("\x1B")));
  EXPECT_EQ(Shell("script -qec '" + import + " --duplicate -q' /dev/null").out, "");
}

TEST_F(DeviceContacts, SaysWhichOfSeveralFilesFailed) {
  const std::string handheld = MakeHandheld();
  const Ended partly = Device({"import", handheld, Path("missing.vcf"), File("ada.vcf", kAda)});
  EXPECT_EQ(partly.code, 3);
  EXPECT_THAT(partly.err, HasSubstr(Path("missing.vcf") + " cannot be read\n"));
  EXPECT_THAT(Contacts(handheld), HasSubstr("\"LastName\":\"Brook\""));
  const Ended none = Device({"import", handheld, Path("missing.vcf"), File("letter", "Dear Ada")});
  EXPECT_EQ(none.code, 1);
  EXPECT_THAT(none.err, HasSubstr(Path("letter") + ": no contacts in it\n"));
}

TEST_F(DeviceContacts, ShowsATableWithACount) {
  const std::string handheld = MakeHandheld();
  EXPECT_EQ(Device({"show", handheld, "contacts"}).out, "0 contacts\n");
  EXPECT_EQ(Contacts(handheld), "");
  Device({"import", handheld, File("ada.vcf", kAda)});
  const Ended shown = Device({"show", handheld, "contacts"});
  EXPECT_EQ(shown.code, 0);
  EXPECT_THAT(shown.out,
              ::testing::MatchesRegex(" +OID  Name +Company +Phone +E-mail\n +1  Brook, Ada +01 +\n"
                                      "1 contact\n"));
}

TEST_F(DeviceContacts, ExportsWhatImportsToTheSame) {
  const std::string from = MakeHandheld("from");
  Device({"import", from, Sample("people.vcf"), Sample("old-phone.vcf")});
  for (const std::string version : {"3.0", "4.0"}) {
    const std::string file = Path("out" + version + ".vcf");
    const Ended out = Device({"export", from, "contacts", "-o", file, "--vcard-version", version});
    EXPECT_EQ(out.code, 0);
    EXPECT_EQ(out.out, file + ": 33 contacts\n");
    EXPECT_THAT(directory_.Read("out" + version + ".vcf"), HasSubstr("VERSION:" + version));
    const std::string to = MakeHandheld("to" + version);
    EXPECT_EQ(Device({"import", to, file}).code, 0);
    EXPECT_EQ(WithoutOids(Contacts(to)), WithoutOids(Contacts(from))) << version;
  }
}

TEST_F(DeviceContacts, ExportsToTheStandardOutput) {
  const std::string handheld = MakeHandheld();
  Device({"import", handheld, File("ada.vcf", kAda)});
  const Ended out = Device({"export", handheld, "contacts"});
  EXPECT_EQ(out.code, 0);
  EXPECT_EQ(out.err, "");
  EXPECT_THAT(out.out, ::testing::StartsWith("BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ada-1\r\n"));
}

TEST_F(DeviceContacts, LeavesTheFileAloneWhereItCannotWrite) {
  const Ended out = Device({"export", MakeHandheld(), "contacts", "-o", Path("no/such/out.vcf")});
  EXPECT_EQ(out.code, 1);
  EXPECT_EQ(out.out, "");
  EXPECT_THAT(out.err, HasSubstr("cannot write " + Path("no/such/out.vcf")));
}

TEST_F(DeviceContacts, RemovesItemsAndNamesThoseThatAreNotThere) {
  const std::string handheld = MakeHandheld();
  Device({"import", handheld, Sample("people.vcf")});
  const Ended both = Device({"remove", handheld, "1", "3"});
  EXPECT_EQ(both.code, 0);
  EXPECT_EQ(both.err, "");
  const std::string contacts = Contacts(handheld);
  EXPECT_EQ(Count(contacts, "\"oid\":"), 25u);
  EXPECT_THAT(contacts, Not(HasSubstr("{\"oid\":1,")));
  EXPECT_THAT(contacts, Not(HasSubstr("{\"oid\":3,")));
  const Ended some = Device({"remove", handheld, "1", "2"});
  EXPECT_EQ(some.code, 3);
  EXPECT_EQ(some.err, "corvane-device: 1: no such item\n");
  const Ended none = Device({"remove", handheld, "1", "9999"});
  EXPECT_EQ(none.code, 1);
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(Count(Contacts(handheld), "\"oid\":"), 24u);
}

}  // namespace
}  // namespace corvane::testing
