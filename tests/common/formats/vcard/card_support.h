// Reading one card in a test, and tables of such cases.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/formats/vcard/vcard.h"

namespace formats {

// How GoogleTest shows a contact.
void PrintTo(const Contact& contact, std::ostream* out);

namespace testing {

using Field = ContactField;
using FieldTexts = std::vector<std::pair<Field, std::string>>;

// A card of this version with these lines from line 3 on; the test fails unless it is one card and
// nothing was wrong around it.
ParsedContact ReadCard(std::string_view version, std::string_view lines);
Contact ContactOf(const FieldTexts& fields);
// "FirstName=Ann", "category=Work", "Birthday=1980-03-22": all that the contact has.
std::vector<std::string> Texts(const Contact& contact);
// "3: PHOTO: a contact holds no pictures"
std::vector<std::string> Texts(const std::vector<Notice>& notices);

}  // namespace testing
}  // namespace formats
