// What a contact has no field for goes to its note and comes back, whichever program does it; a
// synchronisation takes it for the text that it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kNothingNew[] = "0 added, 0 changed, 0 merged, 0 conflicts; desk 0, handheld 0\n";
constexpr char kFirstMark[] = "--- vCard lines without a field of their own ---";
constexpr char kMuchOfOne[] =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ann-1\r\nFN:Ann Doe\r\nN:Doe;Ann;;;\r\n"
    "TEL;TYPE=WORK,VOICE:+46 8 1\r\nTEL;TYPE=WORK,VOICE:+46 8 2\r\nTEL;TYPE=WORK,VOICE:+46 8 3\r\n"
    "TEL;TYPE=PAGER:5\r\nTEL;TYPE=PAGER:6\r\nTEL;TYPE=ASSISTANT:9\r\n"
    "item1.TEL;TYPE=CELL:7\r\nitem1.X-ABLabel:Boat\r\n"
    "EMAIL:1@a\r\nEMAIL:2@a\r\nEMAIL:3@a\r\nEMAIL;TYPE=HOME:4@a\r\n"
    "NICKNAME:Annie\r\nIMPP:xmpp:ann@a\r\nNOTE:Met in Girona\\nin May\r\nEND:VCARD\r\n";

class OverflowTest : public ToolTest {
 protected:
  // The lines that no field has.
  static void ExpectEveryLine(const std::string& card) {
    for (const char* line :
         {"\r\nTEL;TYPE=PAGER:6\r\n", "TEL;TYPE=CELL;X-KEPT-AS=MobileTelephoneNumber:7\r\n",
          ".X-ABLabel:Boat\r\n", "\r\nEMAIL;TYPE=HOME:4@a\r\n", "\r\nNICKNAME:Annie\r\n",
          "\r\nIMPP:xmpp:ann@a\r\n", "TYPE=WORK,VOICE;X-KEPT-AS=Home2TelephoneNumber:+46 8 3\r\n"})
      EXPECT_THAT(card, HasSubstr(line));
    EXPECT_THAT(card, Not(HasSubstr("---")));
  }
  std::string FileOnDesk() const {
    std::string found;
    for (const auto& entry : fs::recursive_directory_iterator(Path("desk")))
      if (entry.path().extension() == ".vcf") found = entry.path();
    return found;
  }
  std::string OnDesk() const { return Unfolded(ReadFile(FileOnDesk())); }
  static std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string Unfolded(std::string text) {
    for (std::size_t at = text.find("\r\n "); at != text.npos; at = text.find("\r\n ", at))
      text.erase(at, 3);
    return text;
  }
  std::string Exported(const std::string& handheld) const {
    return Device({"export", handheld, "contacts", "--overflow", "note"}).out;
  }
  Ended Sync() const { return Desktop({"sync", Path("desk"), "--zone", "UTC", "--country", "SE"}); }
};

TEST_F(OverflowTest, IsOffByDefault) {
  const std::string handheld = MakeHandheld();
  const Ended in = Device({"import", handheld, File("ann.vcf", kMuchOfOne), "-v"});
  EXPECT_THAT(in.err, AllOf(HasSubstr("NICKNAME"), HasSubstr("EMAIL")));
  EXPECT_THAT(Contacts(handheld), Not(HasSubstr("---")));
}

TEST_F(OverflowTest, GoesThroughAHandheldAndBack) {
  const std::string handheld = MakeHandheld();
  const std::string file = File("ann.vcf", kMuchOfOne);
  const Ended in = Device({"import", handheld, file, "--overflow", "note", "-v"});
  EXPECT_EQ(in.code, 0);
  EXPECT_THAT(in.err, AllOf(HasSubstr("+46 8 3 is kept as Home2TelephoneNumber"),
                            Not(HasSubstr("NICKNAME"))));
  EXPECT_THAT(Contacts(handheld),
              AllOf(HasSubstr(kFirstMark), HasSubstr("\"AssistantTelephoneNumber\":\"9\"")));
  const std::string card = Exported(handheld);
  ExpectEveryLine(card);
  EXPECT_THAT(card, HasSubstr("NOTE:Met in Girona\\nin May\r\n"));
  const std::string before = Contacts(handheld);
  for (const std::string& again : {file, File("again.vcf", card)}) {
    EXPECT_EQ(Device({"import", handheld, again, "--overflow", "note"}).code, 0);
    EXPECT_EQ(Contacts(handheld), before);
  }
  const std::string other = MakeHandheld("other");
  Device({"import", other, Path("again.vcf"), "--overflow", "note"});
  EXPECT_EQ(WithoutOids(Contacts(other)), WithoutOids(before));
}

