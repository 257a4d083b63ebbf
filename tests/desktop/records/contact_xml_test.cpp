#include "desktop/records/contact_xml.h"

#include <gtest/gtest.h>

#include <set>

#include "common/formats/items/identity.h"

namespace desktop::testing {
namespace {

using namespace std::chrono_literals;
using formats::Contact;
using formats::ContactField;

Contact ParsedContact(const std::string& record) {
  return ContactFromXml(ParseRecords("<root>" + record + "</root>").at(0).element);
}

bool IsOnTheWire(ContactField field) {
  return field != ContactField::kOfficeLocation && field != ContactField::kCarTelephoneNumber &&
         field != ContactField::kAssistantTelephoneNumber;
}

Contact FullContact() {
  Contact contact;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    contact.fields[i] = formats::ContactFieldName(static_cast<ContactField>(i));
  }
  contact.categories = {"Business", "Personal"};
  contact.birthday = 1970y / 2 / 28;
  contact.anniversary = 1999y / 12 / 31;
  return contact;
}

constexpr std::string_view kFullContactXml =
    "<CONTACT>"
    "<EMAIL_ADDRESSES>"
    "<EMAIL_ADDRESS><NAME>Email1Address</NAME><TYPE>email1</TYPE></EMAIL_ADDRESS>"
    "<EMAIL_ADDRESS><NAME>Email2Address</NAME><TYPE>email2</TYPE></EMAIL_ADDRESS>"
    "<EMAIL_ADDRESS><NAME>Email3Address</NAME><TYPE>email3</TYPE></EMAIL_ADDRESS>"
    "</EMAIL_ADDRESSES>"
    "<FIRST_NAME>FirstName</FIRST_NAME>"
    "<LAST_NAME>LastName</LAST_NAME>"
    "<COMPANY>CompanyName</COMPANY>"
    "<FileAs>FileAs</FileAs>"
    "<PHONE_BUSINESS_FAX>BusinessFaxNumber</PHONE_BUSINESS_FAX>"
    "<DEPARTMENT>Department</DEPARTMENT>"
    "<PHONE_MOBILE>MobileTelephoneNumber</PHONE_MOBILE>"
    "<PHONE_PAGER>PagerNumber</PHONE_PAGER>"
    "<PHONE_BUSINESS>BusinessTelephoneNumber</PHONE_BUSINESS>"
    "<BUSINESS_TITLE>JobTitle</BUSINESS_TITLE>"
    "<PHONE_HOME>HomeTelephoneNumber</PHONE_HOME>"
    "<SPOUSES_NAME>Spouse</SPOUSES_NAME>"
    "<PHONE_HOME2>Home2TelephoneNumber</PHONE_HOME2>"
    "<PHONE_HOME_FAX>HomeFaxNumber</PHONE_HOME_FAX>"
    "<Assistant>AssistantName</Assistant>"
    "<CHILDREN>Children</CHILDREN>"
    "<CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY>"
    "<CATEGORY><Name>Personal</Name></CATEGORY></CATEGORIES>"
    "<BUSINESS_WEB_PAGE>WebPage</BUSINESS_WEB_PAGE>"
    "<PHONE_BUSINESS2>Business2TelephoneNumber</PHONE_BUSINESS2>"
    "<TITLE>Title</TITLE>"
    "<MiddleName>MiddleName</MiddleName>"
    "<SUFFIX>Suffix</SUFFIX>"
    "<HOME_ADDRESS>HomeAddressStreet</HOME_ADDRESS>"
    "<HOME_CITY>HomeAddressCity</HOME_CITY>"
    "<HOME_STATE>HomeAddressState</HOME_STATE>"
    "<HOME_ZIP>HomeAddressPostalCode</HOME_ZIP>"
    "<HOME_COUNTRY>HomeAddressCountry</HOME_COUNTRY>"
    "<OtherStreet>OtherAddressStreet</OtherStreet>"
    "<OtherCity>OtherAddressCity</OtherCity>"
    "<OtherState>OtherAddressState</OtherState>"
    "<OtherPostalCode>OtherAddressPostalCode</OtherPostalCode>"
    "<OtherCountry>OtherAddressCountry</OtherCountry>"
    "<BUSINESS_ADDRESS>BusinessAddressStreet</BUSINESS_ADDRESS>"
    "<BUSINESS_CITY>BusinessAddressCity</BUSINESS_CITY>"
    "<BUSINESS_STATE>BusinessAddressState</BUSINESS_STATE>"
    "<BUSINESS_ZIP>BusinessAddressPostalCode</BUSINESS_ZIP>"
    "<BUSINESS_COUNTRY>BusinessAddressCountry</BUSINESS_COUNTRY>"
    "<RadioPhone>RadioTelephoneNumber</RadioPhone>"
    "<NOTES>Body</NOTES>"
    "<FURIGANA_COMPANY_NAME>YomiCompanyName</FURIGANA_COMPANY_NAME>"
    "<FURIGANA_FIRST_NAME>YomiFirstName</FURIGANA_FIRST_NAME>"
    "<FURIGANA_LAST_NAME>YomiLastName</FURIGANA_LAST_NAME>"
    "<BIRTHDAY>19700228T000000</BIRTHDAY>"
    "<ANNIVERSARY>19991231T000000</ANNIVERSARY>"
    "</CONTACT>";

TEST(ContactToXml, WritesEveryFieldInTheWiresOrder) {
  EXPECT_EQ(ContactToXml(FullContact()), kFullContactXml);
}

TEST(ContactFromXml, ReadsEveryFieldBack) {
  Contact expected = FullContact();
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    if (!IsOnTheWire(static_cast<ContactField>(i))) expected.fields[i].clear();
  }
  EXPECT_EQ(ParsedContact(std::string(kFullContactXml)), expected);
}

