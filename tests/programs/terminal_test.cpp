// What corvane-device shows on a terminal: columns, headings in bold, a pager.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kPeople[] =
    "BEGIN:VCARD\nVERSION:3.0\nN:山田;太郎;;;\nORG:青葉\nTEL;TYPE=CELL:090\n"
    "EMAIL:taro@aoba.example\nEND:VCARD\n"
    "BEGIN:VCARD\nVERSION:3.0\nN:Bjo\u0308rkman;A\u030Asa;;;\nTEL;TYPE=CELL:070\n"
    "EMAIL:asa@hoga.example\nEND:VCARD\n"
    "BEGIN:VCARD\nVERSION:3.0\nN:Field;Ben;;;\nTEL;TYPE=CELL:080\n"
    "EMAIL:ben\u202E@field.example\nEND:VCARD\n";

// Of the row with it. The text in front has `wide` characters of two cells and `marks` without one.
std::size_t ColumnOf(const std::string& text, const std::string& out, std::size_t wide,
                     std::size_t marks) {
  const std::size_t at = out.find(text);
  if (at == out.npos) throw std::runtime_error(text + " is not in: " + out);
  const std::size_t line = out.rfind('\n', at) + 1;
  std::size_t characters = 0;
  for (std::size_t i = line; i < at; ++i) characters += (out[i] & 0xC0) != 0x80;
  return characters + wide - marks;
}

class OnTerminal : public ToolTest {
 protected:
  using Variables = std::vector<std::pair<std::string, std::string>>;

  OnTerminal() : pda_(MakeHandheld()) {
    EXPECT_EQ(Device({"import", pda_, File("people.vcf", kPeople)}).code, 0);
  }

  // With errors of its own, so that what is on the terminal is the standard output.
  Ended Look(const Arguments& arguments, const Variables& variables = {},
             unsigned short columns = 80) const {
    ProcessOptions options = Options();
    options.terminalColumns = columns;
    options.environment.insert(
        options.environment.end(),
        {{"TERM", "xterm"}, {"NO_COLOR", ""}, {"COLUMNS", ""}, {"PAGER", ""}});
    options.environment.insert(options.environment.end(), variables.begin(), variables.end());
    return Run("corvane-device", arguments, options);
  }
  std::string LookAtContacts(const Variables& variables = {}) const {
    return Look({"show", pda_, "contacts"}, variables).out;
  }
  std::string Event(const std::string& summary) const {
    return File("event.ics",
                "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:1\nDTSTART:20261103T090000Z\n"
                "DTEND:20261103T100000Z\nSUMMARY:" +
                    summary + "\nEND:VEVENT\nEND:VCALENDAR\n");
  }
  // More than a pipe holds.
  void ImportManyContacts() const {
    std::string cards;
    for (int i = 0; i < 1000; ++i) {
      const std::string name = "Person" + std::to_string(1000 + i);
      cards += "BEGIN:VCARD\nVERSION:3.0\nN:" + name + ";;;;\nEMAIL:" + name +
               "@a-long-name-for-a-host.example\nEND:VCARD\n";
    }
    EXPECT_EQ(Device({"import", pda_, File("many.vcf", cards)}).code, 0);
  }

  const std::string pda_;
};

TEST_F(OnTerminal, AlignsColumnsBehindWideAndCombinedNames) {
  const std::string out = LookAtContacts();
  const std::size_t phone = ColumnOf("080", out, 0, 0);
  EXPECT_EQ(ColumnOf("090", out, 6, 0), phone) << out;
  EXPECT_EQ(ColumnOf("070", out, 0, 2), phone) << out;
  EXPECT_EQ(ColumnOf("taro@", out, 6, 0), ColumnOf("ben @", out, 0, 0)) << out;
}

TEST_F(OnTerminal, AlignsTheDaysOfAMonthBehindAWideName) {
  EXPECT_EQ(Device({"import", pda_, Event("山田太郎と会う約束")}).code, 0);
  EXPECT_EQ(Device({"import", pda_,
                    File("next.ics",
                         "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:2\n"
                         "DTSTART:20261104T090000Z\nSUMMARY:Next\nEND:VEVENT\n"
                         "END:VCALENDAR\n")})
                .code,
            0);
  const std::string out = Look({"show", pda_, "calendar", "--month", "2026-11"}).out;
  EXPECT_THAT(out, HasSubstr("\n              山田太郎…  Next\n"));
}

TEST_F(OnTerminal, UsesTheWidthThatThereIs) {
  const std::string subject =
      "A very long subject that goes on and on until nobody reads it any "
      "more, and then a little further";
  EXPECT_EQ(Device({"import", pda_, Event(subject)}).code, 0);
  const Arguments agenda = {"show", pda_, "calendar", "--from", "2026-11-03"};
  EXPECT_THAT(Look(agenda).out, HasSubstr(subject.substr(0, 64) + "…\n"));
  EXPECT_THAT(Look(agenda, {}, 60).out, HasSubstr(subject.substr(0, 44) + "…\n"));
  EXPECT_THAT(Look(agenda, {{"COLUMNS", "200"}}, 60).out, HasSubstr(subject + "\n"));
  EXPECT_THAT(Look(agenda, {{"COLUMNS", "wide"}}, 60).out, HasSubstr(subject.substr(0, 44) + "…"));
  const Arguments month = {"show", pda_, "calendar", "--month", "2026-11"};
  EXPECT_THAT(Look(month, {}, 1).out, HasSubstr("A v…"));
  EXPECT_THAT(Look(month, {}, 60).out, HasSubstr(" A very…\n"));
}

