// The page of the sample handheld, as a person uses it; and the pictures of it.
#include <filesystem>
#include <fstream>
#include <optional>

#include "tests/browser/browser_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kPressed[] = "document.querySelector('[aria-pressed=true]').textContent === ";

// By the real program, of the samples, on a Thursday.
class PageViews : public BrowserTest {
 protected:
  static void SetUpTestSuite() {
    BrowserTest::SetUpTestSuite();
    made_.emplace();
    const auto device = [](std::vector<std::string> arguments) {
      Process process(ProgramPath("corvane-device"), arguments, {.captureErrors = true});
      process.ReadToEnd();
      const int code = process.Wait();
      if (code != 0 && code != 3) throw std::runtime_error(process.ReadErrors());
    };
    const std::string handheld = *made_ / "pda";
    device({"init", handheld, "--language", "en-US", "--zone", "Europe/Berlin"});
    device({"set", handheld, "owner", "Ada Brook"});
    for (const char* sample : {"people.vcf", "old-phone.vcf", "calendar.ics", "tasks.ics",
                               "phone-backup.xml", "phone-calls.xml"})
      device({"import", handheld, SourcePath(std::string("samples/") + sample)});
    made_->Write("packing.rtf", "{\\rtf1\\ansi Tea, \\b skis\\b0  and the good book.\\par}");
    device({"note", handheld, "add", *made_ / "packing.rtf"});
    fs::create_directory(*made_ / "card");
    device({"card", handheld, "add", "Storage Card", *made_ / "card"});
    device({"clock", handheld, "set", "2026-11-26T08:00:00Z"});
    device({"page", handheld, "-o", File()});
  }
  static void TearDownTestSuite() {
    made_.reset();
    BrowserTest::TearDownTestSuite();
  }
  static std::string File() { return *made_ / "pda.html"; }
  static std::string ListOf(const std::string& label) {
    return "[role=listbox][aria-label='" + label + "'] ";
  }

  inline static std::optional<TemporaryDirectory> made_;
};

TEST_F(PageViews, OpenEachByItsNumber) {
  Open(File());
  EXPECT_EQ(browser().Value("document.title"), "pda");
  const char* const titles[] = {"People", "Calendar", "Tasks",  "Messages",
                                "Calls",  "Notes",    "Storage"};
  for (int number = 1; number <= 7; ++number) {
    const std::string title = titles[number - 1];
    browser().Press(std::to_string(number));
    browser().Await("document.getElementById('heading').textContent === '" + title + "'");
    EXPECT_THAT(Texts("#views [aria-current]"), StartsWith("[" + title));
    EXPECT_GT(browser().Value("document.getElementById('view').textContent.length").get<int>(), 0);
  }
}

TEST_F(PageViews, ShowAPersonWithEverything) {
  Open(File(), "people/0");
  EXPECT_EQ(Texts(".card h3"), "[Dr. Amara Ngozi Okafor FRCP]");
  EXPECT_EQ(Texts(".card .chip"), "[Doctors][Friends][Conference]");
  const std::string all = Texts(".card");
  for (const char* part :
       {"+234 803 555 0123", "amara@okafor-family.example", "7 Palm Close\nFlat 3", "1971-09-04",
        "Met at the Lisbon congress.\nPrefers calls before eight.\n\nAllergic to peanuts."})
    EXPECT_THAT(all, HasSubstr(part));
  EXPECT_EQ(browser().Value("document.querySelector('.card a[href^=\"tel:\"]').href"),
            "tel:%2B2348035550123");
}

TEST_F(PageViews, FindPeopleByAnyWordWhateverItsAccents) {
  Open(File(), "people");
  Search("bjorkman");
  browser().Await("document.getElementById('status').textContent === '1 person'");
  EXPECT_EQ(Texts(ListOf("People") + ".first"), "[Åsa Björkman]");
  browser().Press(kEscapeKey);
  browser().Await("document.getElementById('status').textContent === '33 people'");
  Search("0705550103");
  browser().Await("document.getElementById('status').textContent === '0 people'");
  browser().Press(kEscapeKey);
  Search("+46705550103");
  browser().Await("document.getElementById('status').textContent === '1 person'");
  browser().Press(kEscapeKey);
  Search("cardiologist lagos");
  browser().Await("document.getElementById('status').textContent === '1 person'");
}

TEST_F(PageViews, ShowTheCategoryThatIsChosen) {
  Open(File(), "people");
  Click("[data-category=Suppliers]");
  EXPECT_THAT(Texts(ListOf("People") + ".first"), HasSubstr("[Kenji Morishita]"));
  EXPECT_THAT(Texts(ListOf("People") + ".first"), Not(HasSubstr("Okafor")));
  Click("[data-category=Suppliers]");
  EXPECT_EQ(browser().Value("document.getElementById('status').textContent"), "33 people");
}

