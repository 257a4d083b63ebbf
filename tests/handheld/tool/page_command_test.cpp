#include "handheld/tool/page_command.h"

#include <gmock/gmock.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <thread>

#include "handheld/ink/ink_note.h"
#include "handheld/tool/card_commands.h"
#include "handheld/tool/clock_commands.h"
#include "tests/handheld/tool/maintenance_support.h"
#include "tests/support/store_sql.h"

namespace tool::testing {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class PageCommand : public MaintenanceTest {
 protected:
  PageCommand() { Init({.language = "de-DE", .zone = "Europe/Berlin"}); }

  fs::path Documents() const { return HandheldPath() / "files" / "My Documents"; }
  void Note(const std::string& name, const std::string& content) {
    fs::create_directories((Documents() / name).parent_path());
    std::ofstream(Documents() / name, std::ios::binary) << content;
  }
  static json DataIn(const std::string& page) {
    const std::string begin = "id=\"data\">";
    const std::size_t from = page.find(begin) + begin.size();
    return json::parse(page.substr(from, page.find("</script>", from) - from));
  }
  json Page(Outcome expected = Outcome::kDone) {
    EXPECT_EQ(Run([](Session& session, const Report& report) {
                return MakePage(session, std::nullopt, report);
              }),
              expected);
    return DataIn(out_);
  }
};

TEST_F(PageCommand, MakesAPageOfAnEmptyHandheld) {
  const json data = Page();
  EXPECT_EQ(data["name"], "handheld");
  EXPECT_EQ(data["zone"], "Europe/Berlin");
  EXPECT_TRUE(data["people"].empty());
  ASSERT_EQ(data["volumes"].size(), 1u);
  EXPECT_EQ(data["volumes"][0]["name"], "Handheld");
  EXPECT_EQ(err_, "");
}

TEST_F(PageCommand, TakesTheHandheldsOwnTime) {
  Run([](Session& session, const Report& report) {
    return SetClock(session, "2008-02-15T13:45:00Z", report);
  });
  const std::int64_t now = Page()["now"];
  EXPECT_EQ(now / 86'400, 13'924);  // 2008-02-15
  EXPECT_GE(now % 86'400, (14 * 60 + 45) * 60);
}

TEST_F(PageCommand, KnowsNumbersAsTheyAreDialledInItsCountry) {
  Import(
      {WriteFile("a.vcf",
                 "BEGIN:VCARD\nVERSION:3.0\nN:Brook;Ada\nTEL;TYPE=CELL:0170 5550101\nEND:VCARD\n"),
       WriteFile("sms.jsonl", R"({"folder":"/Inbox","from":"+491705550101","text":"Hi"})"
                              "\n")});
  EXPECT_EQ(Page()["threads"][0]["people"], json::array({0}));
}

TEST_F(PageCommand, ReadsNotesOfEveryFormat) {
  Note("a.rtf", "{\\rtf1\\ansi Tea and \\b skis\\b0.\\par}");
  Note("b.txt",
       "Gr\xFC\xDF"
       "e");  // of the handheld's code page
  Note("deep/c.unicode", std::string("H\0i\0", 4));
  Note("d.PWI", *ce::host::WriteInkNote(u"ink \x05D0"));
  Note("e.bin", "no note");
  const json notes = Page()["notes"];
  std::map<std::string, std::string> texts;
  for (const json& note : notes) texts[note["path"]] = note["text"];
  EXPECT_THAT(texts, ::testing::ElementsAre(std::pair("\\My Documents\\a.rtf", "Tea and skis."),
                                            std::pair("\\My Documents\\b.txt", "Grüße"),
                                            std::pair("\\My Documents\\d.PWI", "ink \xD7\x90"),
                                            std::pair("\\My Documents\\deep\\c.unicode", "Hi")));
}

TEST_F(PageCommand, NamesANoteThatCannotBeRead) {
  Note("a.pwi", "no ink");
  Note("b.txt", "fine");
  fs::create_symlink("/etc/passwd", Documents() / "c.txt");
  const json data = Page(Outcome::kPartlyDone);
  EXPECT_EQ(data["notes"].size(), 1u);
  EXPECT_EQ(data["remarks"], json::array({"\\My Documents\\a.pwi: the note is damaged"}));
  EXPECT_EQ(err_, "corvane-device: \\My Documents\\a.pwi: the note is damaged\n");
}

TEST_F(PageCommand, ShowsCardsThatAreThere) {
  for (const char* name : {"Storage Card", "Gone"}) {
    fs::create_directory(directory_ / name);
    Run([&](Session& session, const Report& report) {
      return AddCard(session, name, directory_ / name, report);
    });
  }
  fs::remove(directory_ / "Gone");
  const json volumes = Page()["volumes"];
  ASSERT_EQ(volumes.size(), 2u);
  EXPECT_EQ(volumes[1]["name"], "Storage Card");
  EXPECT_GT(volumes[1]["total"], 0);
}

TEST_F(PageCommand, GoesToAFileAsAWhole) {
  const fs::path file = directory_ / "page.html";
  const auto make = [&](const fs::path& to) {
    return Run([&](Session& session, const Report& report) {
      const Outcome outcome = MakePage(session, to, report);
      EXPECT_EQ(ce::host::Handheld::Current(), &session.handheld());
      return outcome;
    });
  };
  EXPECT_EQ(make(file), Outcome::kDone);
  EXPECT_EQ(out_, file.string() + ": a page, to be opened in any browser\n");
  EXPECT_EQ(DataIn(ReadFile(file))["name"], "handheld");
}

TEST_F(PageCommand, LeavesNothingOfItsCopyBehind) {
  const fs::path temporary = directory_ / "tmp";
  fs::create_directory(temporary);
  const char* const before = std::getenv("TMPDIR");
  const std::string kept = before ? before : "";
  setenv("TMPDIR", temporary.c_str(), 1);
  Import({WriteFile("a.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Brook;Ada\nEND:VCARD\n")});
  EXPECT_EQ(Page()["people"].size(), 1u);
  before ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
  EXPECT_TRUE(fs::is_empty(temporary));
}

// Two kinds that another program changes together are of the same moment on each page.
TEST_F(PageCommand, IsOfOneMoment) {
  Import({WriteFile("a.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Brook;0\nEND:VCARD\n"),
          WriteFile("t.ics",
                    "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VTODO\nUID:t\nSUMMARY:0\n"
                    "END:VTODO\nEND:VCALENDAR\n")});
  Session session(HandheldPath());
  std::atomic<bool> ended = false;
  std::atomic<int> written = 0;
  std::thread writer([&] {
    for (int n = 1; !ended; ++n) {
      const std::string text = "'" + std::to_string(n) + "'";
      if (corvane::testing::RunSql(session.handheld(),
                                   "PRAGMA busy_timeout = 10000; BEGIN IMMEDIATE;"
                                   "UPDATE contacts SET FirstName = " +
                                       text + "; UPDATE tasks SET Subject = " + text + "; COMMIT"))
        written = n;
    }
  });
  for (int page = 0; page < 20; ++page) {
    const int before = written;
    while (written == before) std::this_thread::yield();
    RunIn(session, [](Session& there, const Report& report) {
      return MakePage(there, std::nullopt, report);
    });
    const json data = DataIn(out_);
    EXPECT_EQ(data["people"][0]["name"], data["tasks"][0]["subject"].get<std::string>() + " Brook");
  }
  ended = true;
  writer.join();
}

}  // namespace
}  // namespace tool::testing
