// The exceptions of a series, three ways, by day.
#pragma once

#include <optional>
#include <string>

#include "common/formats/items/appointment.h"
#include "desktop/merge/field_merge.h"

namespace desktop {

// Whole days, start and end.
struct When {
  bool allDay = false;
  std::optional<formats::local_seconds> start;
  std::optional<formats::local_seconds> end;
  friend bool operator==(const When&, const When&) = default;
};
When WhenOf(const formats::Occurrence& occurrence);
void SetWhen(formats::Occurrence& occurrence, const When& when);

// The outs have all but their exceptions, which are made here: what is otherwise than the series
// that a side had, it is otherwise than the one that it gets. A day that the series of the out does
// not have is left out.
void MergeExceptions(const Versions<formats::Appointment>& versions, MergeConflicts& conflicts);

// The exceptions that `own` has otherwise than in its base, that a series with the pattern and the
// start of `other` has no days for, and that `other` does not have, too: as people read them, empty
// for none.
std::string LostExceptions(const formats::Appointment& ownBase, const formats::Appointment& own,
                           const formats::Appointment& other);

}  // namespace desktop
