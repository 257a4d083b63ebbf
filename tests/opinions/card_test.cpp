// Contacts as python-vobject reads the cards that we write.
//
// It takes every value for a text, and a web address is written without escapes, so those here have
// none of the signs that end a text. A line break is one of a kind to it.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/vcard/vcard.h"
#include "tests/opinions/any_text.h"
#include "tests/opinions/opinion.h"

namespace corvane::testing {
namespace {

using formats::Contact;
using Field = formats::ContactField;
using nlohmann::json;

constexpr Field kNumbers[] = {
    Field::kMobileTelephoneNumber,    Field::kHomeTelephoneNumber,
    Field::kHome2TelephoneNumber,     Field::kHomeFaxNumber,
    Field::kBusinessTelephoneNumber,  Field::kBusiness2TelephoneNumber,
    Field::kBusinessFaxNumber,        Field::kPagerNumber,
    Field::kRadioTelephoneNumber,     Field::kCarTelephoneNumber,
    Field::kAssistantTelephoneNumber,
};

constexpr std::pair<const char*, Field> kTexts[] = {
    {"TITLE", Field::kJobTitle},
    {"X-FILE-AS", Field::kFileAs},
    {"X-PHONETIC-FIRST-NAME", Field::kYomiFirstName},
    {"X-PHONETIC-LAST-NAME", Field::kYomiLastName},
    {"X-PHONETIC-ORG", Field::kYomiCompanyName},
    {"X-SPOUSE", Field::kSpouse},
    {"X-CHILDREN", Field::kChildren},
    {"X-ASSISTANT", Field::kAssistantName},
    {"X-OFFICE", Field::kOfficeLocation},
    {"NOTE", Field::kBody},
    {"URL", Field::kWebPage},
    {"EMAIL", Field::kEmail1Address},
    {"EMAIL", Field::kEmail2Address},
    {"EMAIL", Field::kEmail3Address},
};

// Street, city, state, postal code, country.
constexpr std::pair<const char*, Field> kAddresses[] = {
    {"HOME", Field::kHomeAddressStreet},
    {"WORK", Field::kBusinessAddressStreet},
    {"OTHER", Field::kOtherAddressStreet},
};

Contact AnyCard() {
  Contact contact;
  contact.uid = AnyText();
  for (std::string& field : contact.fields) {
    if (*rc::gen::arbitrary<bool>()) field = AnyText();
  }
  std::string& page = contact[Field::kWebPage];
  std::erase_if(page, [](char c) { return c == ',' || c == ';'; });
  for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
    std::string name = AnyText() + std::to_string(i);
    std::erase(name, ',');
    contact.categories.push_back(name);
  }
  if (*rc::gen::arbitrary<bool>()) {
    contact.birthday = std::chrono::year(*rc::gen::inRange(1900, 3000)) / 2 / 28;
  }
  return contact;
}

json PartsOfName(const Contact& contact) {
  const auto text = [&](Field field) { return PlainText(contact[field]); };
  return {{"family", text(Field::kLastName)},
          {"given", text(Field::kFirstName)},
          {"additional", text(Field::kMiddleName)},
          {"prefix", text(Field::kTitle)},
          {"suffix", text(Field::kSuffix)}};
}

void AddAddress(const Contact& contact, const char* type, Field street, json& lines) {
  const auto text = [&](std::size_t behind) {
    return PlainText(contact.fields[static_cast<std::size_t>(street) + behind]);
  };
  json parts = {{"box", ""},         {"extended", ""},  {"street", text(0)}, {"city", text(1)},
                {"region", text(2)}, {"code", text(3)}, {"country", text(4)}};
  const bool any = std::any_of(parts.begin(), parts.end(), [](const json& p) { return p != ""; });
  if (any) lines.push_back({"ADR", type, std::move(parts)});
}

// Without types but for addresses' first one, and without FN.
json Expected(const Contact& contact) {
  json lines = json::array();
  lines.push_back({"VERSION", "", "3.0"});
  lines.push_back({"N", "", PartsOfName(contact)});
  const auto add = [&](const char* name, const std::string& text) {
    if (!text.empty()) lines.push_back({name, "", PlainText(text)});
  };
  add("UID", contact.uid);
  for (const auto& [name, field] : kTexts) add(name, contact[field]);
  for (const Field field : kNumbers) add("TEL", contact[field]);
  for (const auto& [type, street] : kAddresses) AddAddress(contact, type, street, lines);
  const std::string& department = contact[Field::kDepartment];
  if (!contact[Field::kCompanyName].empty() || !department.empty()) {
    json names = {PlainText(contact[Field::kCompanyName])};
    if (!department.empty()) names.push_back(PlainText(department));
    lines.push_back({"ORG", "", std::move(names)});
  }
  if (contact.birthday) add("BDAY", formats::IsoDate(*contact.birthday));
  for (const std::string& name : contact.categories)
    lines.push_back({"CATEGORY", "", PlainText(name)});
  return lines;
}

json Found(const json& told) {
  json lines = json::array();
  for (const json& line : told) {
    const std::string name = line[0];
    if (name == "FN") continue;
    if (name == "CATEGORIES") {
      for (const json& each : line[2]) lines.push_back({"CATEGORY", "", each});
      continue;
    }
    const bool typed = name == "ADR" && !line[1].empty();
    lines.push_back({name, typed ? line[1][0] : json(""), line[2]});
  }
  return lines;
}

RC_GTEST_PROP(Card, IsTheContactToVobject, ()) {
  static Opinion vobject("card.py");
  const Contact contact = AnyCard();
  const std::string card = formats::WriteVCard(contact, formats::VCardVersion::k30);
  RC_LOG() << card;
  json found = Found(vobject.Ask({{"card", card}}));
  json expected = Expected(contact);
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  RC_LOG() << "found    " << found.dump() << "\nexpected " << expected.dump() << "\n";
  const bool same = found == expected;
  RC_ASSERT(same);
}

}  // namespace
}  // namespace corvane::testing
