// What items that can recur share: the series as it is being set, and what its pattern asks of
// them.
#pragma once

#include <optional>

#include "handheld/store/series.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The base of an item beside its COM interface. Patterns that were handed out hold a reference to
// the item and come back to it here.
class SeriesItem {
 public:
  SeriesItem(const SeriesItem&) = delete;
  SeriesItem& operator=(const SeriesItem&) = delete;

  // The series of the pattern that was handed out under `number`; null once it was cleared.
  Series* FindSeries(int number) { return number == number_ && series_ ? &*series_ : nullptr; }
  virtual void NoteChange() = 0;

  // The pattern's first day. The setter answers false, and changes nothing, for one that the item
  // cannot take.
  virtual local_days SeriesDay() const = 0;
  [[nodiscard]] virtual bool MoveSeries(local_days day) = 0;

  // IRecurrencePattern::get_Exceptions and GetOccurrence, whose out-parameter is null already.
  virtual HRESULT OpenExceptions(IExceptions** exceptions) = 0;
  virtual HRESULT OpenOccurrence(DATE, IAppointment**) { return E_INVALIDARG; }

 protected:
  explicit SeriesItem(std::optional<Series> series)
      : series_(series), recurring_(series_.has_value()) {}
  ~SeriesItem() = default;

  // `self` is the item itself.
  HRESULT HandOutPattern(IDispatch* self, IRecurrencePattern** pattern);
  void ClearSeries();
  // The series as it is to be saved now; false when it cannot be.
  [[nodiscard]] bool FinishedSeries(std::optional<Series>& series) const;
  void KeepSeries(const std::optional<Series>& saved);

  bool recurring() const { return recurring_; }
  const std::optional<Series>& series() const { return series_; }
  std::optional<Series>& series() { return series_; }
  // What exceptions there are belong to a pattern that was cleared.
  bool wasCleared() const { return wasCleared_; }

 private:
  std::optional<Series> series_;
  bool recurring_;  // as it was saved last
  bool wasCleared_ = false;
  int number_ = 0;
};

// The object starts with the caller's reference. It keeps `item`, of which `series` is a part,
// alive; once its series was cleared, every call answers E_FAIL.
IRecurrencePattern* MakePattern(IDispatch* item, SeriesItem& series, int number);

}  // namespace ce::host
