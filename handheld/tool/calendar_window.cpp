#include "handheld/tool/calendar_window.h"

#include <fmt/core.h>

#include <chrono>
#include <string_view>

#include "common/formats/vcard/vcard_dates.h"
#include "handheld/tool/report.h"

namespace tool {
namespace {

using formats::local_days;

local_days DayFrom(const std::string& word) {
  if (const auto date = formats::ReadDate(word).date) return local_days(*date);
  throw UsageError(fmt::format("\"{}\" is no day, such as 2026-11-22", word));
}

bool IsMonthAlone(std::string_view word) {
  return word.size() == 7 && word[4] == '-';
}

CalendarWindow MonthOf(const std::string& word, local_days today) {
  const local_days day = word.empty() ? today : DayFrom(IsMonthAlone(word) ? word + "-01" : word);
  const std::chrono::year_month_day date(day);
  const auto month = date.year() / date.month();
  return {CalendarForm::kMonth, {local_days(month / 1), local_days(month / std::chrono::last)}};
}

CalendarWindow WeekOf(const std::string& word, local_days today) {
  const local_days day = word.empty() ? today : DayFrom(word);
  const local_days monday = day - (std::chrono::weekday(day) - std::chrono::Monday);
  return {CalendarForm::kWeek, {monday, monday + std::chrono::days(6)}};
}

}  // namespace

CalendarWindow WindowOf(const CalendarChoice& choice, local_days today) {
  if (choice.month.has_value() + choice.week.has_value() + (choice.from || choice.to) > 1)
    throw UsageError("choose a month, a week, or days with --from and --to");
  if (choice.month) return MonthOf(*choice.month, today);
  if (choice.week) return WeekOf(*choice.week, today);
  constexpr std::chrono::days kToLast = kAgendaLength - std::chrono::days(1);
  page::DayRange days{today, today + kToLast};
  if (choice.from) days = {DayFrom(*choice.from), DayFrom(*choice.from) + kToLast};
  if (choice.to) {
    days.last = DayFrom(*choice.to);
    if (!choice.from && days.last < today) days.first = days.last - kToLast;
  }
  if (days.last < days.first)
    throw UsageError(fmt::format("{} lies before {}", *choice.to, *choice.from));
  return {CalendarForm::kAgenda, days};
}

}  // namespace tool
