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

constexpr std::size_t kCellWidth = 10;
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

void AddLine(const std::string& line, std::string& text) {
  text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
}

std::string WeekRow(int number, const std::array<Cell, kDaysAWeek>& cells) {
  const std::size_t lines = std::ranges::max(cells, {}, &Cell::size).size();
  std::string row;
  for (std::size_t i = 0; i < lines; ++i) {
    std::string line = i == 0 ? fmt::format("{:>2} ", number) : "   ";
    for (const Cell& cell : cells) line += Column(i < cell.size() ? cell[i] : "", kCellWidth) + " ";
    AddLine(line, row);
  }
  return row;
}

}  // namespace

std::string MonthGrid(const page::DayRange& month, std::span<const page::PlacedOccurrence> placed,
                      local_days today) {
  const std::chrono::year_month_day date(month.first);
  std::string head = fmt::format("{} {}", MonthName(date.month()), static_cast<int>(date.year()));
  constexpr std::size_t kWidth = 3 + kDaysAWeek * (kCellWidth + 1);
  std::string text;
  AddLine(std::string((kWidth - head.size()) / 2, ' ') + head, text);
  const local_days start = month.first - (std::chrono::weekday(month.first) - std::chrono::Monday);
  std::string names = "   ";
  for (int i = 0; i < kDaysAWeek; ++i)
    names += Column(WeekdayName(start + std::chrono::days(i)), kCellWidth) + " ";
  AddLine(names, text);
  for (local_days monday = start; monday <= month.last; monday += std::chrono::days(kDaysAWeek)) {
    std::array<Cell, kDaysAWeek> cells;
    for (int i = 0; i < kDaysAWeek; ++i) {
      const local_days day = monday + std::chrono::days(i);
      if (month.first <= day && day <= month.last)
        cells[static_cast<std::size_t>(i)] = CellOf(day, placed, today);
    }
    text += "\n" + WeekRow(IsoWeek(monday), cells);
  }
  return text;
}

}  // namespace tool
