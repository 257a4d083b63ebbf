// Gives the numbers and addresses of a card their places in a contact. Each function takes its
// properties in the order of preference and puts a notice for whatever finds no place. A value that
// comes twice takes one place.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/vcard_property.h"
#include "common/formats/vcard/overflow.h"

namespace formats {

using PropertyRefs = std::vector<const Property*>;

// Numbers of a known kind come first; one of no kind, or beyond the slots of its kind, takes the
// next free slot for a voice number, and a notice says which. With an Overflow what has no slot is
// not noticed.
void PlacePhones(const PropertyRefs& phones, Overflow overflow, Contact& contact,
                 NoticeList& notices);
void PlaceEmails(const PropertyRefs& emails, Overflow overflow, Contact& contact,
                 NoticeList& notices);
// An address of no kind becomes the other one, or takes what is free. A label, which is an address
// as it is printed, stands in for an address that is missing.
void PlaceAddresses(const PropertyRefs& addresses, const PropertyRefs& labels, Contact& contact,
                    NoticeList& notices);
// There is one place; a page for work goes first.
void PlaceWebPages(const PropertyRefs& pages, Contact& contact, NoticeList& notices);

// After they were placed: the texts that were looked at, and where each is now; nothing for what
// has no slot.
std::string NumberOf(const Property& phone);
std::string LooseTextOf(const Property& property);
std::optional<ContactField> SlotOfPhone(const Property& phone, const Contact& contact);
std::optional<ContactField> SlotOfEmail(const Property& email, const Contact& contact);
std::optional<ContactField> SlotOfAddress(const Property& address, const Contact& contact);
// Whether the slot is one for numbers of that kind; none is for a number of no kind.
bool IsOfItsKind(const Property& phone, ContactField slot);

}  // namespace formats
