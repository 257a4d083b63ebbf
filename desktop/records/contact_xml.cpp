#include "desktop/records/contact_xml.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "common/calendar/wall_time.h"
#include "common/text/xml_text.h"
#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

using formats::Contact;
using formats::ContactField;

enum class RowKind { kText, kEmails, kCategories, kBirthday, kAnniversary };

struct Row {
  std::string_view element;
  RowKind kind = RowKind::kText;
  ContactField field = {};  // of a kText row
};

constexpr Row Text(std::string_view element, ContactField field) {
  return {element, RowKind::kText, field};
}

// In the order in which the agent writes them.
constexpr std::array kRows = {
    Row{"EMAIL_ADDRESSES", RowKind::kEmails},
    Text("FIRST_NAME", ContactField::kFirstName),
    Text("LAST_NAME", ContactField::kLastName),
    Text("COMPANY", ContactField::kCompanyName),
    Text("FileAs", ContactField::kFileAs),
    Text("PHONE_BUSINESS_FAX", ContactField::kBusinessFaxNumber),
    Text("DEPARTMENT", ContactField::kDepartment),
    Text("PHONE_MOBILE", ContactField::kMobileTelephoneNumber),
    Text("PHONE_PAGER", ContactField::kPagerNumber),
    Text("PHONE_BUSINESS", ContactField::kBusinessTelephoneNumber),
    Text("BUSINESS_TITLE", ContactField::kJobTitle),
    Text("PHONE_HOME", ContactField::kHomeTelephoneNumber),
    Text("SPOUSES_NAME", ContactField::kSpouse),
    Text("PHONE_HOME2", ContactField::kHome2TelephoneNumber),
    Text("PHONE_HOME_FAX", ContactField::kHomeFaxNumber),
    Text("Assistant", ContactField::kAssistantName),
    Text("CHILDREN", ContactField::kChildren),
    Row{"CATEGORIES", RowKind::kCategories},
    Text("BUSINESS_WEB_PAGE", ContactField::kWebPage),
    Text("PHONE_BUSINESS2", ContactField::kBusiness2TelephoneNumber),
    Text("TITLE", ContactField::kTitle),
    Text("MiddleName", ContactField::kMiddleName),
    Text("SUFFIX", ContactField::kSuffix),
    Text("HOME_ADDRESS", ContactField::kHomeAddressStreet),
    Text("HOME_CITY", ContactField::kHomeAddressCity),
    Text("HOME_STATE", ContactField::kHomeAddressState),
    Text("HOME_ZIP", ContactField::kHomeAddressPostalCode),
    Text("HOME_COUNTRY", ContactField::kHomeAddressCountry),
    Text("OtherStreet", ContactField::kOtherAddressStreet),
    Text("OtherCity", ContactField::kOtherAddressCity),
    Text("OtherState", ContactField::kOtherAddressState),
    Text("OtherPostalCode", ContactField::kOtherAddressPostalCode),
    Text("OtherCountry", ContactField::kOtherAddressCountry),
    Text("BUSINESS_ADDRESS", ContactField::kBusinessAddressStreet),
    Text("BUSINESS_CITY", ContactField::kBusinessAddressCity),
    Text("BUSINESS_STATE", ContactField::kBusinessAddressState),
    Text("BUSINESS_ZIP", ContactField::kBusinessAddressPostalCode),
    Text("BUSINESS_COUNTRY", ContactField::kBusinessAddressCountry),
    Text("RadioPhone", ContactField::kRadioTelephoneNumber),
    Text("NOTES", ContactField::kBody),
    Text("FURIGANA_COMPANY_NAME", ContactField::kYomiCompanyName),
    Text("FURIGANA_FIRST_NAME", ContactField::kYomiFirstName),
    Text("FURIGANA_LAST_NAME", ContactField::kYomiLastName),
    Row{"BIRTHDAY", RowKind::kBirthday},
    Row{"ANNIVERSARY", RowKind::kAnniversary},
};
static_assert(kRows.size() == 45);

struct EmailSlot {
  std::string_view type;
  ContactField field;
};
constexpr std::array kEmailSlots = {
    EmailSlot{"email1", ContactField::kEmail1Address},
    EmailSlot{"email2", ContactField::kEmail2Address},
    EmailSlot{"email3", ContactField::kEmail3Address},
};

std::string EmailsToXml(const Contact& contact) {
  std::string xml;
  for (const EmailSlot& slot : kEmailSlots) {
    const std::string name = TextElement("NAME", contact[slot.field]);
    if (!name.empty()) xml += Element("EMAIL_ADDRESS", name + TextElement("TYPE", slot.type));
  }
  return xml;
}

std::string DateToXml(std::optional<std::chrono::year_month_day> date) {
  return date ? formats::BasicDate(*date) + "T000000" : std::string();
}

std::string RowToXml(const Row& row, const Contact& contact) {
  switch (row.kind) {
    case RowKind::kText:
      return text::XmlText(contact[row.field]);
    case RowKind::kEmails:
      return EmailsToXml(contact);
    case RowKind::kCategories:
      return CategoriesToXml(contact.categories);
    case RowKind::kBirthday:
      return DateToXml(contact.birthday);
    case RowKind::kAnniversary:
      return DateToXml(contact.anniversary);
  }
  return {};
}

std::optional<std::chrono::year_month_day> DateFromXml(const XmlElement& element) {
  const std::optional<std::chrono::local_days> date = DateFromText(element.text);
  return date ? std::optional<std::chrono::year_month_day>(*date) : std::nullopt;
}

void EmailsFromXml(const XmlElement& element, Contact& contact) {
  for (const XmlElement& address : element.children) {
    const std::string_view type = address.ChildText("TYPE");
    const auto* slot = std::find_if(kEmailSlots.begin(), kEmailSlots.end(),
                                    [&](const EmailSlot& each) { return each.type == type; });
    if (slot != kEmailSlots.end()) contact[slot->field] = address.ChildText("NAME");
  }
}

void RowFromXml(const Row& row, const XmlElement& element, Contact& contact) {
  switch (row.kind) {
    case RowKind::kText:
      contact[row.field] = element.text;
      return;
    case RowKind::kEmails:
      return EmailsFromXml(element, contact);
    case RowKind::kCategories:
      contact.categories = CategoriesFromXml(&element);
      return;
    case RowKind::kBirthday:
      contact.birthday = DateFromXml(element);
      return;
    case RowKind::kAnniversary:
      contact.anniversary = DateFromXml(element);
      return;
  }
}

}  // namespace

std::string ContactToXml(const Contact& contact, std::string_view elementName) {
  std::string xml;
  for (const Row& row : kRows) {
    xml += ElementUnlessEmpty(row.element, RowToXml(row, contact));
  }
  return Element(elementName, xml);
}

Contact ContactFromXml(const XmlElement& record) {
  Contact contact;
  for (const Row& row : kRows) {
    if (const XmlElement* element = record.Child(row.element)) RowFromXml(row, *element, contact);
  }
  return contact;
}

}  // namespace desktop
