// The days of people that come every year.
#pragma once

#include <vector>

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"

namespace tool {

// The birthday and the anniversary, as far as there are any: a series each of whole days from the
// day itself on, in a year without 29 February on the 28th. The UID is made of the contact's, so
// that it is the same each time.
std::vector<formats::Appointment> BirthdaysOf(const formats::Contact& contact);

}  // namespace tool
