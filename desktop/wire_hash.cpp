#include "desktop/wire_hash.h"

#include "desktop/contact_xml.h"
#include "formats/identity.h"

namespace desktop {

std::string WireHash(const formats::Contact& contact) {
  return formats::ContentHash(ContactToXml(formats::WithFileAs(contact)));
}

}  // namespace desktop
