// The programs as a script runs them: pipes, silence, and results that programs read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"
#include "tests/support/json_lines.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kAda[] =
    "BEGIN:VCARD\nVERSION:3.0\nUID:ada-1\nN:Brook;Ada;;;\nTEL;TYPE=CELL:01\nPHOTO:x\nEND:VCARD\n"
    "BEGIN:VCARD\nVERSION:3.0\nUID:ben-1\nN:Field;Ben;;;\nPHOTO:x\nEND:VCARD\n";

class Scripting : public ToolTest {
 protected:
  std::string To() const { return "corvane-desktop --to 127.0.0.1:" + std::to_string(port()); }
  // What the command prints with --json, which is one object.
  nlohmann::json Device1(Arguments arguments) const {
    arguments.emplace_back("--json");
    return Only(Device(arguments));
  }
  nlohmann::json Desktop1(Arguments arguments) const {
    arguments.emplace_back("--json");
    return Only(Desktop(arguments));
  }

 private:
  static nlohmann::json Only(const Ended& ended) {
    const nlohmann::json lines = JsonLines(ended.out);
    EXPECT_EQ(lines.size(), 1u) << ended.out << ended.err;
    return lines.empty() ? nlohmann::json() : lines[0];
  }
};

TEST_F(Scripting, PipesFromOneHandheldToTheNext) {
  const std::string from = MakeHandheld("from");
  const std::string to = MakeHandheld("to");
  File("ada.vcf", kAda);
  const Ended in = Shell("cat '" + Path("ada.vcf") + "' | corvane-device import " + from + " -");
  EXPECT_EQ(in.code, 0) << in.err;
  EXPECT_THAT(in.out, StartsWith("-: 2 added"));
  const Ended over = Shell("corvane-device export " + from +
                           " contacts -o - | corvane-device import " + to + " - -q");
  EXPECT_EQ(over.out + over.err, "");
  EXPECT_EQ(WithoutOids(Contacts(to)), WithoutOids(Contacts(from)));
  EXPECT_FALSE(std::filesystem::exists(Path("-")));
}

TEST_F(Scripting, PutsANoteFromAPipeUnderAName) {
  const std::string handheld = MakeHandheld();
  const std::string note = "echo tea | corvane-device note " + handheld + " add -";
  EXPECT_EQ(Shell(note).code, 2);
  EXPECT_EQ(Shell(note + " list.txt").code, 0);
  EXPECT_EQ(directory_.Read("handheld/files/My Documents/list.txt"), "tea\n");
}

TEST_F(Scripting, PushesFromAPipeAndPullsIntoOne) {
  StartAgent(MakeHandheld());
  File("ada.vcf", kAda);
  const Ended push = Shell(To() + " push - < '" + Path("ada.vcf") + "'");
  EXPECT_EQ(push.code, 0) << push.err;
  EXPECT_EQ(push.out, "");
  EXPECT_EQ(push.err,
            "-: PHOTO: 2 contacts (a contact holds no pictures)\n"
            "-v names each of them with its line\n2 added\n");
  EXPECT_THAT(Shell(To() + " pull contacts -o -").out, HasSubstr("N:Brook;Ada"));
  EXPECT_EQ(Shell("printf tea | " + To() + " convert - --from txt --to txt -o -").out, "tea");
  EXPECT_FALSE(std::filesystem::exists(Path("-")));
}

TEST_F(Scripting, SaysNothingOfWhatWentWellWhenOnlyErrorsAreWanted) {
  const std::string ada = File("ada.vcf", kAda);
  const std::string pda = Path("pda");
  for (const Arguments& command :
       std::vector<Arguments>{{"init", pda},
                              {"set", pda, "owner", "Ada"},
                              {"import", pda, ada},
                              {"check", pda},
                              {"repair", pda},
                              {"export", pda, "contacts", "-o", Path("a")},
                              {"page", pda, "-o", Path("b")},
                              {"remove", pda, "1"},
                              {"clock", pda, "reset"},
                              {"note", pda, "add", ada},
                              {"backup", pda, Path("c")},
                              {"backup", "--verify", Path("c")},
                              {"restore", Path("c"), Path("d")},
                              {"clone", pda, Path("e")}}) {
    Arguments quiet = command;
    quiet.emplace_back("-q");
    const Ended ended = Device(quiet);
    EXPECT_EQ(ended.code, 0) << command[0];
    EXPECT_EQ(ended.out + ended.err, "") << command[0];
  }
  StartAgent(pda);
  for (const Arguments& command :
       std::vector<Arguments>{{"push", ada},
                              {"pull", "contacts", "-o", Path("f")},
                              {"delete", "contacts", "--yes"},
                              {"time", "set"},
                              {"logging", "off"},
                              {"pair", "work", "--folder", Path("g"), "--zone", "UTC"},
                              {"quit"}}) {
    Arguments quiet = command;
    quiet.emplace_back("-q");
    const Ended ended = Desktop(quiet);
    EXPECT_EQ(ended.code, 0) << command[0];
    EXPECT_EQ(ended.out + ended.err, "") << command[0];
  }
  EXPECT_THAT(Desktop({"info", "-q"}).err, HasSubstr("nobody listens"));
  EXPECT_THAT(Device({"show", pda, "contacts", "-q"}).out, HasSubstr("0 contacts"));
}

