// Exceptions of a series as the store has them, and the statements that read and write them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "handheld/store/item_row.h"

namespace ce::host {

// The occurrence that would have been on this day. The time of day at which it would have been is
// the series'.
struct ExceptionRow {
  local_days originalDay = kFirstItemDay;
  bool deleted = false;
  AppointmentFields fields;  // of a changed one
};

// In the order of their days. `timeOfDay` is the one at which the series' occurrences begin.
[[nodiscard]] HRESULT ReadExceptions(Store& store, std::uint32_t oid,
                                     std::vector<ExceptionRow>& rows,
                                     std::chrono::seconds& timeOfDay);
// `found` false, and success, when that day has none.
[[nodiscard]] HRESULT ReadException(Store& store, std::uint32_t oid, local_days day,
                                    ExceptionRow& row, bool& found);
// Replaces what that day had. Within a write.
[[nodiscard]] HRESULT WriteException(Store& store, std::uint32_t oid, const ExceptionRow& row);
// Within a write.
[[nodiscard]] HRESULT DropExceptions(Store& store, std::uint32_t oid);
// Drops those whose days are none of the series. Within a write.
[[nodiscard]] HRESULT PruneExceptions(Store& store, std::uint32_t oid, const Series& series,
                                      local_days start);

}  // namespace ce::host
