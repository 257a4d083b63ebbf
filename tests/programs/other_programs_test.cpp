// What other programs of a desk write into the folder arrives on the handheld, and they show what
// is edited there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kKhard[] = R"([addressbooks]
[[desk]]
path = ~/desk/contacts
[general]
editor = /bin/true
merge_editor = /bin/true
)";

constexpr char kKhal[] = R"([calendars]
[[desk]]
path = ~/desk/calendar
[locale]
timeformat = %H:%M
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
datetimeformat = %Y-%m-%d %H:%M
longdatetimeformat = %Y-%m-%d %H:%M
local_timezone = Europe/Berlin
default_timezone = Europe/Berlin
[default]
default_calendar = desk
)";

constexpr char kTodoman[] = R"(path = "~/desk/tasks"
date_format = "%Y-%m-%d"
time_format = "%H:%M"
default_list = "tasks"
)";

constexpr char kRadicale[] = R"([server]
hosts = 127.0.0.1:0
[auth]
type = none
[storage]
filesystem_folder = ~/collections
[logging]
level = info
)";

// The desk and a second folder, each with the same collections of a server.
constexpr char kVdirsyncer[] = R"([general]
status_path = "~/vdirsyncer"
[pair there_people]
a = "desk_cards"
b = "server_people"
collections = [["people", "contacts", "people"]]
[pair there_dates]
a = "desk_dates"
b = "server_dates"
collections = [["dates", "calendar", "dates"], ["duties", "tasks", "duties"]]
[pair back_people]
a = "second_cards"
b = "server_people"
collections = [["people", "contacts", "people"]]
[pair back_dates]
a = "second_dates"
b = "server_dates"
collections = [["dates", "calendar", "dates"], ["duties", "tasks", "duties"]]
[storage desk_cards]
type = "filesystem"
path = "~/desk/"
fileext = ".vcf"
[storage desk_dates]
type = "filesystem"
path = "~/desk/"
fileext = ".ics"
[storage second_cards]
type = "filesystem"
path = "~/second/"
fileext = ".vcf"
[storage second_dates]
type = "filesystem"
path = "~/second/"
fileext = ".ics"
[storage server_people]
type = "carddav"
url = "http://127.0.0.1:PORT/eva/"
username = "eva"
password = "eva"
[storage server_dates]
type = "caldav"
url = "http://127.0.0.1:PORT/eva/"
username = "eva"
password = "eva"
)";

