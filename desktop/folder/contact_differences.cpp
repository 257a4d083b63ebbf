#include "desktop/folder/contact_differences.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>

#include "common/calendar/wall_time.h"
#include "common/formats/lines/vcard_property.h"
#include "common/formats/vcard/contact_slots.h"
#include "common/text/text.h"
#include "desktop/folder/file_parts.h"
#include "desktop/merge/item.h"

namespace desktop {
namespace {

using formats::Contact;
using formats::ContactField;

using Fields = std::span<const ContactField>;

// Those that hold several values of one kind.
std::vector<Fields> SeveralSlots() {
  std::vector<Fields> all = {formats::kEmailSlots};
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) all.push_back(kind.slots);
  return all;
}

std::vector<std::string> ListOf(const Contact& contact, Fields fields) {
  std::vector<std::string> values;
  for (const ContactField field : fields) {
    std::string value = CommonText(contact[field]);
    if (value.empty() || std::find(values.begin(), values.end(), value) != values.end()) continue;
    values.push_back(std::move(value));
  }
  return values;
}

// A note begins and ends as the person has it.
Contact Plainest(const Contact& contact) {
  Contact plain;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    plain.fields[i] = CommonText(contact.fields[i]);
  }
  if (std::string& body = plain[ContactField::kBody]; !body.empty()) {
    body = text::NormalizeLineBreaks(contact[ContactField::kBody]);
  }
  for (const Fields fields : SeveralSlots()) {
    std::vector<std::string> values = ListOf(contact, fields);
    values.resize(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) plain[fields[i]] = values[i];
  }
  plain.birthday = contact.birthday;
  plain.anniversary = contact.anniversary;
  return plain;
}

void Compare(const std::string& field, const std::vector<std::string>& has,
             const std::vector<std::string>& should, ContactDifferences& differences) {
  const auto add = [&](const auto& of, const auto& in, bool missing) {
    for (const std::string& value : of) {
      if (std::find(in.begin(), in.end(), value) == in.end()) {
        differences.insert({field, missing, value});
      }
    }
  };
  add(should, has, true);
  add(has, should, false);
}

std::vector<std::string> DateList(const std::optional<std::chrono::year_month_day>& date) {
  return date ? std::vector{formats::IsoDate(*date)} : std::vector<std::string>{};
}

}  // namespace

std::vector<CanonicalLine> CanonicalLines(const Contact& contact, formats::VCardVersion version) {
  const std::string card = formats::WriteVCard(Plainest(contact), version);
  std::vector<CanonicalLine> lines;
  for (const FileLine& line : FindParts(card).lines) {
    CanonicalLine canonical{RawLine::Of(line.content.text), {}, {}};
    RawLine& raw = canonical.line;
    const bool frame = raw.Is("BEGIN") || raw.Is("END") || raw.Is("VERSION") || raw.Is("FN");
    if (frame || (raw.Is("N") && raw.value == ";;;;")) continue;
    if (raw.Is("EMAIL")) {
      raw.parameters.clear();
      if (version == formats::VCardVersion::k30) raw.parameters = {"TYPE=INTERNET"};
    }
    canonical.key = raw.name + ":" + raw.value;
    canonical.text = raw.name;
    for (const std::string& parameter : raw.parameters) canonical.text += ";" + parameter;
    canonical.text += ":" + raw.value;
    lines.push_back(std::move(canonical));
  }
  return lines;
}

std::string FormattedName(const Contact& contact) {
  const std::string card = formats::WriteVCard(Plainest(contact), formats::VCardVersion::k40);
  for (const FileLine& line : FindParts(card).lines) {
    const std::optional<formats::Property> property = formats::ParseProperty(line.content);
    if (property && property->name == "FN") return formats::TextOf(*property);
  }
  return {};
}

ContactDifferences DifferencesOf(const Contact& has, const Contact& should) {
  ContactDifferences differences;
  std::set<ContactField> listed;
  for (const Fields fields : SeveralSlots()) {
    Compare(std::string(ContactFieldName(fields.front())), ListOf(has, fields),
            ListOf(should, fields), differences);
    listed.insert(fields.begin(), fields.end());
  }
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    const auto field = static_cast<ContactField>(i);
    if (listed.contains(field)) continue;
    Compare(std::string(ContactFieldName(field)), ListOf(has, {&field, 1}),
            ListOf(should, {&field, 1}), differences);
  }
  Compare("Birthday", DateList(has.birthday), DateList(should.birthday), differences);
  Compare("Anniversary", DateList(has.anniversary), DateList(should.anniversary), differences);
  Compare("Categories", has.categories, should.categories, differences);
  return differences;
}

std::set<std::string> ValuesOf(const Contact& contact) {
  std::set<std::string> values;
  for (const ContactDifference& difference : DifferencesOf(contact, Contact())) {
    values.insert(difference.value);
  }
  return values;
}

}  // namespace desktop
