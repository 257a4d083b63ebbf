// The items of each kind, three ways.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/normal_form.h"
#include "common/formats/items/task.h"
#include "common/phone/phone_numbers.h"
#include "desktop/merge/field_merge.h"

namespace desktop {

// The outs begin as the winner and the loser are. The end of every series is said as a number of
// occurrences.
void MergeContact(const Versions<formats::Contact>& versions, const phone::PhoneNumbers& numbers,
                  MergeConflicts& conflicts);
void MergeAppointment(const Versions<formats::Appointment>& versions, MergeConflicts& conflicts);
void MergeTask(const Versions<formats::Task>& versions, MergeConflicts& conflicts);

// Merges them in their normal form, in which two ways of saying the same are one; so are the outs.
template <typename Item, typename MergeNormal>
void MergeAsNormal(const Versions<Item>& versions, const MergeNormal& mergeNormal) {
  const auto normal = [](const Item& item) { return Normalized(item, formats::SeriesEnd::kCount); };
  const Item winnerBase = normal(versions.winnerBase);
  const Item winner = normal(versions.winner);
  const Item loserBase = normal(versions.loserBase);
  const Item loser = normal(versions.loser);
  versions.winnerOut = winner;
  versions.loserOut = loser;
  mergeNormal(
      Versions<Item>{winnerBase, winner, loserBase, loser, versions.winnerOut, versions.loserOut});
  versions.winnerOut = normal(versions.winnerOut);
  versions.loserOut = normal(versions.loserOut);
}

}  // namespace desktop
