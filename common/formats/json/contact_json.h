// Contacts as JSON, for programs.
#pragma once

#include <cstdint>
#include <string>

#include "common/formats/items/contact.h"

namespace formats {

// One object on one line: "oid" (unsigned), the Pocket Outlook properties that are not empty as
// strings, "categories" as an array, "Birthday" and "Anniversary" as YYYY-MM-DD.
std::string ContactToJson(const Contact& contact, std::uint32_t oid);

}  // namespace formats
