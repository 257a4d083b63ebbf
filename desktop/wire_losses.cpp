#include "desktop/wire_losses.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "desktop/xml_text.h"

namespace desktop {
namespace {

using formats::ContactField;

constexpr std::string_view kControl = "control characters are left out, the wire cannot carry them";

bool IsCarried(ContactField field) {
  return field != ContactField::kOfficeLocation && field != ContactField::kCarTelephoneNumber &&
         field != ContactField::kAssistantTelephoneNumber;
}

}  // namespace

std::vector<std::string> WireLosses(const formats::Contact& contact) {
  std::vector<std::string> losses;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    const auto field = static_cast<ContactField>(i);
    if (!IsCarried(field)) {
      if (contact[field].empty()) continue;
      losses.push_back(
          fmt::format("{}: the wire does not carry it", formats::ContactFieldName(field)));
    } else if (HasWhatXmlLeavesOut(contact[field])) {
      losses.push_back(fmt::format("{}: {}", formats::ContactFieldName(field), kControl));
    }
  }
  if (std::any_of(contact.categories.begin(), contact.categories.end(), HasWhatXmlLeavesOut)) {
    losses.push_back(fmt::format("Categories: {}", kControl));
  }
  return losses;
}

}  // namespace desktop
