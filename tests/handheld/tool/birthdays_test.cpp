#include "handheld/tool/birthdays.h"

#include <gmock/gmock.h>

#include "common/formats/icalendar/icalendar.h"
#include "handheld/tool/export_records.h"
#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using ::testing::HasSubstr;
using ::testing::Not;

class Birthdays : public ItemTest {
 protected:
  void Add(const std::string& name, const std::optional<std::chrono::year_month_day>& birthday,
           const std::optional<std::chrono::year_month_day>& anniversary = {}) {
    Contact contact;
    contact[ContactField::kFirstName] = name;
    contact.birthday = birthday;
    contact.anniversary = anniversary;
    StoreIn(contact, *New<Contact>().get());
  }
  std::string Exported(const std::optional<std::filesystem::path>& file = {}) {
    EXPECT_EQ(RunIn(*session_,
                    [&](Session& session, const Report& report) {
                      return ExportBirthdays(session, {.file = file}, report);
                    }),
              Outcome::kDone);
    return file ? ReadFile(*file) : out_;
  }
  std::vector<Appointment> Read(const std::string& bytes) {
    const formats::CalendarFile file = formats::ReadICalendar(bytes, session_->Zone());
    EXPECT_TRUE(file.notices.empty());
    std::vector<Appointment> appointments;
    for (const auto& parsed : file.appointments) appointments.push_back(parsed.appointment);
    return appointments;
  }
};

TEST_F(Birthdays, AreYearlyEventsOfAWholeDay) {
  using std::chrono::year;
  Add("Ada", year{1979} / 12 / 10, year{2004} / 6 / 1);
  Add("Ben", std::nullopt);
  const std::string calendar = Exported();
  EXPECT_THAT(calendar, HasSubstr("SUMMARY:Ada's birthday\r\n"));
  EXPECT_THAT(calendar, HasSubstr("SUMMARY:Ada's anniversary\r\n"));
  EXPECT_THAT(calendar, HasSubstr("DTSTART;VALUE=DATE:19791210\r\n"));
  EXPECT_THAT(calendar, HasSubstr("DTEND;VALUE=DATE:19791211\r\n"));
  EXPECT_THAT(calendar, HasSubstr("RRULE:FREQ=YEARLY"));
  EXPECT_THAT(calendar, HasSubstr("TRANSP:TRANSPARENT\r\n"));
  EXPECT_THAT(calendar, Not(HasSubstr("Ben")));
  const std::vector<Appointment> days = Read(calendar);
  ASSERT_EQ(days.size(), 2u);
  EXPECT_EQ(days[0].start, Day(1979, 12, 10));
  EXPECT_EQ(days[1].start, Day(2004, 6, 1));
}

TEST_F(Birthdays, KeepTheirUids) {
  Add("Ada", std::chrono::year{1979} / 12 / 10);
  Add("Åsa", std::chrono::year{1971} / 9 / 4, std::chrono::year{1999} / 9 / 9);
  const std::vector<Appointment> first = Read(Exported());
  const std::vector<Appointment> second = Read(Exported());
  ASSERT_EQ(first.size(), 3u);
  EXPECT_EQ(first, second);
  EXPECT_NE(first[1].uid, first[2].uid);
  EXPECT_THAT(first[0].uid, ::testing::StartsWith("birthday-"));
}

TEST_F(Birthdays, OfLeapDaysComeEveryYear) {
  Add("Leap", std::chrono::year{1996} / 2 / 29);
  const std::string calendar = Exported();
  EXPECT_THAT(calendar, HasSubstr("DTSTART;VALUE=DATE:19960229\r\n"));
  EXPECT_THAT(calendar, HasSubstr("RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=-1\r\n"));
  const std::vector<Appointment> days = Read(calendar);
  ASSERT_EQ(days.size(), 1u);
  ASSERT_TRUE(days[0].series);
  const calendar::Pattern& pattern = days[0].series->pattern;
  EXPECT_TRUE(calendar::IsDayOf(pattern, Day(1996, 2, 29), Day(2027, 2, 28)));
  EXPECT_TRUE(calendar::IsDayOf(pattern, Day(1996, 2, 29), Day(2028, 2, 29)));
  EXPECT_FALSE(calendar::IsDayOf(pattern, Day(1996, 2, 29), Day(2028, 2, 28)));
}

TEST_F(Birthdays, GoToAFileAndAreCounted) {
  Add("Ada", std::chrono::year{1979} / 12 / 10, std::chrono::year{2004} / 6 / 1);
  const auto file = directory_ / "birthdays.ics";
  EXPECT_EQ(Read(Exported(file)).size(), 2u);
  EXPECT_EQ(out_, file.string() + ": 2 days\n");
}

TEST_F(Birthdays, ImportAsACalendarThatIsKnownAgain) {
  Add("Leap", std::chrono::year{1996} / 2 / 29);
  const auto file = WriteFile("birthdays.ics", Exported());
  for (const char* what : {"1 added, 0 changed, 0 unchanged", "0 added, 0 changed, 1 unchanged"}) {
    RunIn(*session_, [&](Session& session, const Report& report) {
      return ImportFiles(session, {file}, {}, report);
    });
    EXPECT_THAT(out_, HasSubstr(what));
  }
}

TEST(BirthdaysOf, LeavesOutADayThatIsNone) {
  Contact contact;
  contact.birthday = std::chrono::year{2001} / 2 / 29;
  EXPECT_TRUE(BirthdaysOf(contact).empty());
}

}  // namespace
}  // namespace tool::testing
