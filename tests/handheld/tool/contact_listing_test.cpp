#include "handheld/tool/export_records.h"

#include "common/files/error.h"
#include "common/formats/vcard/vcard.h"
#include "handheld/tool/remove_records.h"
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
  void Import(const std::string& cards) { MaintenanceTest::Import({WriteFile("in.vcf", cards)}); }
  Outcome Export(const ExportOptions& options) {
    return Run([&](Session& session, const Report& report) {
      return ExportRecords<formats::Contact>(session, options, report);
    });
  }
};

TEST_F(ContactListing, ListsAContactALine) {
  EXPECT_EQ(Shown<formats::Contact>(false),
            "       OID  Name                         Company              Phone                "
            "E-mail\n"
            "         1  Doe, John                    Acme                 +1 555 0100          "
            "john@example.org\n"
            "         2  Roe, Jane                                                              "
            "\n2 contacts\n");
}

TEST_F(ContactListing, ListsJson) {
  EXPECT_EQ(Shown<formats::Contact>(),
            "{\"oid\":1,\"Email1Address\":\"john@example.org\",\"FirstName\":\"John\","
            "\"LastName\":\"Doe\",\"CompanyName\":\"Acme\",\"FileAs\":\"Doe, John\","
            "\"MobileTelephoneNumber\":\"+1 555 0100\"}\n"
            "{\"oid\":2,\"FirstName\":\"Jane\",\"LastName\":\"Roe\",\"FileAs\":\"Roe, Jane\"}\n");
}

TEST_F(ContactListing, ExportsVCardsThatImportAsUnchanged) {
  for (const auto version : {formats::VCardVersion::k30, formats::VCardVersion::k40}) {
    EXPECT_EQ(Export({.vcardVersion = version}), Outcome::kDone);
    EXPECT_NE(out_.find(":with-uid\r\n"), std::string::npos);
    Import(out_);
    EXPECT_NE(out_.find("0 added, 0 changed, 2 unchanged"), std::string::npos);
  }
}

TEST_F(ContactListing, GivesAContactTheSameUidEachTime) {
  Export({});
  const std::string first = out_;
  Export({});
  EXPECT_EQ(out_, first);
}

TEST_F(ContactListing, ExportsToAFileAsAWhole) {
  const auto file = directory_ / "out.vcf";
  EXPECT_EQ(Export({.file = file}), Outcome::kDone);
  EXPECT_EQ(formats::ReadVCards(ReadFile(file)).contacts.size(), 2u);
  EXPECT_EQ(out_, file.string() + ": 2 contacts\n");
}

TEST_F(ContactListing, SaysThatAFileCannotBeWritten) {
  EXPECT_THROW(Export({.file = directory_ / "no" / "out.vcf"}), files::Error);
}

TEST_F(ContactListing, ExportsThroughALinkAndLeavesItALink) {
  WriteFile("real.vcf", "before");
  std::filesystem::create_symlink(directory_ / "real.vcf", directory_ / "link.vcf");
  Export({.file = directory_ / "link.vcf"});
  EXPECT_TRUE(std::filesystem::is_symlink(directory_ / "link.vcf"));
  EXPECT_EQ(formats::ReadVCards(ReadFile(directory_ / "real.vcf")).contacts.size(), 2u);
}

TEST_F(ContactListing, RemovesItemsByIdentifier) {
  const auto remove = [&](const std::vector<std::uint32_t>& oids) {
    return Run(
        [&](Session& session, const Report& report) { return RemoveItems(session, oids, report); });
  };
  EXPECT_EQ(remove({2, 77}), Outcome::kPartlyDone);
  EXPECT_EQ(out_, "removed          2\n");
  EXPECT_EQ(err_, "corvane-device: 77: no such item\n");
  EXPECT_EQ(remove({2}), Outcome::kFailed);
}

}  // namespace
}  // namespace tool::testing
