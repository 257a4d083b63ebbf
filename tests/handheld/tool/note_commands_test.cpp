#include "handheld/tool/note_commands.h"

#include "common/files/error.h"
#include "handheld/base/fault.h"
#include "handheld/tool/card_commands.h"
#include "tests/handheld/tool/maintenance_support.h"

namespace tool::testing {
namespace {

namespace fs = std::filesystem;
using ce::host::FaultPlan;

class NoteCommands : public MaintenanceTest {
 protected:
  NoteCommands() { Init(); }

  std::string Add(const std::optional<std::string>& name, const std::string& content = "a note") {
    const auto add = [&](Session& session, const Report& report) {
      return AddNote(session, WriteFile("note.pwi", content), name, report);
    };
    EXPECT_EQ(Run(add), Outcome::kDone);
    return out_;
  }
  void ExpectRefused(const std::string& name) { EXPECT_THROW(Add(name), UsageError) << name; }
  fs::path Files() const { return HandheldPath() / "files"; }
};

TEST_F(NoteCommands, GoesToTheDocumentsUnderItsOwnName) {
  EXPECT_EQ(Add(std::nullopt), "\\My Documents\\note.pwi: 6 bytes\n");
  EXPECT_EQ(ReadFile(Files() / "My Documents" / "note.pwi"), "a note");
}

TEST_F(NoteCommands, TakesAName) {
  EXPECT_EQ(Add("Möte.pwi", ""), "\\My Documents\\Möte.pwi: 0 bytes\n");
  EXPECT_TRUE(fs::exists(Files() / "My Documents" / "Möte.pwi"));
}

TEST_F(NoteCommands, TakesAPathOfTheDevice) {
  fs::create_directory(Files() / "Notes");
  EXPECT_EQ(Add("\\notes\\a.pwi"), "\\notes\\a.pwi: 6 bytes\n");
  Add("/b.pwi");
  EXPECT_EQ(ReadFile(Files() / "Notes" / "a.pwi"), "a note");
  EXPECT_EQ(ReadFile(Files() / "b.pwi"), "a note");
  EXPECT_FALSE(fs::exists(Files() / "My Documents"));
}

TEST_F(NoteCommands, UsesTheDocumentsHoweverTheyAreSpelt) {
  fs::create_directory(Files() / "my documents");
  Add("a.pwi");
  EXPECT_TRUE(fs::exists(Files() / "my documents" / "a.pwi"));
  EXPECT_FALSE(fs::exists(Files() / "My Documents"));
}

TEST_F(NoteCommands, GoesToACard) {
  fs::create_directory(directory_ / "sd");
  Run([&](Session& session, const Report& report) {
    return AddCard(session, "Card", directory_ / "sd", report);
  });
  Add("\\Card\\a.pwi");
  EXPECT_EQ(ReadFile(directory_ / "sd" / "a.pwi"), "a note");
}

TEST_F(NoteCommands, LeavesTheHandheldByNoName) {
  WriteFile("handheld/files/link-target", "x");
  fs::create_directory(Files() / "My Documents");
  fs::create_directory_symlink(directory_, Files() / "My Documents" / "out");
  for (const char* name : {"..\\..\\a.pwi", "../../a.pwi", "\\..\\a.pwi", "/../registry.reg", "..",
                           ".", "", "\\", "a?.pwi", "COM1", "a\\..\\b.pwi"})
    ExpectRefused(name);
  EXPECT_THROW(Add("out\\a.pwi"), files::Error);
  EXPECT_FALSE(fs::exists(directory_ / "a.pwi"));
  EXPECT_FALSE(fs::exists(HandheldPath() / "a.pwi"));
}

TEST_F(NoteCommands, LeavesWhatIsThereAlone) {
  Add("a.pwi", "first");
  EXPECT_THROW(Add("A.PWI", "second"), UsageError);
  EXPECT_EQ(ReadFile(Files() / "My Documents" / "a.pwi"), "first");
}

TEST_F(NoteCommands, RefusesADirectoryThatIsNotThere) {
  ExpectRefused("\\Nowhere\\a.pwi");
  ExpectRefused("Sub\\a.pwi");
}

TEST_F(NoteCommands, RefusesWhatNoHandheldTakesForANote) {
  EXPECT_THROW(Add("a.pwi", std::string((16 << 20) + 1, 'x')), UsageError);
  EXPECT_FALSE(fs::exists(Files() / "My Documents" / "a.pwi"));
}

TEST_F(NoteCommands, SaysThatAFileCannotBeRead) {
  Capture capture;
  Session session(HandheldPath());
  EXPECT_THROW(AddNote(session, directory_ / "absent", std::nullopt, capture.report()),
               files::Error);
}

TEST_F(NoteCommands, LeavesNoPartOfANoteBehind) {
  for (const char* call : {"CreateFileW", "WriteFile", "FlushFileBuffers"}) {
    const auto plan = FaultPlan::FailCalls(call, ce::ERROR_DISK_FULL);
    try {
      Add("a.pwi");
      ADD_FAILURE() << call;
    } catch (const files::Error& error) {
      EXPECT_STREQ(error.what(), "\\My Documents\\a.pwi: the disk is full") << call;
    }
    EXPECT_FALSE(fs::exists(Files() / "My Documents" / "a.pwi")) << call;
  }
}

}  // namespace
}  // namespace tool::testing