TEST_F(PageViews, WriteEachNameInItsOwnDirection) {
  Open(File(), "people");
  const std::string names = Texts("[dir=auto].first");
  EXPECT_THAT(names, HasSubstr("Åsa"));
  EXPECT_EQ(CountOf(ListOf("People") + ".first:not([dir=auto])"), 0);
}

TEST_F(PageViews, SwitchMonthsAndPutEverySeriesInItsPlace) {
  Open(File(), "calendar");
  EXPECT_EQ(Texts(".period"), "[November 2026]");
  EXPECT_EQ(Texts(".month td[aria-current=date] > time"), "[26]");
  EXPECT_EQ(Texts(".month td[aria-current=date] .event"), "[08:15 Dentist][18:00 Italian, part 2]");
  // Moved, deleted, and as the series has it.
  EXPECT_THAT(Texts(".month td:has(> time[datetime='2026-11-25'])"),
              HasSubstr("14:00 Team meeting with the new colleagues"));
  EXPECT_EQ(Texts(".month td:has(> time[datetime='2026-11-02'])"), "[2]");
  EXPECT_THAT(Texts(".month td:has(> time[datetime='2026-11-30'])"), HasSubstr("Rent is due"));
  browser().Press(kArrowRightKey);
  browser().Await("document.querySelector('.period').textContent === 'December 2026'");
  EXPECT_EQ(Texts(".month td:has(> time[datetime='2026-12-10']) .event"), "[Ada's birthday]");
  // One bar over two weeks.
  EXPECT_EQ(CountOf(".month .bar-part"), 14);
  EXPECT_EQ(CountOf(".month .bar-part:not(.quiet)"), 2);
  browser().Press(kArrowLeftKey);
  browser().Press(kArrowLeftKey);
  browser().Await("document.querySelector('.period').textContent === 'October 2026'");
  browser().Press("t");
  browser().Await("document.querySelector('.period').textContent === 'November 2026'");
}

TEST_F(PageViews, ShowAWeekAndAnAgenda) {
  Open(File(), "calendar/week/2026-11-26");
  EXPECT_EQ(Texts(".period"), "[23 Nov – 29 Nov 2026]");
  EXPECT_EQ(CountOf(".hours .block"), 4);
  browser().Press("a");
  browser().Await(std::string(kPressed) + "'Agenda'");
  EXPECT_EQ(Texts(".agenda .day:first-of-type h3"), "[Thursday 26 November 2026]");
  EXPECT_THAT(Texts(".agenda .day:first-of-type li"), HasSubstr("08:15–09:00Dentist"));
  Click(".agenda > .button");
  EXPECT_THAT(Texts(".agenda h3"), HasSubstr("[Wednesday 25 November 2026]"));
  Click(".agenda .day:first-of-type .line");
  browser().Await("document.getElementById('sheet').open");
  browser().Press(kEscapeKey);
  browser().Await("!document.getElementById('sheet').open");
  Search("mountains");
  browser().Await("document.getElementById('status').textContent === '1 appointment'");
  EXPECT_THAT(Texts(".agenda .line b"), StartsWith("[In the mountains]"));
}

TEST_F(PageViews, ShowThreadsWithSidesAndDays) {
  Open(File(), "messages");
  EXPECT_EQ(Texts(ListOf("Conversations") + ".first"), "[Åsa Björkman][Inés García][Biblioteket]");
  Click(ListOf("Conversations") + ".row");
  EXPECT_EQ(Texts(".talk h4"),
            "[Friday 15 February 2008][Monday 31 March 2008][Thursday 1 May 2008]");
  EXPECT_THAT(Texts(".bubble.theirs p"), HasSubstr("[Fika på Björkgatan kl. 15? 🍰\n"));
  EXPECT_THAT(Texts(".bubble.mine p"), HasSubstr("[Ja! Kommer strax 😀]"));
  EXPECT_THAT(Texts(".bubble.mine small"), HasSubstr("[23:51 · Not sent]"));
  const char* const kRightOf =
      "document.querySelector('.mine').getBoundingClientRect().left > "
      "document.querySelector('.theirs').getBoundingClientRect().left";
  EXPECT_TRUE(browser().Value(kRightOf).get<bool>());
  Search("valborg");
  browser().Await("document.getElementById('status').textContent === '1 conversation'");
}

TEST_F(PageViews, ShowTasksCallsNotesAndStorage) {
  Open(File(), "tasks");
  EXPECT_EQ(Texts(".group h3"), "[Overdue 1][Due within a week 1][Later 1][Done 1]");
  GoTo("calls");
  EXPECT_THAT(Texts(ListOf("Calls") + ".row"), HasSubstr("Inés GarcíaMissed · +34935550111"));
  GoTo("notes/0");
  EXPECT_THAT(Texts(".detail .prose"), HasSubstr("[Tea, skis and the good book.]"));
  GoTo("storage");
  EXPECT_EQ(Texts(".volume h3"), "[Handheld][Storage Card]");
  EXPECT_EQ(CountOf("[role=meter][aria-valuenow]"), 2);
}

