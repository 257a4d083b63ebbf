// What contacts, appointments and tasks have, and the columns in which the store keeps it.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <vector>

#include "handheld/store/columns.h"
#include "handheld/store/item_texts.h"
#include "handheld/store/ole_date.h"
#include "handheld/store/series.h"

namespace ce::host {

// Of each kind of fields: the table's name (kName), whether its items can recur (kRecurs), its
// columns (kColumns) and texts (kTexts), which are a column each. The texts are the member `texts`.
template <typename Fields>
struct ItemTable;

// X(property, kind), in the order of the interface.
#define CE_CONTACT_TEXTS(X)            \
  X(BusinessAddressStreet, kPlain)     \
  X(BusinessAddressCity, kPlain)       \
  X(BusinessAddressState, kPlain)      \
  X(BusinessAddressPostalCode, kPlain) \
  X(BusinessAddressCountry, kPlain)    \
  X(BusinessFaxNumber, kPlain)         \
  X(BusinessTelephoneNumber, kPlain)   \
  X(CompanyName, kPlain)               \
  X(Department, kPlain)                \
  X(Email1Address, kPlain)             \
  X(MobileTelephoneNumber, kPlain)     \
  X(OfficeLocation, kPlain)            \
  X(PagerNumber, kPlain)               \
  X(JobTitle, kPlain)                  \
  X(HomeTelephoneNumber, kPlain)       \
  X(Email2Address, kPlain)             \
  X(Spouse, kPlain)                    \
  X(Email3Address, kPlain)             \
  X(Home2TelephoneNumber, kPlain)      \
  X(HomeFaxNumber, kPlain)             \
  X(CarTelephoneNumber, kPlain)        \
  X(AssistantName, kPlain)             \
  X(AssistantTelephoneNumber, kPlain)  \
  X(Children, kPlain)                  \
  X(Categories, kPlain)                \
  X(WebPage, kPlain)                   \
  X(Business2TelephoneNumber, kPlain)  \
  X(Title, kPlain)                     \
  X(FirstName, kPlain)                 \
  X(MiddleName, kPlain)                \
  X(LastName, kPlain)                  \
  X(Suffix, kPlain)                    \
  X(HomeAddressStreet, kPlain)         \
  X(HomeAddressCity, kPlain)           \
  X(HomeAddressState, kPlain)          \
  X(HomeAddressPostalCode, kPlain)     \
  X(HomeAddressCountry, kPlain)        \
  X(OtherAddressStreet, kPlain)        \
  X(OtherAddressCity, kPlain)          \
  X(OtherAddressState, kPlain)         \
  X(OtherAddressPostalCode, kPlain)    \
  X(OtherAddressCountry, kPlain)       \
  X(RadioTelephoneNumber, kPlain)      \
  X(FileAs, kFileAs)                   \
  X(Body, kBody)                       \
  X(YomiCompanyName, kYomi)            \
  X(YomiFirstName, kYomi)              \
  X(YomiLastName, kYomi)

CE_TEXT_TABLE(ContactText, kContactTexts, CE_CONTACT_TEXTS)
static_assert(std::size(kContactTexts) == 48);

struct ContactFields {
  DATE birthday = kNoDate;
  DATE anniversary = kNoDate;
  std::vector<BYTE> ink;  // empty for none
  ItemTexts<ContactText, std::size(kContactTexts)> texts;
};

template <>
struct ItemTable<ContactFields> {
  static constexpr char kName[] = "contacts";
  static constexpr bool kRecurs = false;
  static constexpr Column<ContactFields> kColumns[] = {
      {"Birthday", &ContactFields::birthday},
      {"Anniversary", &ContactFields::anniversary},
      {"BodyInk", &ContactFields::ink},
  };
  static constexpr std::span<const TextRow> kTexts = kContactTexts;
};

// X(property, kind)
#define CE_APPOINTMENT_TEXTS(X) \
  X(Subject, kSubject)          \
  X(Location, kCalendar)        \
  X(Categories, kCalendar)      \
  X(Body, kBody)
CE_TEXT_TABLE(AppointmentText, kAppointmentTexts, CE_APPOINTMENT_TEXTS)

// What an appointment has, and what a changed occurrence of a series has of its own.
struct AppointmentFields {
  // Start, End and Duration are coupled as IAppointment has it; dates are whole seconds.
  DATE start = kNoDate;
  DATE end = kNoDate;
  LONG duration = 0;  // minutes
  bool allDayEvent = false;
  LONG busyStatus = 0;
  LONG sensitivity = 0;
  bool reminderSet = false;
  LONG reminderMinutes = 0;
  std::vector<BYTE> ink;  // empty for none
  ItemTexts<AppointmentText, std::size(kAppointmentTexts)> texts;
};

template <>
struct ItemTable<AppointmentFields> {
  static constexpr char kName[] = "appointments";
  static constexpr bool kRecurs = true;
  static constexpr Column<AppointmentFields> kColumns[] = {
      {"Start", &AppointmentFields::start},
      {"End", &AppointmentFields::end},
      {"Duration", &AppointmentFields::duration},
      {"AllDayEvent", &AppointmentFields::allDayEvent},
      {"BusyStatus", &AppointmentFields::busyStatus},
      {"Sensitivity", &AppointmentFields::sensitivity},
      {"ReminderSet", &AppointmentFields::reminderSet},
      {"ReminderMinutesBeforeStart", &AppointmentFields::reminderMinutes},
      {"BodyInk", &AppointmentFields::ink},
  };
  static constexpr std::span<const TextRow> kTexts = kAppointmentTexts;
};

// How Start, End and Duration move each other. Each answers false, and changes nothing, for a value
// that the appointment cannot take: no item's date, a negative duration, or one that would move the
// other end out of the dates that items have.
[[nodiscard]] bool SetStart(AppointmentFields& fields, DATE start);
[[nodiscard]] bool SetEnd(AppointmentFields& fields, DATE end);
[[nodiscard]] bool SetDuration(AppointmentFields& fields, LONG minutes);

// What lies between Start and End, to the second; by the Duration when one of them is "none".
std::chrono::seconds LengthOf(const AppointmentFields& fields);

// X(property, kind)
#define CE_TASK_TEXTS(X)   \
  X(Subject, kSubject)     \
  X(Categories, kCalendar) \
  X(Body, kBody)
CE_TEXT_TABLE(TaskText, kTaskTexts, CE_TASK_TEXTS)

struct TaskFields {
  DATE startDate = kNoDate;  // whole days
  DATE dueDate = kNoDate;
  DATE dateCompleted = kNoDate;
  DATE reminderTime = kNoDate;  // whole seconds
  LONG importance = 0;
  bool complete = false;
  LONG sensitivity = 0;
  bool reminderSet = false;
  std::vector<BYTE> ink;  // empty for none
  ItemTexts<TaskText, std::size(kTaskTexts)> texts;
};

template <>
struct ItemTable<TaskFields> {
  static constexpr char kName[] = "tasks";
  static constexpr bool kRecurs = true;
  static constexpr Column<TaskFields> kColumns[] = {
      {"StartDate", &TaskFields::startDate},
      {"DueDate", &TaskFields::dueDate},
      {"DateCompleted", &TaskFields::dateCompleted},
      {"ReminderTime", &TaskFields::reminderTime},
      {"Importance", &TaskFields::importance},
      {"Complete", &TaskFields::complete},
      {"Sensitivity", &TaskFields::sensitivity},
      {"ReminderSet", &TaskFields::reminderSet},
      {"BodyInk", &TaskFields::ink},
  };
  static constexpr std::span<const TextRow> kTexts = kTaskTexts;
};

// The first day of an item's pattern: that of its Start, of a task else of its DueDate, else the
// series' own.
local_days FirstDay(const AppointmentFields& fields, const std::optional<Series>& series);
local_days FirstDay(const TaskFields& fields, const std::optional<Series>& series);

}  // namespace ce::host
