#include "desktop/transfer/state_hash.h"

#include <utility>

#include "common/calendar/zone.h"
#include "common/formats/items/identity.h"
#include "desktop/merge/item.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/record_kind.h"
#include "desktop/records/task_xml.h"

namespace desktop {
namespace {

using calendar::Zone;

void NormalizeTexts(XmlElement& element) {
  element.text = CommonText(std::move(element.text));
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
  for (std::string& text : state.fields) text = CommonText(std::move(text));
  for (std::string& category : state.categories) category = CommonText(std::move(category));
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
