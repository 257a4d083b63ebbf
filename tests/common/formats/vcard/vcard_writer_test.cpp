#include <gtest/gtest.h>

#include "common/text/code_page.h"
#include "common/text/unicode.h"
#include "tests/common/formats/vcard/card_support.h"

namespace formats::testing {
namespace {

using namespace std::chrono_literals;

Contact WholeContact() {
  Contact contact = ContactOf({{Field::kTitle, "Dr."},
                               {Field::kFirstName, "Ann"},
                               {Field::kMiddleName, "M."},
                               {Field::kLastName, "Lee"},
                               {Field::kSuffix, "Jr."},
                               {Field::kFileAs, "Lee; Ann"},
                               {Field::kCompanyName, "Acme, Inc."},
                               {Field::kDepartment, "R&D"},
                               {Field::kJobTitle, "Chemist"},
                               {Field::kEmail1Address, "ann@acme.example"},
                               {Field::kEmail2Address, "ann@home.example"},
                               {Field::kMobileTelephoneNumber, "+1 1"},
                               {Field::kBusinessTelephoneNumber, "+1 2"},
                               {Field::kHome2TelephoneNumber, "+1 3"},
                               {Field::kCarTelephoneNumber, "+1 4"},
                               {Field::kHomeAddressStreet, "Road 1\nBack door"},
                               {Field::kHomeAddressCity, "Springfield"},
                               {Field::kOtherAddressCity, "Rome"},
                               {Field::kSpouse, "Bo"},
                               {Field::kChildren, "Cy, Di"},
                               {Field::kWebPage, "https://acme.example/?a,b;c"},
                               {Field::kBody, "One\r\nTwo"}});
  contact.uid = "abc,1";
  contact.categories = {"Work", "Chess"};
  contact.birthday = 1980y / 3 / 2;
  contact.anniversary = 2009y / 8 / 8;
  return contact;
}

TEST(WriteVCard, Writes30) {
  EXPECT_EQ(WriteVCard(WholeContact(), VCardVersion::k30),
            "BEGIN:VCARD\r\n"
            "VERSION:3.0\r\n"
            "UID:abc\\,1\r\n"
            "FN:Dr. Ann M. Lee Jr.\r\n"
            "N:Lee;Ann;M.;Dr.;Jr.\r\n"
            "ORG:Acme\\, Inc.;R&D\r\n"
            "TITLE:Chemist\r\n"
            "X-FILE-AS:Lee\\; Ann\r\n"
            "X-SPOUSE:Bo\r\n"
            "X-CHILDREN:Cy\\, Di\r\n"
            "NOTE;X-LINE-BREAKS=crlf:One\\nTwo\r\n"
            "TEL;TYPE=WORK,VOICE:+1 2\r\n"
            "TEL;TYPE=HOME,VOICE;X-SLOT=2:+1 3\r\n"
            "TEL;TYPE=CELL:+1 1\r\n"
            "TEL;TYPE=CAR:+1 4\r\n"
            "EMAIL;TYPE=INTERNET,PREF:ann@acme.example\r\n"
            "EMAIL;TYPE=INTERNET:ann@home.example\r\n"
            "ADR;TYPE=HOME:;;Road 1\\nBack door;Springfield;;;\r\n"
            "ADR;TYPE=OTHER:;;;Rome;;;\r\n"
            "URL:https://acme.example/?a,b;c\r\n"
            "BDAY:1980-03-02\r\n"
            "X-ANNIVERSARY:2009-08-08\r\n"
            "CATEGORIES:Work,Chess\r\n"
            "END:VCARD\r\n");
}

TEST(WriteVCard, Writes40) {
  EXPECT_EQ(WriteVCard(WholeContact(), VCardVersion::k40),
            "BEGIN:VCARD\r\n"
            "VERSION:4.0\r\n"
            "UID;VALUE=text:abc\\,1\r\n"
            "FN:Dr. Ann M. Lee Jr.\r\n"
            "N:Lee;Ann;M.;Dr.;Jr.\r\n"
            "ORG:Acme\\, Inc.;R&D\r\n"
            "TITLE:Chemist\r\n"
            "X-FILE-AS:Lee\\; Ann\r\n"
            "RELATED;TYPE=spouse;VALUE=text:Bo\r\n"
            "RELATED;TYPE=child;VALUE=text:Cy\\, Di\r\n"
            "NOTE;X-LINE-BREAKS=crlf:One\\nTwo\r\n"
            "TEL;TYPE=work,voice:+1 2\r\n"
            "TEL;TYPE=home,voice;X-SLOT=2:+1 3\r\n"
            "TEL;TYPE=cell:+1 1\r\n"
            "TEL;TYPE=x-car:+1 4\r\n"
            "EMAIL;PREF=1:ann@acme.example\r\n"
            "EMAIL:ann@home.example\r\n"
            "ADR;TYPE=home:;;Road 1\\nBack door;Springfield;;;\r\n"
            "ADR:;;;Rome;;;\r\n"
            "URL:https://acme.example/?a,b;c\r\n"
            "BDAY:19800302\r\n"
            "ANNIVERSARY:20090808\r\n"
            "CATEGORIES:Work,Chess\r\n"
            "END:VCARD\r\n");
}

TEST(WriteVCard, NamesAContactThatHasNoName) {
  EXPECT_EQ(WriteVCard({}, VCardVersion::k40),
            "BEGIN:VCARD\r\nVERSION:4.0\r\nFN;DERIVED=true:(no name)\r\nEND:VCARD\r\n");
  EXPECT_EQ(WriteVCard(ContactOf({{Field::kCompanyName, "Acme"}}), VCardVersion::k30),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nFN;X-DERIVED=true:Acme\r\nN:;;;;\r\nORG:Acme\r\n"
            "END:VCARD\r\n");
}

TEST(WriteVCard, LeavesAUrnAsItIs) {
  Contact contact;
  contact.uid = "urn:uuid:1";
  const std::string text = WriteVCard(contact, VCardVersion::k40);
  EXPECT_NE(text.find("\r\nUID:urn:uuid:1\r\n"), std::string::npos);
}

TEST(WriteVCard, LeavesOutADayThatIsNone) {
  Contact contact;
  contact.birthday = 1980y / 2 / 30;
  contact.anniversary = 4501y / 1 / 1;
  const std::string text = WriteVCard(contact, VCardVersion::k40);
  EXPECT_EQ(text.find("BDAY"), std::string::npos);
  EXPECT_EQ(text.find("ANNIVERSARY"), std::string::npos);
}

TEST(WriteVCard, FoldsAt75OctetsBetweenCharacters) {
  for (std::size_t shift = 0; shift < 8; ++shift) {
    Contact contact;
    contact[Field::kBody] = std::string(shift, 'x');
    for (int i = 0; i < 200; ++i) contact[Field::kBody] += i % 2 == 0 ? "\U0001F600" : "é";
    const std::string text = WriteVCard(contact, VCardVersion::k30);
    std::size_t longest = 0;
    for (std::size_t start = 0; start < text.size();) {
      const std::size_t end = text.find("\r\n", start);
      ASSERT_NE(end, std::string::npos);
      EXPECT_LE(end - start, 75u);
      longest = std::max(longest, end - start);
      EXPECT_TRUE(text::IsValidUtf8(std::string_view(text).substr(start, end - start)));
      start = end + 2;
    }
    EXPECT_GE(longest, 72u);
    EXPECT_EQ(ReadVCards(text).contacts.at(0).contact, contact);
  }
}

TEST(WriteVCard, FoldsBytesThatAreNoUtf8) {
  Contact contact;
  contact[Field::kBody] = std::string(500, '\x80');
  const VCardFile file = ReadVCards(WriteVCard(contact, VCardVersion::k30));
  EXPECT_EQ(file.contacts.at(0).contact[Field::kBody],
            text::Windows1252ToUtf8(contact[Field::kBody]));
}

TEST(WriteVCard, WritesALineOf75OctetsInOne) {
  Contact contact;
  contact[Field::kBody] = std::string(70, 'x');
  EXPECT_NE(
      WriteVCard(contact, VCardVersion::k30).find("\r\nNOTE:" + std::string(70, 'x') + "\r\n"),
      std::string::npos);
  contact[Field::kBody] += 'y';
  EXPECT_NE(WriteVCard(contact, VCardVersion::k30)
                .find("\r\nNOTE:" + std::string(70, 'x') + "\r\n y\r\n"),
            std::string::npos);
}

TEST(WriteVCard, GivesACategoryWithOuterBlanksItsOwnLine) {
  Contact contact;
  contact.categories = {"A", "B", " C", "D", "E"};
  const std::string text = WriteVCard(contact, VCardVersion::k30);
  EXPECT_NE(text.find("CATEGORIES:A,B\r\nCATEGORIES: C\r\nCATEGORIES:D,E\r\n"), std::string::npos);
  EXPECT_EQ(ReadVCards(text).contacts.at(0).contact, contact);
}

}  // namespace
}  // namespace formats::testing
