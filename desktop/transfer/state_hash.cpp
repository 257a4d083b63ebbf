#include "desktop/transfer/state_hash.h"

#include <utility>

#include "common/calendar/zone.h"
#include "common/formats/items/identity.h"
#include "common/text/text.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/records/task_xml.h"

namespace desktop {
namespace {

using calendar::Zone;

std::string Normal(std::string text) {
  if (text.empty()) return text;  // as most fields are
  constexpr std::string_view kXmlBlanks = " \t\n";
  text = text::NormalizeLineBreaks(std::move(text));
  const std::size_t first = text.find_first_not_of(kXmlBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kXmlBlanks) + 1 - first);
}

void NormalizeTexts(XmlElement& element) {
  element.text = Normal(std::move(element.text));
  for (XmlElement& child : element.children) NormalizeTexts(child);
}

const Zone& Utc() {
  static const Zone utc = *Zone::Find("UTC");
  return utc;
}

}  // namespace

std::string StateHash(const formats::Contact& contact) {
  using formats::ContactField;
  formats::Contact state = contact;
  for (const ContactField field : {ContactField::kYomiCompanyName, ContactField::kYomiFirstName,
                                   ContactField::kYomiLastName}) {
    state[field].clear();
  }
  for (std::string& text : state.fields) text = Normal(std::move(text));
  for (std::string& category : state.categories) category = Normal(std::move(category));
  return formats::ContentHash(ContactToXml(formats::WithFileAs(state)));
}

std::string StateHash(const XmlElement& record) {
  const std::string_view kind = KindOfElement(record.name);
  if (kind == kContactKind) return StateHash(ContactFromXml(record));
  XmlElement state = record;
  NormalizeTexts(state);
  return formats::ContentHash(kind == kAppointmentKind
                                  ? AppointmentToXml(AppointmentFromXml(state, Utc()), Utc())
                                  : TaskToXml(TaskFromXml(state, Utc())));
}

}  // namespace desktop
