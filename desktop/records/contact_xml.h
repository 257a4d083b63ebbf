// Contacts as the wire has them.
#pragma once

#include <string>
#include <string_view>

#include "common/formats/items/contact.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// A record element without an "Oid". Empty fields are left out, which clears them on the handheld.
std::string ContactToXml(const formats::Contact& contact, std::string_view elementName = "CONTACT");

// What the record says; elements that it does not know, and dates that do not exist, are left out.
formats::Contact ContactFromXml(const XmlElement& record);

}  // namespace desktop