TEST_F(Scripting, ShowsExportsAndRemovesSingleItems) {
  const std::string pda = MakeHandheld();
  Device({"import", pda, File("ada.vcf", kAda), Sample("calendar.ics"), Sample("phone-calls.xml")});
  EXPECT_EQ(Device1({"show", pda, "contacts", "--oid", "2"})["LastName"], "Field");
  EXPECT_EQ(Device1({"show", pda, "contacts", "--uid", "ada-1"})["LastName"], "Brook");
  EXPECT_THAT(Device({"show", pda, "calendar", "--oid", "3"}).out, HasSubstr("1 appointment\n"));
  EXPECT_EQ(Device1({"show", pda, "calls", "--oid", "1"})["oid"], "1");
  const Ended card = Device({"export", pda, "contacts", "--uid", "ben-1"});
  EXPECT_THAT(card.out, HasSubstr("N:Field;Ben"));
  EXPECT_THAT(card.out, ::testing::Not(HasSubstr("Brook")));
  EXPECT_THAT(Device({"export", pda, "calls", "--oid", "1"}).out, HasSubstr("<calls count=\"1\""));

  const Ended partly = Device({"show", pda, "contacts", "--oid", "1", "--oid", "3", "--uid", "x"});
  EXPECT_EQ(partly.code, 3) << "one is an appointment";
  EXPECT_THAT(partly.out, HasSubstr("1 contact\n"));
  EXPECT_EQ(partly.err, "corvane-device: x: no such contact\ncorvane-device: 3: no such contact\n");
  const Ended none = Device({"export", pda, "contacts", "--oid", "99", "-o", Path("none.vcf")});
  EXPECT_EQ(none.code, 1);
  EXPECT_FALSE(std::filesystem::exists(Path("none.vcf")));
  EXPECT_EQ(Device({"show", pda, "calls", "--uid", "x"}).code, 2);

  EXPECT_EQ(Device({"remove", pda, "--uid", "ada-1", "--uid", "x"}).code, 3);
  EXPECT_EQ(Device({"show", pda, "contacts", "--uid", "ada-1"}).code, 1) << "it is gone";
  EXPECT_EQ(Device({"remove", pda, "--uid", "ada-1"}).code, 1);
  EXPECT_EQ(Device({"remove", pda}).code, 2);
}

TEST_F(Scripting, PullsAndDeletesSingleItems) {
  StartAgent(MakeHandheld());
  Desktop({"push", File("ada.vcf", kAda)});
  const Ended ben = Desktop({"pull", "contacts", "--uid", "ben-1"});
  EXPECT_EQ(ben.code, 0) << ben.err;
  EXPECT_THAT(ben.out, HasSubstr("N:Field;Ben"));
  EXPECT_THAT(ben.out, ::testing::Not(HasSubstr("Brook")));
  EXPECT_EQ(Desktop({"pull", "contacts", "--uid", "x"}).code, 1);
  EXPECT_EQ(Desktop({"pull", "calls", "--uid", "x"}).code, 2);
  EXPECT_EQ(Desktop({"delete", "contacts", "--uid", "x"}).code, 1);
  EXPECT_EQ(Desktop({"delete", "contacts", "--uid", "ada-1"}).code, 0);
  EXPECT_EQ(JsonLines(Desktop({"pull", "contacts", "--format", "json"}).out).size(), 1u);
}

TEST_F(Scripting, WritesContactsAndCallsForSpreadsheets) {
  const std::string pda = MakeHandheld();
  const std::string hostile = File("a.vcf",
                                   "BEGIN:VCARD\nVERSION:3.0\nN:=1+1;\"A, B\";;;\n"
                                   "NOTE:one\\ntwo\nEND:VCARD\n");
  Device({"import", pda, hostile, Sample("phone-calls.xml")});
  const Ended contacts = Device({"export", pda, "contacts", "--format", "csv"});
  EXPECT_THAT(contacts.out, StartsWith("oid,Email1Address,"));
  EXPECT_THAT(contacts.out, HasSubstr(",\"\"\"A, B\"\"\",=1+1,"));
  EXPECT_THAT(contacts.out, HasSubstr(",\"one\ntwo\","));
  const std::string calls = Device({"export", pda, "calls", "--format", "csv"}).out;
  EXPECT_THAT(calls, StartsWith("oid,number,name,"));
  EXPECT_EQ(Device({"export", pda, "tasks", "--format", "csv"}).code, 2);

  StartAgent(pda);
  const std::string file = Path("people.csv");
  EXPECT_EQ(Desktop({"pull", "contacts", "--format", "csv", "-o", file}).out,
            file + ": 1 contact\n");
  EXPECT_EQ(directory_.Read("people.csv"), contacts.out);
  EXPECT_EQ(Desktop({"pull", "contacts", "--format", "csv", "-o", file}).code, 0);
  EXPECT_THAT(Desktop({"pull", "calls", "--format", "csv"}).out, StartsWith("oid,number,name,"));
  EXPECT_EQ(Desktop({"pull", "calendar", "--format", "csv"}).code, 2);
}

