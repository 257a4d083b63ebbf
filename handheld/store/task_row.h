// A task as the store has it, and the statements that read and write it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "handheld/store/item_texts.h"
#include "handheld/store/ole_date.h"
#include "handheld/store/series.h"
#include "handheld/store/store.h"

namespace ce::host {

// X(property, kind)
#define CE_TASK_TEXTS(X)   \
  X(Subject, kSubject)     \
  X(Categories, kCalendar) \
  X(Body, kBody)

enum class TaskText {
#define CE_TASK_TEXT(Name, Kind) k##Name,
  CE_TASK_TEXTS(CE_TASK_TEXT)
#undef CE_TASK_TEXT
};

inline constexpr TextRow kTaskTexts[] = {
#define CE_TASK_TEXT(Name, Kind) {#Name, TextKind::Kind},
    CE_TASK_TEXTS(CE_TASK_TEXT)
#undef CE_TASK_TEXT
};
inline constexpr std::size_t kTaskTextCount = std::size(kTaskTexts);

struct TaskFields {
  DATE startDate = kNoDate;  // whole days
  DATE dueDate = kNoDate;
  DATE dateCompleted = kNoDate;
  DATE reminderTime = kNoDate;  // whole seconds
  LONG importance = 0;
  bool complete = false;
  LONG sensitivity = 0;
  bool reminderSet = false;
  ItemTexts<TaskText, kTaskTextCount> texts;
  std::vector<BYTE> ink;  // empty for none
};

struct TaskRow {
  TaskFields fields;
  std::optional<Series> series;
};

// The first day of its pattern: that of the StartDate, else of the DueDate, else the series' own.
local_days FirstDay(const TaskFields& fields, const std::optional<Series>& series);

// `found` false, and success, when there is no such task.
[[nodiscard]] HRESULT ReadTask(Store& store, std::uint32_t oid, TaskRow& row, bool& found);
// Stores a new task under a new identifier. Within a write.
[[nodiscard]] HRESULT InsertTask(Store& store, const TaskFields& fields,
                                 const std::optional<Series>& series, std::uint32_t& oid);
// Within a write.
[[nodiscard]] HRESULT UpdateTask(Store& store, std::uint32_t oid, const TaskFields& fields,
                                 const std::optional<Series>& series, bool& found);
[[nodiscard]] HRESULT TaskExists(Store& store, std::uint32_t oid, bool& found);

}  // namespace ce::host
