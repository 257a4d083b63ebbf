#include "common/terminal/tally.h"

#include <fmt/format.h>

namespace terminal {

std::string Grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t left = digits.size(); left > 3; left -= 3) digits.insert(left - 3, 1, ',');
  return digits;
}

std::string Counted(std::uint64_t count, Noun noun) {
  return fmt::format("{} {}", Grouped(count), count == 1 ? noun.one : noun.several);
}

void Tally::Add(const std::string& what, Noun noun, std::string_view reason, std::size_t owner) {
  const auto [place, isNew] =
      places_.emplace(fmt::format("{}\n{}", what, noun.several), rows_.size());
  if (isNew) {
    rows_.push_back({what, std::string(noun.one), std::string(noun.several), std::string(reason)});
  }
  Row& row = rows_[place->second];
  if (row.reason != reason) row.reason.clear();
  if (owner == 0 || owner != row.lastOwner) ++row.count;
  row.lastOwner = owner;
}

std::vector<std::string> Tally::Lines() const {
  std::vector<std::string> lines;
  for (const Row& row : rows_) {
    lines.push_back(fmt::format("{}: {}", row.what, Counted(row.count, {row.one, row.several})));
    if (!row.reason.empty()) lines.back() += fmt::format(" ({})", row.reason);
  }
  return lines;
}

}  // namespace terminal