TEST_F(OverflowTest, GoesOverTheWireAndBack) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  const std::string file = File("ann.vcf", kMuchOfOne);
  const Ended first = Desktop({"push", file, "--overflow", "note"});
  EXPECT_EQ(first.code, 0) << first.err;
  EXPECT_THAT(first.err, AllOf(Not(HasSubstr("the wire does not carry")), EndsWith("1 added\n")));
  EXPECT_THAT(Desktop({"push", file, "--overflow", "note"}).err, EndsWith("1 unchanged\n"));
  const Ended pulled = Desktop({"pull", "contacts", "--overflow", "note"});
  ExpectEveryLine(pulled.out);
  EXPECT_THAT(pulled.out, HasSubstr("\r\nTEL;TYPE=ASSISTANT:9\r\n"));
  const std::string back = File("back.vcf", pulled.out);
  EXPECT_THAT(Desktop({"push", back, "--overflow", "note"}).err, EndsWith("1 unchanged\n"));
  EXPECT_THAT(Unfolded(Desktop({"pull", "contacts"}).out), HasSubstr(kFirstMark));
}

TEST_F(OverflowTest, IsATextToASynchronisation) {
  const std::string handheld = MakeHandheld();
  Device({"import", handheld, File("ann.vcf", kMuchOfOne), "--overflow", "note"});
  const std::string before = Contacts(handheld);
  const std::string card = Exported(handheld);
  StartAgent(handheld);
  EXPECT_THAT(Sync().out,
              EndsWith("1 added, 0 changed, 0 merged, 0 conflicts; desk 1, handheld 0\n"));
  const std::string desk = OnDesk();
  EXPECT_THAT(desk, HasSubstr(kFirstMark));
  EXPECT_EQ(Sync().out, kNothingNew);
  EXPECT_EQ(OnDesk(), desk);
  EXPECT_EQ(Contacts(handheld), before);
  EXPECT_EQ(Exported(handheld), card);

  // What people write above it goes to the handheld, and the lines stay what they are.
  std::string edited = desk;
  edited.replace(edited.find("Met in Girona"), 13, "Met in Lund");
  std::ofstream(FileOnDesk(), std::ios::binary) << edited;
  EXPECT_THAT(Sync().out, EndsWith("desk 0, handheld 1\n"));
  EXPECT_EQ(Sync().out, kNothingNew);
  EXPECT_THAT(Exported(handheld), HasSubstr("NOTE:Met in Lund\\nin May\r\n"));
  ExpectEveryLine(Exported(handheld));
}

TEST_F(OverflowTest, LeavesTheDesksOwnLinesToASynchronisation) {
  const std::string handheld = MakeHandheld();
  Device({"import", handheld, File("ann.vcf", kMuchOfOne), "--overflow", "note"});
  fs::create_directories(Path("desk/contacts"));
  fs::copy_file(Path("ann.vcf"), Path("desk/contacts/ann.vcf"));
  StartAgent(handheld);
  EXPECT_EQ(Sync().code, 0);
  const std::string desk = OnDesk();
  const std::string people = Contacts(handheld);
  for (const char* line : {"\r\nTEL;TYPE=PAGER:6\r\n", "\r\nEMAIL;TYPE=HOME:4@a\r\n",
                           "\r\nNICKNAME:Annie\r\n", "\r\nitem1.X-ABLabel:Boat\r\n"})
    EXPECT_THAT(desk, HasSubstr(line));
  EXPECT_EQ(Sync().out, kNothingNew);
  EXPECT_EQ(OnDesk(), desk);
  EXPECT_EQ(Contacts(handheld), people);
  ExpectEveryLine(Exported(handheld));
}

}  // namespace
}  // namespace corvane::testing
