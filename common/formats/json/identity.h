// What makes an item the same one, and what makes it a changed one.
#pragma once

#include <string>
#include <string_view>

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"

namespace formats {

// With a FileAs as a handheld derives it when the contact has none: "Last, First", or the company.
Contact WithFileAs(Contact contact);

// 32 hexadecimal digits that stand for the bytes; equal for equal ones, and stable over versions.
std::string ContentHash(std::string_view bytes);
// Of everything but the UID, the FileAs as WithFileAs gives it.
std::string ContentHash(const Contact& contact);
// Of everything but the UID. Text counts with its line breaks as LF.
std::string ContentHash(const Appointment& appointment);
std::string ContentHash(const Task& task);

// A new random one, "urn:uuid:...".
std::string NewUid();

}  // namespace formats
