// Makes a contact of one card's properties.
#pragma once

#include <vector>

#include "formats/contact.h"
#include "formats/notice_list.h"
#include "formats/vcard_property.h"

namespace formats {

// `properties` are those between BEGIN and END, in the file's order; they are put in order of
// preference. A notice is added for each that the contact cannot keep.
Contact BuildContact(std::vector<Property>& properties, NoticeList& notices);

}  // namespace formats
