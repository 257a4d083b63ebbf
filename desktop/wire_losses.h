// What sending a contact loses.
#pragma once

#include <string>
#include <vector>

#include "formats/contact.h"

namespace desktop {

// One line a field, for people, each beginning with the field's name.
std::vector<std::string> WireLosses(const formats::Contact& contact);

}  // namespace desktop