TEST_F(PageViews, CanBeUsedByTheKeyboardAlone) {
  Open(File());
  browser().Press(kTabKey);
  EXPECT_EQ(browser().Value("document.activeElement.id"), "skip");
  browser().Press(kEnterKey);
  EXPECT_EQ(browser().Value("document.activeElement.id"), "main");
  Search("an");
  browser().Press(kArrowDownKey);
  EXPECT_EQ(browser().Value("document.activeElement.getAttribute('role')"), "listbox");
  browser().Press(kArrowDownKey);
  browser().Await("document.querySelector('.card h3')");
  const std::string first = Texts(".card h3");
  EXPECT_EQ(Texts("[role=option][aria-selected=true] .first"), first);
  browser().Press(kEndKey);
  browser().Await(
      "document.querySelector('[role=option][aria-selected=true]').getAttribute("
      "'aria-posinset') === document.querySelector('[role=option]').getAttribute("
      "'aria-setsize')");
  EXPECT_NE(Texts(".card h3"), first);
  browser().Press("?");
  browser().Await("document.getElementById('sheet').open");
  EXPECT_EQ(Texts("#sheet-heading"), "[Keys]");
}

// What a screen reader is told.
TEST_F(PageViews, GiveANameToWhateverTakesTheFocus) {
  Open(File());
  for (const char* place : {"people/0", "calendar/month", "calendar/week", "calendar/agenda",
                            "tasks", "messages/0", "calls", "notes/0", "storage"}) {
    GoTo(place);
    browser().DevTools("Accessibility.enable", json::object());
    int looked = 0;
    const json tree = browser().DevTools("Accessibility.getFullAXTree", json::object());
    for (const json& node : tree["nodes"]) {
      const json properties = node.value("properties", json::array());
      const bool takesFocus = std::any_of(properties.begin(), properties.end(), [](const json& it) {
        return it["name"] == "focusable" && it["value"].value("value", false);
      });
      if (!takesFocus || node.value("ignored", false)) continue;
      ++looked;
      const std::string name = node.contains("name") ? node["name"].value("value", "") : "";
      EXPECT_NE(name, "") << place << ": " << node.dump();
    }
    EXPECT_GT(looked, 8) << place;
  }
  for (const char* landmark : {"main", "nav[aria-label]", "[role=search]", "header"})
    EXPECT_EQ(CountOf(landmark), 1) << landmark;
}

TEST_F(PageViews, ArePrintedAsAWhole) {
  Open(File(), "people");
  EXPECT_THAT(browser().Print(), StartsWith("%PDF"));
  browser().Run("dispatchEvent(new Event('beforeprint'))");
  EXPECT_EQ(CountOf("#print .card"), 33);
  browser().Run("dispatchEvent(new Event('afterprint'))");
  EXPECT_EQ(CountOf("#print *"), 0);
}

TEST_F(PageViews, FitANarrowScreen) {
  browser().Resize(400, 800);
  Open(File(), "people");
  for (const char* place : {"people", "calendar/month", "calendar/week", "calendar/agenda", "tasks",
                            "messages", "calls", "notes", "storage"}) {
    GoTo(place);
    EXPECT_TRUE(browser().Value("document.documentElement.scrollWidth <= 400").get<bool>())
        << place;
  }
  GoTo("messages/0");
  EXPECT_FALSE(browser().Value("document.querySelector('.index').checkVisibility()").get<bool>());
  Click(".back");
  EXPECT_TRUE(browser().Value("document.querySelector('.index').checkVisibility()").get<bool>());
}

// Those in docs/pictures are copies of these.
TEST_F(PageViews, HaveTheirPicturesTaken) {
  const fs::path folder = fs::path(ProgramPath("")).parent_path().parent_path() / "pictures";
  fs::create_directories(folder);
  struct Picture {
    const char* name;
    const char* place;
    bool dark;
  };
  for (const Picture& picture : {Picture{"people.png", "people/0", false},
                                 Picture{"calendar.png", "calendar/month/2026-12-01", false},
                                 Picture{"messages.png", "messages/0", true}}) {
    browser().PreferDark(picture.dark);
    browser().Resize(1120, 700);
    Open(File(), picture.place);
    browser().Await("document.fonts.status === 'loaded'");
    const std::string png = browser().Screenshot();
    EXPECT_THAT(png, StartsWith("\x89PNG"));
    EXPECT_LT(png.size(), 150'000u) << picture.name;
    std::ofstream(folder / picture.name, std::ios::binary) << png;
  }
}

}  // namespace
}  // namespace corvane::testing
