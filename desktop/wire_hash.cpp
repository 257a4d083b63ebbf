#include "desktop/wire_hash.h"

#include <utility>

#include "desktop/contact_xml.h"
#include "formats/identity.h"
#include "formats/text.h"

namespace desktop {
namespace {

std::string Normal(std::string text) {
  constexpr std::string_view kBlanks = " \t\n";
  text = formats::NormalizeLineBreaks(std::move(text));
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

std::string WireHash(const formats::Contact& contact) {
  return formats::ContentHash(ContactToXml(formats::WithFileAs(contact)));
}

std::string StateHash(const formats::Contact& contact) {
  using formats::ContactField;
  formats::Contact state = contact;
  for (const ContactField field : {ContactField::kYomiCompanyName, ContactField::kYomiFirstName,
                                   ContactField::kYomiLastName}) {
    state[field].clear();
  }
  for (std::string& text : state.fields) text = Normal(std::move(text));
  for (std::string& category : state.categories) category = Normal(std::move(category));
  return WireHash(state);
}

}  // namespace desktop
