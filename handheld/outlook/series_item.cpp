#include "handheld/outlook/series_item.h"

#include "handheld/outlook/stored_item.h"

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

bool SeriesItem::FinishedSeries(std::optional<Series>& series) const {
  series = series_;
  return !series || FinishSeries(*series, SeriesDay());
}

void SeriesItem::KeepSeries(const std::optional<Series>& saved) {
  series_ = saved;
  recurring_ = series_.has_value();
  wasCleared_ = false;
}

}  // namespace ce::host
