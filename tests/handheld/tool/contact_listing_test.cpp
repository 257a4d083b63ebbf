#include "handheld/tool/export_items.h"

#include "common/files/error.h"
#include "common/formats/vcard/vcard.h"
#include "handheld/tool/import_files.h"
#include "handheld/tool/remove_items.h"
#include "handheld/tool/show_items.h"
#include "tests/handheld/tool/maintenance_support.h"

namespace tool::testing {
namespace {

class ContactListing : public MaintenanceTest {
 protected:
  ContactListing() {
    Init();
    Import(
        "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:with-uid\r\nN:Doe;John;;;\r\nORG:Acme\r\n"
        "TEL;TYPE=CELL:+1 555 0100\r\nEMAIL:john@example.org\r\nEND:VCARD\r\n"
        "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Roe;Jane;;;\r\nEND:VCARD\r\n");
  }
  std::string Import(const std::string& cards) {
    Capture capture;
    Session session(HandheldPath());
    ImportFiles(session, {WriteFile("in.vcf", cards)}, {}, capture.report());
    return capture.Out();
  }
  std::string Export(formats::VCardVersion version) {
    Capture capture;
    Session session(HandheldPath());
    EXPECT_EQ(ExportContacts(session, std::nullopt, version, capture.report()), Outcome::kDone);
    return capture.Out();
  }
};

TEST_F(ContactListing, ListsAContactALine) {
  Capture capture;
  Session session(HandheldPath());
  EXPECT_EQ(ShowContacts(session, false, capture.report()), Outcome::kDone);
  EXPECT_EQ(capture.Out(),
            "       OID  Name                         Company              Phone                "
            "E-mail\n"
            "         1  Doe, John                    Acme                 +1 555 0100          "
            "john@example.org\n"
            "         2  Roe, Jane                                                              "
            "\n2 contacts\n");
}

TEST_F(ContactListing, ListsJson) {
  Capture capture;
  Session session(HandheldPath());
  ShowContacts(session, true, capture.report());
  EXPECT_EQ(
      capture.Out(),
      "[\n{\"oid\":1,\"Email1Address\":\"john@example.org\",\"FirstName\":\"John\","
      "\"LastName\":\"Doe\",\"CompanyName\":\"Acme\",\"FileAs\":\"Doe, John\","
      "\"MobileTelephoneNumber\":\"+1 555 0100\"},\n"
      "{\"oid\":2,\"FirstName\":\"Jane\",\"LastName\":\"Roe\",\"FileAs\":\"Roe, Jane\"}\n]\n");
}

TEST_F(ContactListing, ExportsVCardsThatImportAsUnchanged) {
  for (const auto version : {formats::VCardVersion::k30, formats::VCardVersion::k40}) {
    const std::string exported = Export(version);
    EXPECT_NE(exported.find(":with-uid\r\n"), std::string::npos);
    EXPECT_NE(Import(exported).find("0 added, 0 changed, 2 unchanged"), std::string::npos);
  }
}

TEST_F(ContactListing, GivesAContactTheSameUidEachTime) {
  EXPECT_EQ(Export(formats::VCardVersion::k30), Export(formats::VCardVersion::k30));
}

TEST_F(ContactListing, ExportsToAFileAsAWhole) {
  Capture capture;
  Session session(HandheldPath());
  const auto file = directory_ / "out.vcf";
  EXPECT_EQ(ExportContacts(session, file, formats::VCardVersion::k30, capture.report()),
            Outcome::kDone);
  EXPECT_EQ(formats::ReadVCards(ReadFile(file)).contacts.size(), 2u);
  EXPECT_EQ(capture.Out(), file.string() + ": 2 contacts\n");
}

TEST_F(ContactListing, SaysThatAFileCannotBeWritten) {
  Capture capture;
  Session session(HandheldPath());
  EXPECT_THROW(ExportContacts(session, directory_ / "no" / "out.vcf", formats::VCardVersion::k30,
                              capture.report()),
               files::Error);
}

TEST_F(ContactListing, ExportsThroughALinkAndLeavesItALink) {
  Capture capture;
  Session session(HandheldPath());
  WriteFile("real.vcf", "before");
  std::filesystem::create_symlink(directory_ / "real.vcf", directory_ / "link.vcf");
  ExportContacts(session, directory_ / "link.vcf", formats::VCardVersion::k30, capture.report());
  EXPECT_TRUE(std::filesystem::is_symlink(directory_ / "link.vcf"));
  EXPECT_EQ(formats::ReadVCards(ReadFile(directory_ / "real.vcf")).contacts.size(), 2u);
}

TEST_F(ContactListing, RemovesItemsByIdentifier) {
  Capture capture;
  Session session(HandheldPath());
  EXPECT_EQ(RemoveItems(session, {2, 77}, capture.report()), Outcome::kPartlyDone);
  EXPECT_EQ(capture.Out(), "removed          2\n");
  EXPECT_EQ(capture.Err(), "corvane-device: 77: no such item\n");
  EXPECT_EQ(RemoveItems(session, {2}, capture.report()), Outcome::kFailed);
}

}  // namespace
}  // namespace tool::testing