class OtherPrograms : public ToolTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Device({"init", Path("handheld"), "--zone", "Europe/Berlin"}).code, 0);
    ASSERT_EQ(Device({"import", Path("handheld"), Sample("people.vcf"), Sample("calendar.ics"),
                      Sample("tasks.ics")})
                  .code,
              0);
    fs::create_directory(Path("home"));
    Configure("khard/khard.conf", kKhard);
    Configure("khal/config", kKhal);
    Configure("todoman/config.py", kTodoman);
    StartAgent(Path("handheld"));
    ASSERT_THAT(Sync(), HasSubstr("39 added"));
  }

  void Configure(const std::string& file, const std::string& text) const {
    const fs::path path = fs::path(Path("config")) / file;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }

  // What a command prints that succeeds, in a home of its own.
  std::string Does(const std::string& command) const {
    const Ended ended = Shell(
        "set -o pipefail; export LC_ALL=C.UTF-8 TZ=Europe/Berlin "
        "XDG_DATA_HOME=~/data XDG_CACHE_HOME=~/cache; cd; " +
        command);
    EXPECT_EQ(ended.code, 0) << command << "\n" << ended.out << ended.err;
    return ended.out;
  }

  std::string Sync() const {
    const Ended ended =
        Desktop({"sync", Path("home/desk"), "--zone", "Europe/Berlin", "--country", "DE"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    return ended.out;
  }

  std::string OnHandheld(const std::string& kind) const {
    return Desktop({"pull", kind, "--format", "json", "--zone", "Europe/Berlin"}).out;
  }

  // As if it were typed there: what else its item has stays.
  void EditOnHandheld(const std::string& kind, const std::string& from, const std::string& to) {
    const std::string path = Path(kind == "contacts" ? "edit.vcf" : "edit.ics");
    fs::remove(path);
    ASSERT_EQ(Desktop({"pull", kind, "--zone", "Europe/Berlin", "-o", path}).code, 0);
    std::ifstream file(path);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << text;
    std::ofstream(path) << text.replace(at, from.size(), to);
    const Ended pushed = Desktop({"push", "--zone", "Europe/Berlin", path});
    ASSERT_THAT(pushed.err, HasSubstr("1 changed"));
  }

  // Radicale, on a port that the system chooses.
  void StartServer() {
    Configure("radicale", kRadicale);
    const std::string log = "sed -un \"s/.*Listening on .*:\\([0-9]*\\).*/\\1/p\"";
    server_.emplace("/bin/bash",
                    Arguments{"-c", "exec radicale -C '" + Path("config/radicale") + "' > >(exec " +
                                        log + ") 2>&1"},
                    ProcessOptions{.environment = {{"HOME", Path("home")}}});
    const std::string port = server_->ReadLine();
    ASSERT_NE(port, "") << "the server did not start";
    std::string config = kVdirsyncer;
    for (std::size_t at; (at = config.find("PORT")) != std::string::npos;)
      config.replace(at, 4, port);
    Configure("vdirsyncer/config", config);
  }

 private:
  std::optional<Process> server_;
};

TEST_F(OtherPrograms, KhardShowsAndWritesThePeople) {
  const std::string all = Does("khard list -p");
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 27) << all;
  EXPECT_THAT(Does("khard show Okafor"),
              AllOf(HasSubstr("Dr. Amara Ngozi Okafor FRCP"), HasSubstr("CELL: +234 803 555 0123"),
                    HasSubstr("12 Marina Road"), HasSubstr("Allergic to peanuts.")));

  Does(
      "khard new -a desk -i /dev/stdin <<< '"
      "First name: Berta\nLast name: Brandt\nOrganisation: Ateliers Brandt\n"
      "Phone:\n  cell: +49 171 5550101\nEmail:\n  work: berta@brandt.example\n"
      "Birthday: 1980-05-06\nNote: From the fair.\n'");
  Does("khard show --format yaml Okafor | sed 's/555 0123/555 0199/' > okafor.yaml");
  Does("khard modify -i okafor.yaml Okafor <<< y");
  Does("khard remove --force Whitcombe");
  EXPECT_THAT(Sync(), AllOf(HasSubstr("contact Okafor, Amara: change on the handheld: Mobile "
                                      "telephone number\n"),
                            HasSubstr("1 added, 1 changed, 1 deleted")));
  EXPECT_THAT(OnHandheld("contacts"),
              AllOf(HasSubstr("\"Email1Address\":\"berta@brandt.example\",\"FirstName\":\"Berta\","
                              "\"LastName\":\"Brandt\",\"CompanyName\":\"Ateliers Brandt\""),
                    HasSubstr("\"MobileTelephoneNumber\":\"+49 171 5550101\""),
                    HasSubstr("\"Body\":\"From the fair.\",\"Birthday\":\"1980-05-06\""),
                    HasSubstr("+234 803 555 0199"), Not(HasSubstr("Whitcombe"))));

  EditOnHandheld("contacts", "+49 171 5550101", "+49 171 5550155");
  EXPECT_THAT(Sync(), HasSubstr("contact Brandt, Berta: change on the desk"));
  EXPECT_EQ(Does("khard phone -p Brandt"), "+49 171 5550155\tBerta Brandt\tcell\n");
}

TEST_F(OtherPrograms, KhalShowsAndWritesTheCalendar) {
  const std::string list =
      "khal list --day-format '' --format '{start-date} {start-time}-{end-time} {title}' ";
  EXPECT_EQ(Does(list + "2026-11-23 8d"),
            "2026-11-23 09:30-10:15 Team meeting\n"
            "2026-11-25 14:00-15:00 Team meeting with the new colleagues\n"
            "2026-11-26 08:15-09:00 Dentist\n"
            "2026-11-26 18:00-19:30 Italian, part 2\n"
            "2026-11-30 - Rent is due\n"
            "2026-11-30 09:30-10:15 Team meeting\n"
            "2026-11-30 17:00-17:30 Call with São Paulo\n");

  Does("khal new -m 15m 2026-12-01 10:00 11:30 'Oil change :: at the garage'");
  Does("khal new -r weekly -u 2027-03-01 -l Studio 2026-12-03 20:00 21:00 Choir");
  Does("khal new 2026-12-24 2026-12-26 Christmas");
  Does(
      "printf 's\\nDentist, upper left\\nl\\nMarket square\\nq\\n' | "
      "khal edit --show-past Dentist");
  Does("printf 'D\\ny\\n' | khal edit --show-past 'Call with'");
  EXPECT_THAT(Sync(), AllOf(HasSubstr("appointment Dentist, upper left: change on the handheld: "
                                      "Subject, Location\n"),
                            HasSubstr("3 added, 1 changed, 1 deleted")));
  EXPECT_THAT(
      OnHandheld("calendar"),
      AllOf(HasSubstr("\"Subject\":\"Oil change\",\"Start\":\"2026-12-01T10:00:00\","
                      "\"End\":\"2026-12-01T11:30:00\",\"BusyStatus\":2,\"Body\":\"at the garage\","
                      "\"ReminderSet\":true,\"ReminderMinutesBeforeStart\":15"),
            HasSubstr("\"Subject\":\"Choir\",\"Location\":\"Studio\",\"Start\":\"2026-12-03T20:00"),
            HasSubstr("\"DayOfWeekMask\":16,\"Occurrences\":13"),
            HasSubstr("\"Subject\":\"Christmas\",\"AllDayEvent\":true,\"Start\":\"2026-12-24\","
                      "\"End\":\"2026-12-26\""),
            HasSubstr("\"Subject\":\"Dentist, upper left\",\"Location\":\"Market square\""),
            Not(HasSubstr("Call with"))));

  EditOnHandheld("calendar", "20261201T113000", "20261201T120000");
  EditOnHandheld("calendar", "SUMMARY:Choir", "SUMMARY:Choir practice");
  EXPECT_THAT(Sync(), HasSubstr("0 added, 2 changed"));
  EXPECT_EQ(Does(list + "2026-12-01 1d"), "2026-12-01 10:00-12:00 Oil change\n");
  EXPECT_THAT(Does(list + "2027-02-25 1d"), HasSubstr("20:00-21:00 Choir practice\n"));
}

