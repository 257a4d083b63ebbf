#include <algorithm>
#include <initializer_list>

#include "common/formats/lines/content_writer.h"
#include "common/formats/vcard/contact_slots.h"
#include "common/formats/vcard/overflow_block.h"
#include "common/formats/vcard/personal_name.h"
#include "common/formats/vcard/vcard.h"
#include "common/formats/vcard/vcard_dates.h"
#include "common/text/text.h"

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

class CardWriter {
 public:
  CardWriter(const Contact& contact, VCardVersion version, const OverflowBlock& overflow)
      : contact_(contact), is40_(version == VCardVersion::k40), overflow_(overflow) {}
  std::string Write();

 private:
  void Line(std::string name, const ContentValue& value);
  // With the name that a description of the slot has, and the label, if there are any.
  void SlotLine(Field slot, std::string name, const ContentValue& value);
  void Labelled(const Property& property, const std::string& line);
  void OverflowLines();
  void Names();
  template <typename TypeOf>
  void Slots(std::string_view name, std::span<const Field> slots, TypeOf typeOf);
  void Phones();
  void Emails();
  void Addresses();
  void WebPage();
  void Dates();
  void Categories();
  void Uid();

  const Contact& contact_;
  const bool is40_;
  const OverflowBlock& overflow_;
  int groups_ = 0;
  std::string out_;
};

void CardWriter::Line(std::string name, const ContentValue& value) {
  name += value.LineBreakParameter();
  name += ':';
  AppendFolded(out_, name + value.text());
}

void CardWriter::SlotLine(Field slot, std::string name, const ContentValue& value) {
  const Property* const description = overflow_.Find(slot, value.text());
  if (!description) return Line(std::move(name), value);
  Labelled(*description, HeadOf(*description) + value.LineBreakParameter() + ":" + value.text());
}

void CardWriter::Labelled(const Property& property, const std::string& line) {
  if (property.label.empty()) return AppendFolded(out_, line);
  const std::string group = "item" + std::to_string(++groups_) + ".";
  AppendFolded(out_, group + line);
  AppendFolded(out_, group + "X-ABLabel:" + ContentValue().Add(property.label).text());
}

void CardWriter::OverflowLines() {
  for (const Property& line : overflow_.lines()) Labelled(line, HeadOf(line) + ":" + line.value);
}

void CardWriter::Names() {
  const PersonalName name = {contact_[Field::kTitle], contact_[Field::kFirstName],
                             contact_[Field::kMiddleName], contact_[Field::kLastName],
                             contact_[Field::kSuffix]};
  const std::string full = JoinFullName(name);
  // A name that says what another property says is not to be taken for a person's.
  const std::string_view derived = is40_ ? "FN;DERIVED=true" : "FN;X-DERIVED=true";
  if (full.empty()) {
    Line(std::string(derived), ContentValue().Add(DisplayName(contact_)));
  } else {
    Line("FN", ContentValue().Add(full));
  }
  ContentValue parts;
  parts.Add(name.last).Separate(';').Add(name.first).Separate(';').Add(name.middle);
  parts.Separate(';').Add(name.title).Separate(';').Add(name.suffix);
  if (!is40_ || parts.text() != ";;;;") Line("N", parts);

  const std::string& company = contact_[Field::kCompanyName];
  const std::string& department = contact_[Field::kDepartment];
  ContentValue organization;
  organization.Add(company);
  if (!department.empty()) organization.Separate(';').Add(department);
  if (!organization.text().empty()) Line("ORG", organization);
}

// `typeOf(i)` is what stands between the property's name and its slot.
template <typename TypeOf>
void CardWriter::Slots(std::string_view name, std::span<const Field> slots, TypeOf typeOf) {
  const bool named = !FillsSlotsInOrder(contact_, slots);
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const std::string& text = contact_[slots[i]];
    if (text.empty()) continue;
    std::string head(name);
    head += typeOf(i);
    if (named) head += ";X-SLOT=" + std::to_string(i + 1);
    if (MustBeExact(text)) head += ";VALUE=text";
    SlotLine(slots[i], head, ContentValue().Add(text));
  }
}

void CardWriter::Phones() {
  for (const PhoneSlots& kind : kPhoneSlots) {
    Slots("TEL;TYPE=", kind.slots, [&](std::size_t) { return is40_ ? kind.type40 : kind.type30; });
  }
}

void CardWriter::Emails() {
  Slots("EMAIL", kEmailSlots, [&](std::size_t i) -> std::string_view {
    if (is40_) return i == 0 ? ";PREF=1" : "";
    return i == 0 ? ";TYPE=INTERNET,PREF" : ";TYPE=INTERNET";
  });
}

void CardWriter::Addresses() {
  for (const AddressSlot& slot : kAddressSlots) {
    const ContentValue parts = AddressValue(contact_, slot);
    if (parts.text() == ";;;;;;") continue;
    const std::string_view type = is40_ ? slot.type40 : slot.type30;
    SlotLine(slot.street, type.empty() ? "ADR" : "ADR;TYPE=" + std::string(type), parts);
  }
}

void CardWriter::WebPage() {
  const std::string& page = contact_[Field::kWebPage];
  if (page.empty()) return;
  // An address is written as it is: not every program undoes escapes in one.
  SlotLine(Field::kWebPage, MustBeExact(page) ? "URL;VALUE=text" : "URL",
           ContentValue(kUriSpecials).Add(page));
}

void CardWriter::Dates() {
  const auto written = [&](year_month_day date) {
    return ContentValue().Add(is40_ ? BasicDate(date) : IsoDate(date));
  };
  if (contact_.birthday && IsKeepableDate(*contact_.birthday)) {
    Line("BDAY", written(*contact_.birthday));
  }
  if (contact_.anniversary && IsKeepableDate(*contact_.anniversary)) {
    Line(is40_ ? "ANNIVERSARY" : "X-ANNIVERSARY", written(*contact_.anniversary));
  }
}

void CardWriter::Categories() {
  for (const ContentValue& value : CategoryValues(contact_.categories)) Line("CATEGORIES", value);
}

void CardWriter::Uid() {
  if (contact_.uid.empty()) return;
  const bool isUri = text::StartsWithNoCase(contact_.uid, "urn:");
  Line(is40_ && !isUri ? "UID;VALUE=text" : "UID",
       ContentValue(isUri ? kUriSpecials : kTextSpecials).Add(contact_.uid));
}

std::string CardWriter::Write() {
  out_ = "BEGIN:VCARD\r\n";
  out_ += is40_ ? "VERSION:4.0\r\n" : "VERSION:3.0\r\n";
  Uid();
  Names();
  for (const TextProperty& property : kTextProperties) {
    const std::string& text = contact_[property.field];
    if (text.empty()) continue;
    Line(std::string(is40_ ? property.name40 : property.name30), ContentValue().Add(text));
  }
  Phones();
  Emails();
  Addresses();
  WebPage();
  Dates();
  Categories();
  OverflowLines();
  out_ += "END:VCARD\r\n";
  return std::move(out_);
}

}  // namespace

std::string WriteVCard(const Contact& contact, VCardVersion version, Overflow overflow) {
  if (overflow == Overflow::kLeftOut) return CardWriter(contact, version, OverflowBlock()).Write();
  Contact bare = contact;
  const OverflowBlock block = OverflowBlock::TakeFrom(bare[Field::kBody]);
  return CardWriter(bare, version, block).Write();
}

}  // namespace formats
