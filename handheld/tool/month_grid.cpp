#include "handheld/tool/month_grid.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include "handheld/tool/day_entries.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::local_days;

constexpr std::size_t kNumberWidth = 3;  // of a week
constexpr std::size_t kNarrowestCell = 4;
constexpr std::size_t kCellLines = 4;  // below the day's number
constexpr int kDaysAWeek = 7;

using Cell = std::vector<std::string>;  // lines, the day's number first

Cell CellOf(local_days day, std::span<const page::PlacedOccurrence> placed, local_days today) {
  const std::chrono::year_month_day date(day);
  Cell cell = {fmt::format("{}{}", static_cast<unsigned>(date.day()), day == today ? "*" : "")};
  for (const DayEntry& entry : EntriesOn(day, placed)) cell.push_back(entry.subject);
  if (cell.size() > kCellLines + 1) {
    const std::size_t left = cell.size() - kCellLines;
    cell.resize(kCellLines);
    cell.push_back(fmt::format("{} more", left));
  }
  return cell;
}

std::size_t CellWidth(const Report& report) {
  const std::size_t withGap = (std::max(report.columns, kNumberWidth) - kNumberWidth) / kDaysAWeek;
  return std::max(withGap, kNarrowestCell + 1) - 1;
}

std::string WithoutBlanksBehind(const std::string& line) {
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string WeekRow(int number, const std::array<Cell, kDaysAWeek>& cells, std::size_t width) {
  const std::size_t lines = std::ranges::max(cells, {}, &Cell::size).size();
  std::string row;
  for (std::size_t i = 0; i < lines; ++i) {
    std::string line = i == 0 ? fmt::format("{:>2} ", number) : "   ";
    for (const Cell& cell : cells) line += Column(i < cell.size() ? cell[i] : "", width) + " ";
    row += WithoutBlanksBehind(line) + '\n';
  }
  return row;
}

}  // namespace

std::string MonthGrid(const page::DayRange& month, std::span<const page::PlacedOccurrence> placed,
                      local_days today, const Report& report) {
  const std::chrono::year_month_day date(month.first);
  std::string head = fmt::format("{} {}", MonthName(date.month()), static_cast<int>(date.year()));
  const std::size_t cellWidth = CellWidth(report);
  const std::size_t width = kNumberWidth + kDaysAWeek * (cellWidth + 1);
  std::string text = std::string((width - head.size()) / 2, ' ') + Heading(head, report) + '\n';
  const local_days start = month.first - (std::chrono::weekday(month.first) - std::chrono::Monday);
  std::string names = "   ";
  for (int i = 0; i < kDaysAWeek; ++i)
    names += Column(WeekdayName(start + std::chrono::days(i)), cellWidth) + " ";
  text += Heading(WithoutBlanksBehind(names), report) + '\n';
  for (local_days monday = start; monday <= month.last; monday += std::chrono::days(kDaysAWeek)) {
    std::array<Cell, kDaysAWeek> cells;
    for (int i = 0; i < kDaysAWeek; ++i) {
      const local_days day = monday + std::chrono::days(i);
      if (month.first <= day && day <= month.last)
        cells[static_cast<std::size_t>(i)] = CellOf(day, placed, today);
    }
    text += "\n" + WeekRow(IsoWeek(monday), cells, cellWidth);
  }
  return text;
}

}  // namespace tool
