// How the store keeps what is neither text nor number.
#pragma once

#include <chrono>
#include <cstdint>

namespace floors {

// Of OLE dates.
inline constexpr std::chrono::sys_days kOleEpoch = std::chrono::year{1899} / 12 / 30;
inline constexpr double kNoDate = 949998.0;

// Of RecurrenceType.
inline constexpr std::int64_t kDaily = 0;
inline constexpr std::int64_t kWeekly = 1;

// Of Sensitivity.
inline constexpr std::int64_t kPrivate = 2;

}  // namespace floors
