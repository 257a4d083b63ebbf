#include <gtest/gtest.h>

#include <algorithm>

#include "agent/pim_export/delete_request.h"
#include "agent/pim_export/download_requests.h"
#include "handheld/base/com_object.h"
#include "tests/support/fault_runs.h"
#include "tests/support/pim_requests.h"
#include "tests/support/sample_contacts.h"

namespace corvane::testing {
namespace {

using namespace ce;

// Their failure leaves a positive last error, which is no failure by its sign: what they were to
// make is missing from the document.
bool PassesTheSignTest(const std::string& call) {
  return call.starts_with("SysAllocString") || call.starts_with("GetDateFormat");
}

bool IsOfTheConnection(const std::string& call) {
  return call == "send" || call == "closesocket";
}

class ExportFaults : public PimTest {
 protected:
  void SetUp() override {
    oids_.push_back(store_->Add([](IContact& contact) {
      SetText(contact, &IContact::put_FirstName, u"Ada");
      SetText(contact, &IContact::put_Email2Address, u"ada@x");
      SetText(contact, &IContact::put_Categories, u"A, B");
      EXPECT_EQ(contact.put_Birthday(kSampleBirthday), S_OK);
      SetInk(contact, kSampleInk);
    }));
    for (int index = 2; index <= 6; ++index) oids_.push_back(store_->AddNamed(u"Bob"));
  }

  // A document either is one of the whole download's, or lacks what failed under a positive code.
  static void ExpectHonest(const DownloadAnswer& answer, const DownloadAnswer& whole,
                           const std::string& call) {
    if (IsOfTheConnection(call)) return;
    ASSERT_TRUE(answer.complete) << "every download ends with its trailer";
    EXPECT_EQ(answer.status, answer.returned);
    ASSERT_LE(answer.documents.size(), whole.documents.size());
    if (answer.status >= 0) {
      EXPECT_EQ(answer.documents.size(), whole.documents.size());
    }
    if (PassesTheSignTest(call)) return;
    for (std::size_t index = 0; index < answer.documents.size(); ++index) {
      const std::string& document = answer.documents[index];
      if (Occurrences(document, "<Error ") == 0) {
        EXPECT_EQ(Body(document), Body(whole.documents[index]))
            << "only a declaration may be missing";
      }
    }
  }

  template <typename Run>
  void ExpectHonestWhicheverCallFails(Run run) {
    const DownloadAnswer whole = run();
    ASSERT_TRUE(whole.complete);
    ASSERT_EQ(whole.status, S_OK);
    const LONG objects = host::LiveComObjects();
    const auto calls = FailEachCall(ERROR_NOT_ENOUGH_MEMORY, run,
                                    [&](const DownloadAnswer& answer, const std::string& call) {
                                      ExpectHonest(answer, whole, call);
                                      EXPECT_EQ(host::LiveComObjects(), objects);
                                      if (call.empty()) {
                                        EXPECT_EQ(answer.documents, whole.documents);
                                      }
                                    });
    EXPECT_GT(calls, 500u);
  }

  std::vector<LONG> oids_;
};

TEST_F(ExportFaults, DownloadOfAllEndsHonestly) {
  ExpectHonestWhicheverCallFails([] { return RunDownload(DownloadAllPIMRecords, Word(1)); });
}

TEST_F(ExportFaults, DownloadOfChosenRecordsEndsHonestly) {
  std::string input = Word(3);
  for (const LONG oid : oids_) input += Word(static_cast<DWORD>(oid));
  ExpectHonestWhicheverCallFails([&] { return RunDownload(DownloadSpecificPIMRecords, input); });
}

TEST_F(ExportFaults, DeletionTellsWhetherTheFolderIsEmpty) {
  const LONG objects = host::LiveComObjects();
  const auto run = [] {
    const std::string input = Word(1);
    return DeleteAllPIMRecords(4, reinterpret_cast<const BYTE*>(input.data()), nullptr, nullptr,
                               nullptr);
  };
  const auto calls =
      FailEachCall(ERROR_DISK_FULL, run, [&](HRESULT status, const std::string& call) {
        const bool empty = store_->Oids().empty();
        if (status >= 0) {
          EXPECT_TRUE(empty);
        }
        if (call.empty()) {
          EXPECT_EQ(status, S_OK);
        }
        EXPECT_EQ(host::LiveComObjects(), objects);
        for (std::size_t left = store_->Oids().size(); left < 6; ++left) store_->AddNamed(u"again");
      });
  EXPECT_GT(calls, 20u);
}

}  // namespace
}  // namespace corvane::testing