TEST(ContactToXml, LeavesEmptyFieldsOut) {
  EXPECT_EQ(ContactToXml({}), "<CONTACT></CONTACT>");
  Contact contact;
  contact[ContactField::kLastName] = "Only";
  EXPECT_EQ(ContactToXml(contact, "Contact2"), "<Contact2><LAST_NAME>Only</LAST_NAME></Contact2>");
}

TEST(ContactToXml, TellsTheEmailSlotByItsType) {
  Contact contact;
  contact[ContactField::kEmail2Address] = "b@example.org";
  EXPECT_EQ(ContactToXml(contact),
            "<CONTACT><EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>b@example.org</NAME>"
            "<TYPE>email2</TYPE></EMAIL_ADDRESS></EMAIL_ADDRESSES></CONTACT>");
}

TEST(ContactToXml, LeavesOutCategoriesThatWouldFailTheRecord) {
  Contact contact;
  contact.categories = {"", " ", "\x01", "Real"};
  EXPECT_EQ(ContactToXml(contact),
            "<CONTACT><CATEGORIES><CATEGORY><Name>Real</Name></CATEGORY></CATEGORIES></CONTACT>");
  contact.categories = {" "};
  EXPECT_EQ(ContactToXml(contact), "<CONTACT></CONTACT>");
}

TEST(ContactToXml, EscapesAndRoundTripsOddText) {
  Contact contact;
  contact[ContactField::kBody] = "<a> & \"b\"\nÄöü \xF0\x9F\x98\x80";
  EXPECT_EQ(ParsedContact(ContactToXml(contact)), contact);
}

TEST(ContactFromXml, IgnoresUnknownElementsAndTypes) {
  const Contact contact = ParsedContact(
      "<CONTACT><NEW_FIELD>x</NEW_FIELD><BodyInk>TRUE</BodyInk><EMAIL_ADDRESSES><EMAIL_ADDRESS>"
      "<NAME>a</NAME><TYPE>Email1</TYPE></EMAIL_ADDRESS></EMAIL_ADDRESSES></CONTACT>");
  EXPECT_EQ(contact, Contact());
}

TEST(ContactFromXml, LeavesOutDatesThatDoNotExist) {
  for (const char* text : {"20080231T000000", "2008-02-15", "20081301", "0", "", "-0080215"}) {
    const Contact contact =
        ParsedContact("<CONTACT><BIRTHDAY>" + std::string(text) + "</BIRTHDAY></CONTACT>");
    EXPECT_EQ(contact.birthday, std::nullopt) << text;
  }
  EXPECT_EQ(ParsedContact("<CONTACT><BIRTHDAY>20080229</BIRTHDAY></CONTACT>").birthday,
            2008y / 2 / 29);
}

TEST(ContactToXml, ChangesWithEveryFieldOfTheWireAndWithNothingElse) {
  const Contact contact = FullContact();
  std::set<std::string> records = {ContactToXml(contact)};
  std::size_t expected = 1;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    Contact changed = contact;
    changed.fields[i] += "!";
    records.insert(ContactToXml(changed));
    if (IsOnTheWire(static_cast<ContactField>(i))) ++expected;
    EXPECT_EQ(records.size(), expected) << formats::ContactFieldName(static_cast<ContactField>(i));
  }
  Contact changed = contact;
  changed.uid = "other";
  EXPECT_EQ(ContactToXml(changed), ContactToXml(contact));
  changed = contact;
  changed.birthday.reset();
  EXPECT_NE(ContactToXml(changed), ContactToXml(contact));
}

}  // namespace
}  // namespace desktop::testing
