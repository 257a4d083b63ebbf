#include "desktop/contact_xml.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

#include "desktop/xml_text.h"

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

std::string Element(std::string_view name, std::string_view innerXml) {
  return fmt::format("<{0}>{1}</{0}>", name, innerXml);
}

std::string TextElement(std::string_view name, std::string_view text) {
  const std::string xml = XmlText(text);
  return xml.empty() ? xml : Element(name, xml);
}

std::string EmailsToXml(const Contact& contact) {
  std::string xml;
  for (const EmailSlot& slot : kEmailSlots) {
    const std::string name = TextElement("NAME", contact[slot.field]);
    if (!name.empty()) xml += Element("EMAIL_ADDRESS", name + TextElement("TYPE", slot.type));
  }
  return xml;
}

// A category whose name the agent cannot read would fail the whole record, and it reads no text
// from blanks alone.
std::string CategoriesToXml(const Contact& contact) {
  std::string xml;
  for (const std::string& category : contact.categories) {
    if (category.find_first_not_of(" \t\r\n") == std::string::npos) continue;
    const std::string name = TextElement("Name", category);
    if (!name.empty()) xml += Element("CATEGORY", name);
  }
  return xml;
}

std::string DateToXml(const std::optional<formats::Date>& date) {
  if (!date) return {};
  return fmt::format("{:04}{:02}{:02}T000000", date->year, date->month, date->day);
}

std::string RowToXml(const Row& row, const Contact& contact) {
  switch (row.kind) {
    case RowKind::kText:
      return XmlText(contact[row.field]);
    case RowKind::kEmails:
      return EmailsToXml(contact);
    case RowKind::kCategories:
      return CategoriesToXml(contact);
    case RowKind::kBirthday:
      return DateToXml(contact.birthday);
    case RowKind::kAnniversary:
      return DateToXml(contact.anniversary);
  }
  return {};
}

std::optional<formats::Date> DateFromText(std::string_view text) {
  const auto number = [&](std::size_t at, std::size_t width) {
    int value = 0;
    const char* begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, begin + width, value);
    return error == std::errc{} && end == begin + width && value >= 0 ? value : -1;
  };
  if (text.size() < 8) return std::nullopt;
  const formats::Date date{number(0, 4), number(4, 2), number(6, 2)};
  if (date.year < 0 || date.month < 1 || date.day < 1) return std::nullopt;
  const std::chrono::year_month_day day{std::chrono::year{date.year},
                                        std::chrono::month{static_cast<unsigned>(date.month)},
                                        std::chrono::day{static_cast<unsigned>(date.day)}};
  return day.ok() ? std::optional(date) : std::nullopt;
}

void EmailsFromXml(const XmlElement& element, Contact& contact) {
  for (const XmlElement& address : element.children) {
    const std::string_view type = address.ChildText("TYPE");
    const auto* slot = std::find_if(kEmailSlots.begin(), kEmailSlots.end(),
                                    [&](const EmailSlot& each) { return each.type == type; });
    if (slot != kEmailSlots.end()) contact[slot->field] = address.ChildText("NAME");
  }
}

void CategoriesFromXml(const XmlElement& element, Contact& contact) {
  for (const XmlElement& category : element.children) {
    const std::string_view name = category.ChildText("Name");
    if (!name.empty()) contact.categories.emplace_back(name);
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
      return CategoriesFromXml(element, contact);
    case RowKind::kBirthday:
      contact.birthday = DateFromText(element.text);
      return;
    case RowKind::kAnniversary:
      contact.anniversary = DateFromText(element.text);
      return;
  }
}

}  // namespace

std::string ContactToXml(const Contact& contact, std::string_view elementName) {
  std::string xml;
  for (const Row& row : kRows) {
    const std::string inner = RowToXml(row, contact);
    if (!inner.empty()) xml += Element(row.element, inner);
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
