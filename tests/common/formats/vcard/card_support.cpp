#include "tests/common/formats/vcard/card_support.h"

#include "common/calendar/wall_time.h"

namespace formats {

void PrintTo(const Contact& contact, std::ostream* out) {
  *out << ::testing::PrintToString(testing::Texts(contact));
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

std::vector<std::string> Texts(const Contact& contact) {
  std::vector<std::string> texts;
  if (!contact.uid.empty()) texts.push_back("uid=" + contact.uid);
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    if (contact.fields[i].empty()) continue;
    texts.push_back(std::string(ContactFieldName(static_cast<ContactField>(i))) + '=' +
                    contact.fields[i]);
  }
  for (const std::string& category : contact.categories) texts.push_back("category=" + category);
  if (contact.birthday) texts.push_back("Birthday=" + IsoDate(*contact.birthday));
  if (contact.anniversary) texts.push_back("Anniversary=" + IsoDate(*contact.anniversary));
  return texts;
}

std::vector<std::string> Texts(const std::vector<Notice>& notices) {
  std::vector<std::string> texts;
  for (const Notice& notice : notices) {
    texts.push_back(std::to_string(notice.line) + ": " + notice.text);
  }
  return texts;
}

}  // namespace testing
}  // namespace formats
