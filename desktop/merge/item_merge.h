// The items of each kind, three ways.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"
#include "desktop/merge/field_merge.h"
#include "desktop/merge/phone_numbers.h"

namespace desktop {

// The outs begin as the winner and the loser are. The end of every series is said as a number of
// occurrences.
void MergeContact(const Versions<formats::Contact>& versions, const PhoneNumbers& numbers,
                  MergeConflicts& conflicts);
void MergeAppointment(const Versions<formats::Appointment>& versions, MergeConflicts& conflicts);
void MergeTask(const Versions<formats::Task>& versions, MergeConflicts& conflicts);

}  // namespace desktop
