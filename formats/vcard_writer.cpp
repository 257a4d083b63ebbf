#include <algorithm>
#include <initializer_list>
#include <span>

#include "formats/contact_slots.h"
#include "formats/personal_name.h"
#include "formats/text.h"
#include "formats/vcard.h"
#include "formats/vcard_dates.h"

namespace formats {
namespace {

using Field = ContactField;

// A field that is one property of one text.
struct TextProperty {
  Field field;
  std::string_view name30;
  std::string_view name40;
};
constexpr TextProperty kTextProperties[] = {
    {Field::kJobTitle, "TITLE", "TITLE"},
    {Field::kFileAs, "X-FILE-AS", "X-FILE-AS"},
    {Field::kYomiFirstName, "X-PHONETIC-FIRST-NAME", "X-PHONETIC-FIRST-NAME"},
    {Field::kYomiLastName, "X-PHONETIC-LAST-NAME", "X-PHONETIC-LAST-NAME"},
    {Field::kYomiCompanyName, "X-PHONETIC-ORG", "X-PHONETIC-ORG"},
    {Field::kSpouse, "X-SPOUSE", "RELATED;TYPE=spouse;VALUE=text"},
    {Field::kChildren, "X-CHILDREN", "RELATED;TYPE=child;VALUE=text"},
    {Field::kAssistantName, "X-ASSISTANT", "X-ASSISTANT"},
    {Field::kOfficeLocation, "X-OFFICE", "X-OFFICE"},
    {Field::kBody, "NOTE", "NOTE"},
};

constexpr std::string_view kTextSpecials = "\\,;";
constexpr std::string_view kUriSpecials = "\\";

void AppendFolded(std::string& out, std::string_view line) {
  constexpr std::size_t kWidth = 75;
  std::size_t room = kWidth;
  while (line.size() > room) {
    std::size_t cut = room;
    while (cut > room - 4 && (line[cut] & 0xC0) == 0x80) --cut;
    if ((line[cut] & 0xC0) == 0x80) cut = room;  // no UTF-8
    out += line.substr(0, cut);
    out += "\r\n ";
    line.remove_prefix(cut);
    room = kWidth - 1;
  }
  out += line;
  out += "\r\n";
}

// One property's value. vCards have one line break, so which one each was goes into a parameter
// when it was not a line feed.
class Value {
 public:
  explicit Value(std::string_view specials = kTextSpecials) : specials_(specials) {}
  Value& Add(std::string_view text);
  Value& Separate(char separator) {
    text_ += separator;
    return *this;
  }
  const std::string& text() const { return text_; }
  std::string LineBreakParameter() const;

 private:
  std::string_view specials_;
  std::string text_;
  std::vector<std::string_view> breaks_;
};

Value& Value::Add(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n' || c == '\r') {
      const bool both = c == '\r' && text.substr(i + 1).starts_with('\n');
      if (both) ++i;
      breaks_.push_back(both ? "crlf" : c == '\r' ? "cr" : "lf");
      text_ += "\\n";
      continue;
    }
    if (specials_.find(c) != std::string_view::npos) text_ += '\\';
    text_ += c;
  }
  return *this;
}

std::string Value::LineBreakParameter() const {
  std::span<const std::string_view> kinds(breaks_);
  while (kinds.size() > 1 && kinds[kinds.size() - 2] == kinds.back()) {
    kinds = kinds.first(kinds.size() - 1);
  }
  if (kinds.empty() || (kinds.size() == 1 && kinds.front() == "lf")) return {};
  std::string parameter = ";X-LINE-BREAKS=";
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (i > 0) parameter += ',';
    parameter += kinds[i];
  }
  return parameter;
}

// Readers drop blanks around numbers and addresses and a "tel:" before them, unless they are told
// that the value is plain text.
bool MustBeExact(std::string_view text) {
  return TrimBlanks(text).size() != text.size() || StartsWithNoCase(text, "tel:");
}

class CardWriter {
 public:
  CardWriter(const Contact& contact, VCardVersion version)
      : contact_(contact), is40_(version == VCardVersion::k40) {}
  std::string Write();

 private:
  void Line(std::string name, const Value& value);
  void Names();
  void Phones();
  void Emails();
  void Addresses();
  void WebPage();
  void Dates();
  void Categories();
  void Uid();

  const Contact& contact_;
  const bool is40_;
  std::string out_;
};

void CardWriter::Line(std::string name, const Value& value) {
  name += value.LineBreakParameter();
  name += ':';
  AppendFolded(out_, name + value.text());
}