TEST_F(OtherPrograms, TodomanShowsAndWritesTheTasks) {
  EXPECT_THAT(Does("todoman list --sort summary"),
              AllOf(HasSubstr("2026-12-09 A present for Ada"), HasSubstr("!!! 2026-11-30"),
                    HasSubstr("Tax return"), Not(HasSubstr("Bring back"))));
  const std::string numbered =
      "n=$(todoman --porcelain list --status ANY | "
      "grep -B9 '\"summary\": \"Tax return\"' | "
      "sed -n 's/.*\"id\": \\([0-9]*\\).*/\\1/p'); ";
  Does("todoman new -l tasks -s 2026-12-10 -d 2026-12-20 --priority high Buy a tree");
  Does(numbered + "todoman done $n");
  EXPECT_THAT(Sync(), AllOf(HasSubstr("task Buy a tree: add to the handheld\n"),
                            HasSubstr("1 added, 1 changed, 0 merged")));
  EXPECT_THAT(OnHandheld("tasks"),
              AllOf(HasSubstr("\"Subject\":\"Buy a tree\",\"StartDate\":\"2026-12-10\","
                              "\"DueDate\":\"2026-12-20\",\"Importance\":2"),
                    HasSubstr("\"Subject\":\"Tax return\",\"StartDate\":\"2026-11-01\","
                              "\"DueDate\":\"2026-11-30\",\"Complete\":true")));

  EditOnHandheld("tasks",
                 "SUMMARY:Buy a tree\r\nDTSTART;VALUE=DATE:20261210\r\n"
                 "DUE;VALUE=DATE:20261220",
                 "SUMMARY:Buy two trees\r\nDTSTART;VALUE=DATE:20261210\r\nDUE;VALUE=DATE:20261222");
  EXPECT_THAT(Sync(), HasSubstr("0 added, 1 changed"));
  EXPECT_THAT(Does("todoman list"), HasSubstr("!!! 2026-12-22 Buy two trees"));
}

TEST_F(OtherPrograms, VdirsyncerTakesItToAServerAndBack) {
  StartServer();
  Does("yes | vdirsyncer discover || [ $? = 141 ]");
  const std::string desk = "vdirsyncer sync there_people there_dates";
  const std::string second = "vdirsyncer sync back_people back_dates";
  Does(desk + " && " + second);
  EXPECT_EQ(Does("ls second/contacts second/calendar second/tasks | grep -c '\\.[iv]c[sf]'"),
            "39\n");

  Does("sed -i 's/803 555 0123/803 555 0199/' second/contacts/*.vcf");
  Does("sed -i 's/^SUMMARY:Dentist/& at noon/' second/calendar/*.ics");
  Does("rm $(grep -l 'A present for Ada' second/tasks/*.ics)");
  Does(
      "sed 's/^UID:.*/UID:oil/; s/^SUMMARY:.*/SUMMARY:Oil change/' "
      "$(grep -l 'Dentist' second/calendar/*.ics) > oil && mv oil second/calendar/oil.ics");
  Does(second + " && " + desk);
  EXPECT_THAT(Sync(), AllOf(HasSubstr("1 added, 2 changed, 1 deleted, 0 merged, 0 conflicts; "
                                      "desk 0, handheld 4\n")));
  EXPECT_THAT(OnHandheld("contacts"), HasSubstr("+234 803 555 0199"));
  EXPECT_THAT(OnHandheld("calendar"),
              AllOf(HasSubstr("\"Dentist at noon\""), HasSubstr("\"Oil change\"")));
  EXPECT_THAT(OnHandheld("tasks"), Not(HasSubstr("A present for Ada")));

  EditOnHandheld("contacts", "+81 90 5550 0143", "+81 90 5550 0155");
  EditOnHandheld("calendar", "SUMMARY:Oil change", "SUMMARY:Oil and tyres");
  EXPECT_THAT(Sync(), HasSubstr("0 added, 2 changed"));
  Does(desk + " && " + second);
  EXPECT_THAT(Does("grep -h '^TEL.*CELL' $(grep -l Morishita second/contacts/*.vcf)"),
              HasSubstr(":+81 90 5550 0155"));
  EXPECT_THAT(Does("cat second/calendar/oil.ics"), HasSubstr("SUMMARY:Oil and tyres"));
}

}  // namespace
}  // namespace corvane::testing