TEST_F(Scripting, TellsProgramsWhatTheDeviceToolHasDone) {
  const std::string pda = Path("pda");
  EXPECT_EQ(Device1({"init", pda, "--language", "de-DE", "--zone", "UTC"}),
            (nlohmann::json{
                {"directory", pda}, {"language", "de-DE"}, {"osVersion", "5.2"}, {"zone", "UTC"}}));
  EXPECT_EQ(Device1({"set", pda, "owner", "Ada"}),
            (nlohmann::json{{"key", "owner"}, {"value", "Ada"}}));
  EXPECT_EQ(Device1({"import", pda, File("ada.vcf", kAda)})["added"], 2);
  EXPECT_EQ(Device1({"check", pda}),
            (nlohmann::json{{"sound", true}, {"problems", nlohmann::json::array()}}));
  EXPECT_EQ(Device1({"export", pda, "contacts", "-o", Path("a")}),
            (nlohmann::json{{"file", Path("a")}, {"kind", "contact"}, {"count", 2}}));
  EXPECT_EQ(Device1({"remove", pda, "2"}), (nlohmann::json{{"removed", 2}}));
  EXPECT_EQ(Device1({"remove", pda, "calls", "--all"}),
            (nlohmann::json{{"kind", "call"}, {"count", 0}}));
  Device({"registry", pda, "set", "SOFTWARE\\X", "N", "dword:7"});
  EXPECT_EQ(Device1({"registry", pda, "get", "SOFTWARE\\X"}),
            (nlohmann::json{{"name", "N"}, {"type", "dword"}, {"value", 7}}));
  EXPECT_EQ(Device1({"registry", pda, "get", "SOFTWARE"}), (nlohmann::json{{"key", "X"}}));
  EXPECT_EQ(Device1({"clock", pda})["zone"], "UTC");
  EXPECT_EQ(Device1({"note", pda, "add", Path("ada.vcf"), "\\a.txt"})["path"], "\\a.txt");
  std::filesystem::create_directory(Path("card"));
  EXPECT_EQ(Device1({"card", pda, "add", "Card", Path("card")})["name"], "Card");
  EXPECT_EQ(Device1({"card", pda, "list"})["present"], true);
  EXPECT_EQ(Device1({"card", pda, "remove", "Card"}), (nlohmann::json{{"removed", "Card"}}));
  EXPECT_EQ(Device1({"backup", pda, Path("c")})["file"], Path("c"));
  EXPECT_EQ(Device1({"backup", "--verify", Path("c")})["sound"], true);
  EXPECT_EQ(Device1({"restore", Path("c"), Path("d")})["from"], Path("c"));
  EXPECT_EQ(Device1({"clone", pda, Path("e")})["from"], pda);
}

TEST_F(Scripting, TellsProgramsWhatTheDesktopHasDone) {
  StartAgent(MakeHandheld());
  const std::string ada = File("ada.vcf", kAda);
  EXPECT_EQ(JsonLines(Desktop({"push", ada, "--json"}).out).size(), 2u);
  EXPECT_EQ(Desktop1({"pull", "contacts", "-o", Path("a")}),
            (nlohmann::json{{"file", Path("a")}, {"kind", "contact"}, {"count", 2}}));
  EXPECT_EQ(Desktop1({"delete", "contacts", "--oid", "1"})["outcome"], "deleted");
  EXPECT_EQ(Desktop1({"delete", "contacts", "--yes"}),
            (nlohmann::json{{"kind", "contact"}, {"deleted", "all"}}));
  const nlohmann::json pair =
      Desktop1({"pair", "work", "--folder", Path("desk"), "--zone", "UTC", "--kinds", "contacts"});
  EXPECT_EQ(pair["pair"], "work");
  EXPECT_EQ(pair["kinds"], nlohmann::json::array({"contacts"}));
  EXPECT_EQ(Desktop1({"pair"}), pair);
  EXPECT_EQ(Desktop({"sync", Path("desk"), "-q"}).code, 0);
  EXPECT_EQ(Desktop({"restore", Path("desk"), "--json"}).out, "");
  EXPECT_EQ(Desktop1({"page", Path("desk"), "-o", Path("b")})["file"], Path("b"));
  EXPECT_TRUE(Desktop1({"time", "set"}).contains("time"));
  EXPECT_EQ(Desktop1({"convert", File("tea.txt", "tea"), "--to", "txt", "-o", Path("c")})["bytes"],
            3);
  EXPECT_EQ(Desktop1({"logging", "off"})["logging"], "off");
  EXPECT_TRUE(Desktop1({"quit"}).contains("asked"));
}

}  // namespace
}  // namespace corvane::testing
