#include "agent/pim_export/download_requests.h"
#include "tests/support/download_faults.h"
#include "tests/support/sample_contacts.h"

namespace corvane::testing {
namespace {

using namespace ce;

class ExportFaults : public PimTest {
 protected:
  void SetUp() override {
    store_->Add([](IContact& contact) {
      SetText(contact, &IContact::put_FirstName, u"Ada");
      SetText(contact, &IContact::put_Email2Address, u"ada@x");
      SetText(contact, &IContact::put_Categories, u"A, B");
      EXPECT_EQ(contact.put_Birthday(kSampleBirthday), S_OK);
      SetInk(contact, kSampleInk);
    });
    while (store_->Oids().size() < 6) store_->AddNamed(u"Bob");
  }
};

TEST_F(ExportFaults, DownloadOfAllEndsHonestly) {
  EXPECT_GT(
      ExpectHonestDownload({.run = [] { return RunDownload(DownloadAllPIMRecords, Word(1)); }}),
      500u);
}

TEST_F(ExportFaults, DownloadOfChosenRecordsEndsHonestly) {
  const std::string input = ChosenRecords(3, store_->Oids());
  EXPECT_GT(
      ExpectHonestDownload({.run = [&] { return RunDownload(DownloadSpecificPIMRecords, input); }}),
      500u);
}

TEST_F(ExportFaults, DeletionTellsWhetherTheFolderIsEmpty) {
  ExpectHonestDeletion([] { return DeleteKind(1); }, [&] { return store_->Oids().size(); },
                       [&] {
                         while (store_->Oids().size() < 6) store_->AddNamed(u"again");
                       });
}

}  // namespace
}  // namespace corvane::testing