TEST_F(OnTerminal, ShowsHeadingsInBold) {
  EXPECT_THAT(LookAtContacts(), AllOf(StartsWith("\x1B[1m       OID  Name "),
                                      HasSubstr(" E-mail\x1B[0m\n         1  ")));
}

TEST_F(OnTerminal, IsPlainForWhomWantsItSo) {
  EXPECT_THAT(LookAtContacts({{"NO_COLOR", "1"}}), Not(HasSubstr("\x1B")));
  EXPECT_THAT(LookAtContacts({{"TERM", "dumb"}}), Not(HasSubstr("\x1B")));
  EXPECT_THAT(LookAtContacts({{"TERM", ""}}), Not(HasSubstr("\x1B")));
}

TEST_F(OnTerminal, GetsNothingThatTurnsTextAround) {
  EXPECT_THAT(LookAtContacts({{"NO_COLOR", "1"}}), HasSubstr(" ben @field.example\n"));
}

TEST_F(OnTerminal, GivesAPipeNeitherEscapesNorAPager) {
  ProcessOptions options = Options();
  options.environment.insert(
      options.environment.end(),
      {{"TERM", "xterm"}, {"NO_COLOR", ""}, {"COLUMNS", "40"}, {"PAGER", "sed s/^/paged:/"}});
  const Ended shown = Run("corvane-device", {"show", pda_, "contacts"}, options);
  EXPECT_EQ(shown.code, 0);
  EXPECT_THAT(shown.out, AllOf(StartsWith("       OID  Name "), Not(HasSubstr("\x1B"))));
}

TEST_F(OnTerminal, PutsListsIntoThePager) {
  const Variables pager = {{"PAGER", "sed s/^/paged:/"}, {"NO_COLOR", "1"}};
  EXPECT_THAT(LookAtContacts(pager),
              AllOf(StartsWith("paged:       OID  Name "), EndsWith("\npaged:3 contacts\n")));
  EXPECT_THAT(Look({"search", pda_, "ben"}, pager).out, EndsWith("paged:1 found\n"));
  EXPECT_THAT(Look({"info", pda_}, pager).out, StartsWith("paged:Directory "));
}

TEST_F(OnTerminal, TellsWhatFailedInThePagerToo) {
  ProcessOptions options = Options();
  options.captureErrors = false;
  options.terminalColumns = 80;
  options.environment.insert(options.environment.end(),
                             {{"TERM", "xterm"}, {"PAGER", "sed s/^/paged:/"}});
  const Ended none = Run("corvane-device", {"show", pda_, "contacts", "--oid", "9"}, options);
  EXPECT_EQ(none.code, 1) << "the list's own, not the pager's";
  EXPECT_EQ(none.out, "paged:corvane-device: 9: no such contact\n");
}

TEST_F(OnTerminal, GoesPastThePagerWhenItIsTold) {
  const Variables pager = {{"PAGER", "sed s/^/paged:/"}};
  const Arguments show = {"show", pda_, "contacts"};
  for (const char* option : {"--no-pager", "--json", "-q"}) {
    Arguments all = show;
    all.emplace_back(option);
    const Ended shown = Look(all, pager);
    EXPECT_EQ(shown.code, 0);
    EXPECT_THAT(shown.out, AllOf(HasSubstr("taro@"), Not(HasSubstr("paged:")))) << option;
  }
  EXPECT_THAT(Look({"export", pda_, "contacts"}, pager).out, StartsWith("BEGIN:VCARD"));
  EXPECT_THAT(Look(show, {{"PAGER", "sed s/^/paged:/"}, {"TERM", "dumb"}}).out,
              Not(HasSubstr("paged:")));
}

TEST_F(OnTerminal, EndsQuietlyWhenThePagerIsLeft) {
  ImportManyContacts();
  for (const char* pager : {"sed 2q", "true", "head -n 2"}) {
    const Ended left = Look({"show", pda_, "contacts"}, {{"PAGER", pager}, {"NO_COLOR", "1"}});
    EXPECT_EQ(left.code, 0) << pager;
    EXPECT_EQ(left.err, "") << pager;
    EXPECT_THAT(left.out, Not(HasSubstr("Person1999"))) << pager;
  }
}

TEST_F(OnTerminal, SaysItAllWithoutThePagerThatIsNotThere) {
  const std::string out = LookAtContacts();
  EXPECT_THAT(out, EndsWith("3 contacts\n"));
  for (const char* pager : {"no-such-pager", "no-such-pager -R", "/no/such/pager", "  "}) {
    EXPECT_EQ(LookAtContacts({{"PAGER", pager}}), out) << pager;
  }
}

TEST_F(OnTerminal, FailsWhenOnlyTheShellFindsThatThePagerIsNotThere) {
  const Ended lost = Look({"show", pda_, "contacts"}, {{"PAGER", "LESS=R no-such-pager"}});
  EXPECT_EQ(lost.code, 1);
  EXPECT_THAT(lost.err, HasSubstr("corvane-device: $PAGER cannot be run\n"));
}

}  // namespace
}  // namespace corvane::testing
