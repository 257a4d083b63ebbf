// Makes a contact of one card's properties.
#pragma once

#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/vcard_property.h"
#include "common/formats/vcard/overflow.h"

namespace formats {

// `properties` are those between BEGIN and END, in the file's order; they are put in order of
// preference. A notice is added for each that the contact cannot keep.
Contact BuildContact(std::vector<Property>& properties, Overflow overflow, NoticeList& notices);

}  // namespace formats
