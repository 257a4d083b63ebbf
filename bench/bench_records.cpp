#include "bench/bench_records.h"

#include <fmt/core.h>

#include <chrono>
#include <fstream>
#include <stdexcept>

#include "common/formats/vcard/vcard.h"
#include "common/text/little_endian.h"
#include "tests/support/call_filler.h"
#include "tests/support/message_filler.h"

namespace bench {
namespace {

std::string ContactXml(int i) {
  const std::string n = std::to_string(i);
  return "<CONTACT><EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>person" + n +
         "@example.org</NAME><TYPE>email1</TYPE></EMAIL_ADDRESS></"
         "EMAIL_ADDRESSES><FIRST_NAME>First" +
         n + "</FIRST_NAME><LAST_NAME>Last" + n +
         "</LAST_NAME><COMPANY>Example Company</COMPANY><FileAs>Last" + n + ", First" + n +
         "</FileAs><DEPARTMENT>Department</DEPARTMENT><PHONE_MOBILE>+49 170 " + n +
         "</PHONE_MOBILE><PHONE_BUSINESS>+49 30 " + n +
         "</PHONE_BUSINESS><BUSINESS_TITLE>Engineer</BUSINESS_TITLE><PHONE_HOME>+49 89 " + n +
         "</PHONE_HOME><CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY></CATEGORIES>"
         "<BUSINESS_WEB_PAGE>https://example.org/</BUSINESS_WEB_PAGE>"
         "<HOME_ADDRESS>1 Example Street</HOME_ADDRESS><HOME_CITY>Example City</HOME_CITY>"
         "<HOME_ZIP>12345</HOME_ZIP><HOME_COUNTRY>Germany</HOME_COUNTRY>"
         "<NOTES>A note that says a few words about this person.</NOTES>"
         "<BIRTHDAY>19700101T000000</BIRTHDAY></CONTACT>";
}

// The series are of 1 to 28 January 2026, weekly, with 40 occurrences each.
std::string SeriesXml(int i, int day) {
  const int deleted = day + 14 > 31 ? day + 14 - 31 : day + 14;
  const int changed = day + 21 > 31 ? day + 21 - 31 : day + 21;
  const int deletedMonth = day + 14 > 31 ? 2 : 1;
  const int changedMonth = day + 21 > 31 ? 2 : 1;
  const int weekday = (4 + day - 1) % 7;  // 1 January 2026 is a Thursday
  return fmt::format(
      "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>WEEKLY</TYPE>"
      "<DAYS_OF_WEEK>{}</DAYS_OF_WEEK><Occurrences>40</Occurrences>"
      "<DeletedException>2026{:02}{:02}T000000</DeletedException>"
      "<ChangedException><SUBJECT>Moved meeting {}</SUBJECT>"
      "<EVENT_START>2026{:02}{:02}T150000</EVENT_START>"
      "<EVENT_END>2026{:02}{:02}T160000</EVENT_END><BusyStatus>2</BusyStatus>"
      "<OriginalDate>2026{:02}{:02}T000000</OriginalDate></ChangedException></RECURRENCE>",
      weekday, deletedMonth, deleted, i, changedMonth, changed, changedMonth, changed, changedMonth,
      changed);
}

std::string AppointmentXml(int i) {
  const int day = i % 28 + 1;
  return fmt::format(
      "<CALENDAR><SUBJECT>Meeting {}</SUBJECT><LOCATION>Room {}</LOCATION>"
      "<CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY></CATEGORIES>{}"
      "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderMinutes>15</ReminderMinutes>"
      "<EVENT_START>202601{:02}T090000</EVENT_START><EVENT_END>202601{:02}T100000</EVENT_END>"
      "<BusyStatus>2</BusyStatus><NOTES>A note that says a few words about it.</NOTES></CALENDAR>",
      i, i % 40, i % 2 == 0 ? SeriesXml(i, day) : "", day, day);
}

constexpr int kManyExceptions = 3000;

std::string LongSeriesXml(int i) {
  constexpr std::chrono::sys_days kStart = std::chrono::year{2020} / 1 / 1;
  std::string exceptions;
  for (int day = 1; day <= kManyExceptions; ++day) {
    const std::chrono::year_month_day date(kStart + std::chrono::days(day));
    const std::string text =
        fmt::format("{:04}{:02}{:02}", static_cast<int>(date.year()),
                    static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    exceptions += day % 2 == 0 ? fmt::format("<DeletedException>{}T000000</DeletedException>", text)
                               : fmt::format(
                                     "<ChangedException><SUBJECT>Moved</SUBJECT>"
                                     "<EVENT_START>{0}T150000</EVENT_START>"
                                     "<EVENT_END>{0}T160000</EVENT_END><BusyStatus>2</BusyStatus>"
                                     "<OriginalDate>{0}T000000</OriginalDate></ChangedException>",
                                     text);
  }
  return fmt::format(
      "<CALENDAR><SUBJECT>Daily {}</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING>"
      "<RECURRENCE><TYPE>DAILY</TYPE><Occurrences>{}</Occurrences>{}</RECURRENCE>"
      "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderMinutes>15</ReminderMinutes>"
      "<EVENT_START>20200101T090000</EVENT_START><EVENT_END>20200101T100000</EVENT_END>"
      "<BusyStatus>2</BusyStatus></CALENDAR>",
      i, kManyExceptions + 100, exceptions);
}

std::string TaskXml(int i) {
  return fmt::format(
      "<TASK><SUBJECT>Task {}</SUBJECT>"
      "<CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY></CATEGORIES>"
      "<DUE_DATE>202601{:02}T000000</DUE_DATE><HAS_REMINDER>TRUE</HAS_REMINDER>"
      "<ReminderMinutes>60</ReminderMinutes><StartDate>20260101T000000</StartDate>"
      "<PRIORITY>{}</PRIORITY><NOTES>A note that says a few words about it.</NOTES></TASK>",
      i, i % 28 + 1, i % 3 + 2);
}

// The contact of ContactXml.
formats::Contact PersonOf(int i) {
  using enum formats::ContactField;
  const std::string n = std::to_string(i);
  formats::Contact person;
  person.uid = "person-" + n;
  person[kEmail1Address] = "person" + n + "@example.org";
  person[kFirstName] = "First" + n;
  person[kLastName] = "Last" + n;
  person[kCompanyName] = "Example Company";
  person[kFileAs] = "Last" + n + ", First" + n;
  person[kDepartment] = "Department";
  person[kMobileTelephoneNumber] = "+49 170 " + n;
  person[kBusinessTelephoneNumber] = "+49 30 " + n;
  person[kJobTitle] = "Engineer";
  person[kHomeTelephoneNumber] = "+49 89 " + n;
  person.categories = {"Business"};
  person[kWebPage] = "https://example.org/";
  person[kHomeAddressStreet] = "1 Example Street";
  person[kHomeAddressCity] = "Example City";
  person[kHomeAddressPostalCode] = "12345";
  person[kHomeAddressCountry] = "Germany";
  person[kBody] = "A note that says a few words about this person.";
  person.birthday = std::chrono::year{1970} / 1 / 1;
  return person;
}

std::ofstream OpenToWrite(const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  return file;
}

constexpr int kFolders = 20;

void FillMessages(ce::host::Handheld& handheld, int count) {
  corvane::testing::MessageFiller filler(handheld);
  for (int folder = 0; folder < kFolders; ++folder) {
    const std::string name = fmt::format("/Inbox/Folder {}", folder);
    const int here = count / kFolders + (folder < count % kFolders ? 1 : 0);
    filler.AddMany(std::u16string(name.begin(), name.end()), here);
  }
}

void FillCalls(ce::host::Handheld& handheld, int count) {
  corvane::testing::CallFiller(handheld).AddMany(count);
}

}  // namespace

const Workload kContacts = {"contacts", 1, "CONTACT", &ContactXml};
const Workload kAppointments = {"appointments", 0, "CALENDAR", &AppointmentXml};
const Workload kLongSeries = {"appointments", 0, "CALENDAR", &LongSeriesXml};
const Workload kTasks = {"tasks", 2, "TASK", &TaskXml};
const Workload kMessages = {"messages", 5, "SMS", nullptr, &FillMessages};
const Workload kCalls = {"calls", 4, "Call", nullptr, &FillCalls};

void WriteChunks(const std::filesystem::path& path, const Workload& workload, int count,
                 int recordsPerChunk) {
  std::ofstream file = OpenToWrite(path);
  for (int written = 0; written < count;) {
    std::string document = "<root>";
    for (int i = 0; i < recordsPerChunk && written < count; ++i)
      document += workload.record(++written);
    document += "</root>";
    std::string length;
    text::PutWord(length, static_cast<std::uint32_t>(document.size()));
    file << length << document;
  }
}

void WriteVCards(const std::filesystem::path& path, int count) {
  std::ofstream file = OpenToWrite(path);
  for (int i = 1; i <= count; ++i)
    file << formats::WriteVCard(PersonOf(i), formats::VCardVersion::k30);
}

}  // namespace bench
