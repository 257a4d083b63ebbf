#include "tests/common/formats/vcard/card_support.h"

namespace formats {

void PrintTo(const Contact& contact, std::ostream* out) {
  *out << "{";
  if (!contact.uid.empty()) *out << " uid=" << ::testing::PrintToString(contact.uid);
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    if (contact.fields[i].empty()) continue;
    *out << ' ' << ContactFieldName(static_cast<ContactField>(i)) << '='
         << ::testing::PrintToString(contact.fields[i]);
  }
  for (const std::string& category : contact.categories) {
    *out << " category=" << ::testing::PrintToString(category);
  }
  const auto print = [&](const char* name, const std::optional<Date>& date) {
    if (date) *out << name << date->year << '-' << date->month << '-' << date->day;
  };
  print(" birthday=", contact.birthday);
  print(" anniversary=", contact.anniversary);
  *out << " }";
}

namespace testing {

ParsedContact ReadCard(std::string_view version, std::string_view lines) {
  std::string text = "BEGIN:VCARD\nVERSION:" + std::string(version) + "\n";
  text += lines;
  if (!text.ends_with('\n')) text += '\n';
  const VCardFile file = ReadVCards(text + "END:VCARD\n");
  EXPECT_EQ(Texts(file.notices), std::vector<std::string>{});
  EXPECT_EQ(file.contacts.size(), 1u);
  return file.contacts.empty() ? ParsedContact{} : file.contacts.front();
}

Contact ContactOf(const FieldTexts& fields) {
  Contact contact;
  for (const auto& [field, text] : fields) contact[field] = text;
  return contact;
}

std::vector<std::string> Texts(const std::vector<Notice>& notices) {
  std::vector<std::string> texts;
  for (const Notice& notice : notices) {
    texts.push_back(std::to_string(notice.line) + ": " + notice.text);
  }
  return texts;
}

void PrintTo(const CardCase& card, std::ostream* out) {
  *out << card.lines;
}

void ExpectCard(const CardCase& card) {
  const ParsedContact read = ReadCard(card.version, card.lines);
  EXPECT_EQ(read.contact, ContactOf(card.fields));
  EXPECT_EQ(Texts(read.notices), card.notices);
}

}  // namespace testing
}  // namespace formats