void CardWriter::Names() {
  const PersonalName name = {contact_[Field::kTitle], contact_[Field::kFirstName],
                             contact_[Field::kMiddleName], contact_[Field::kLastName],
                             contact_[Field::kSuffix]};
  const std::string full = JoinFullName(name);
  // A name that says what another property says is not to be taken for a person's.
  const std::string_view derived = is40_ ? "FN;DERIVED=true" : "FN;X-DERIVED=true";
  if (full.empty()) {
    Line(std::string(derived), Value().Add(DisplayName(contact_)));
  } else {
    Line("FN", Value().Add(full));
  }
  Value parts;
  parts.Add(name.last).Separate(';').Add(name.first).Separate(';').Add(name.middle);
  parts.Separate(';').Add(name.title).Separate(';').Add(name.suffix);
  if (!is40_ || parts.text() != ";;;;") Line("N", parts);

  const std::string& company = contact_[Field::kCompanyName];
  const std::string& department = contact_[Field::kDepartment];
  Value organization;
  organization.Add(company);
  if (!department.empty()) organization.Separate(';').Add(department);
  if (!organization.text().empty()) Line("ORG", organization);
}

void CardWriter::Phones() {
  for (const PhoneSlots& kind : kPhoneSlots) {
    const bool named = !FillsSlotsInOrder(contact_, kind.slots());
    for (std::size_t i = 0; i < kind.count; ++i) {
      const std::string& number = contact_[kind.fields[i]];
      if (number.empty()) continue;
      std::string name = "TEL;TYPE=";
      name += is40_ ? kind.type40 : kind.type30;
      if (named) name += ";X-SLOT=" + std::to_string(i + 1);
      if (MustBeExact(number)) name += ";VALUE=text";
      Line(name, Value().Add(number));
    }
  }
}

void CardWriter::Emails() {
  const bool named = !FillsSlotsInOrder(contact_, kEmailSlots);
  for (std::size_t i = 0; i < kEmailSlots.size(); ++i) {
    const std::string& address = contact_[kEmailSlots[i]];
    if (address.empty()) continue;
    const bool first = i == 0;
    std::string name = "EMAIL";
    if (is40_) {
      if (first) name += ";PREF=1";
    } else {
      name += first ? ";TYPE=INTERNET,PREF" : ";TYPE=INTERNET";
    }
    if (named) name += ";X-SLOT=" + std::to_string(i + 1);
    if (MustBeExact(address)) name += ";VALUE=text";
    Line(name, Value().Add(address));
  }
}

void CardWriter::Addresses() {
  for (const AddressSlot& slot : kAddressSlots) {
    Value parts;
    parts.Separate(';');  // no post office box and nothing beside the street
    for (Field field : slot.fields()) parts.Separate(';').Add(contact_[field]);
    if (parts.text() == ";;;;;;") continue;
    const std::string_view type = is40_ ? slot.type40 : slot.type30;
    Line(type.empty() ? "ADR" : "ADR;TYPE=" + std::string(type), parts);
  }
}

void CardWriter::WebPage() {
  const std::string& page = contact_[Field::kWebPage];
  if (page.empty()) return;
  // An address is written as it is: not every program undoes escapes in one.
  Line(MustBeExact(page) ? "URL;VALUE=text" : "URL", Value(kUriSpecials).Add(page));
}

void CardWriter::Dates() {
  const std::string_view separator = is40_ ? "" : "-";
  if (contact_.birthday && IsKeepableDate(*contact_.birthday)) {
    Line("BDAY", Value().Add(FormatDate(*contact_.birthday, separator)));
  }
  if (contact_.anniversary && IsKeepableDate(*contact_.anniversary)) {
    Line(is40_ ? "ANNIVERSARY" : "X-ANNIVERSARY",
         Value().Add(FormatDate(*contact_.anniversary, separator)));
  }
}

// A name with blanks at an end has a property of its own, since blanks around the commas of a list
// are no part of the names.
void CardWriter::Categories() {
  Value list;
  const auto flush = [&] {
    if (!list.text().empty()) Line("CATEGORIES", list);
    list = Value();
  };
  for (const std::string& category : contact_.categories) {
    const bool alone = TrimBlanks(category).size() != category.size();
    if (alone) flush();
    if (!list.text().empty()) list.Separate(',');
    list.Add(category);
    if (alone) flush();
  }
  flush();
}

void CardWriter::Uid() {
  if (contact_.uid.empty()) return;
  const bool isUri = StartsWithNoCase(contact_.uid, "urn:");
  Line(is40_ && !isUri ? "UID;VALUE=text" : "UID",
       Value(isUri ? kUriSpecials : kTextSpecials).Add(contact_.uid));
}

std::string CardWriter::Write() {
  out_ = "BEGIN:VCARD\r\n";
  out_ += is40_ ? "VERSION:4.0\r\n" : "VERSION:3.0\r\n";
  Uid();
  Names();
  for (const TextProperty& property : kTextProperties) {
    const std::string& text = contact_[property.field];
    if (text.empty()) continue;
    Line(std::string(is40_ ? property.name40 : property.name30), Value().Add(text));
  }
  Phones();
  Emails();
  Addresses();
  WebPage();
  Dates();
  Categories();
  out_ += "END:VCARD\r\n";
  return std::move(out_);
}

}  // namespace

std::string WriteVCard(const Contact& contact, VCardVersion version) {
  return CardWriter(contact, version).Write();
}

}  // namespace formats
