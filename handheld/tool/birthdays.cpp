#include "handheld/tool/birthdays.h"

#include <chrono>
#include <optional>
#include <string>

#include "common/calendar/pattern.h"
#include "common/page/directory.h"

namespace tool {
namespace {

void AddYearlyDay(const formats::Contact& contact,
                  const std::optional<std::chrono::year_month_day>& date, const std::string& name,
                  const std::string& category, std::vector<formats::Appointment>& added) {
  if (!date || !date->ok()) return;
  const formats::local_days day(*date);
  formats::Appointment appointment;
  appointment.uid = name + "-" + contact.uid;
  appointment.subject = page::FullName(contact) + "'s " + name;
  appointment.categories = {category};
  appointment.allDay = true;
  appointment.start = day;
  appointment.end = day + std::chrono::days(1);
  appointment.busyStatus = static_cast<int>(formats::BusyStatus::kFree);
  appointment.series.emplace().pattern = calendar::PatternFrom(calendar::PatternType::kYearly, day);
  added.push_back(std::move(appointment));
}

}  // namespace

std::vector<formats::Appointment> BirthdaysOf(const formats::Contact& contact) {
  std::vector<formats::Appointment> days;
  AddYearlyDay(contact, contact.birthday, "birthday", "Birthday", days);
  AddYearlyDay(contact, contact.anniversary, "anniversary", "Anniversary", days);
  return days;
}

}  // namespace tool
