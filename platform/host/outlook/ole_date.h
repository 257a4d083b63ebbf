// The dates that items take.
#pragma once

#include <chrono>

#include "platform/automation.h"

namespace ce::host {

constexpr DATE OleDate(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  constexpr sys_days kEpoch = 1899y / December / 30;
  const sys_days date = std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day};
  return static_cast<DATE>((date - kEpoch).count());
}
static_assert(OleDate(4501, 1, 1) == kNoDate);

// "None", or a time from 1900-01-01 to 2999-12-31.
constexpr bool IsItemDate(DATE date) {
  return date == kNoDate || (date >= OleDate(1900, 1, 1) && date < OleDate(3000, 1, 1));
}

}  // namespace ce::host
