#include "handheld/outlook/series_item.h"

#include <utility>

#include "handheld/outlook/item_clock.h"
#include "handheld/outlook/recurrence_pattern.h"

namespace ce::host {

HRESULT SeriesItem::HandOutPattern(IDispatch* self, IRecurrencePattern** pattern) {
  const bool fresh = !series_;
  if (fresh) {
    const auto now = ItemClock();
    if (!now) return E_FAIL;
    // An item without a date of its own begins today.
    series_.emplace().startDay = std::chrono::floor<std::chrono::days>(*now);
    series_ = FreshSeries(SeriesDay());
  }
  try {
    *pattern = MakePattern(self, *this, number_);
  } catch (...) {
    if (fresh) series_.reset();
    throw;
  }
  // Recurring is what the item becomes when it is saved, also without another change.
  if (fresh) NoteChange();
  return S_OK;
}

void SeriesItem::ClearSeries() {
  if (!series_ && !recurring_) return;
  series_.reset();
  ++number_;
  wasCleared_ = true;
  NoteChange();
}

bool SeriesItem::SeriesToSave(std::optional<Series>& series) const {
  series = series_;
  return !series || FinishSeries(*series, SeriesDay());
}

void SeriesItem::SeriesSaved(std::optional<Series> series) {
  series_ = series;
  recurring_ = series_.has_value();
  wasCleared_ = false;
}

}  // namespace ce::host
