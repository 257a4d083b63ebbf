#include <gmock/gmock.h>

#include "agent/pim_export/download_requests.h"
#include "handheld/base/fault.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class DownloadSpecific : public PimTest {
 protected:
  static DownloadAnswer Run(DWORD kind, const std::vector<LONG>& oids, std::string rest = {}) {
    return RunDownload(DownloadSpecificPIMRecords, ChosenRecords(kind, oids) + rest);
  }
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    return testing::Sizes(answer, {" Oid="});
  }
  std::vector<LONG> AddContacts(int count) {
    std::vector<LONG> oids;
    for (int index = 1; index <= count; ++index) {
      oids.push_back(store_->AddNamed(Wide(std::to_string(index))));
    }
    return oids;
  }
  static std::string Error(LONG oid, HRESULT status) {
    return "<Error Oid=\"" + std::to_string(oid) + "\"><Value>" + std::to_string(status) +
           "</Value></Error>";
  }
};

TEST_F(DownloadSpecific, SendsTheFirstRecordAloneAndThenFiveToADocument) {
  const DownloadAnswer answer = Run(1, AddContacts(7));
  EXPECT_THAT(Sizes(answer), ElementsAre(1, 5, 1));
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadSpecific, SendsNoEmptyDocumentAtTheEnd) {
  const std::vector<LONG> oids = AddContacts(11);
  EXPECT_THAT(Sizes(Run(1, oids)), ElementsAre(1, 5, 5));
  EXPECT_THAT(Sizes(Run(1, {oids[0]})), ElementsAre(1));
}

TEST_F(DownloadSpecific, FollowsTheOrderOfTheIdentifiers) {
  const std::vector<LONG> oids = AddContacts(2);
  const DownloadAnswer answer = Run(3, {oids[1], oids[0], oids[1]});
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[0], HasSubstr("<Contact2 Oid=\"2\"><FIRST_NAME>2</FIRST_NAME>"));
  EXPECT_LT(answer.documents[1].find("Oid=\"1\""), answer.documents[1].find("Oid=\"2\""));
}

TEST_F(DownloadSpecific, IgnoresTrailingBytes) {
  EXPECT_THAT(Sizes(Run(1, AddContacts(1), "abc")), ElementsAre(1));
}

TEST_F(DownloadSpecific, AnswersAnUnknownIdentifierWithAnErrorAndGoesOn) {
  const LONG oid = AddContacts(1)[0];
  const DownloadAnswer answer = Run(1, {999, oid});
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_EQ(Body(answer.documents[0]), "<root>" + Error(999, E_INVALIDARG) + "</root>");
  EXPECT_THAT(answer.documents[1], HasSubstr("<FIRST_NAME>1</FIRST_NAME>"));
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadSpecific, WritesLargeIdentifiersAsNegativeNumbers) {
  EXPECT_EQ(Body(Run(1, {-7}).documents.at(0)), "<root>" + Error(-7, E_INVALIDARG) + "</root>");
}

TEST_F(DownloadSpecific, AnswersEveryIdentifierOfAnUnknownKindWithAnError) {
  const LONG oid = AddContacts(1)[0];
  const DownloadAnswer answer = Run(9, {oid, oid});
  ASSERT_EQ(answer.documents.size(), 2u);
  for (const std::string& document : answer.documents) {
    EXPECT_EQ(Body(document), "<root>" + Error(oid, E_INVALIDARG) + "</root>");
  }
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadSpecific, AnswersAnItemWithoutTheKindsInterfaceWithAnError) {
  const LONG oid = AddContacts(1)[0];
  const std::string expected = "<root>" + Error(oid, static_cast<HRESULT>(0x80040008)) + "</root>";
  std::size_t answered = 0;
  // One of the interfaces that a download asks for is the item's.
  for (std::uint64_t n = 1;; ++n) {
    const auto plan = FaultPlan::FailNthCall("QueryInterface", n, 0x80004002);
    const DownloadAnswer answer = Run(1, {oid});
    if (!plan.fired()) break;
    if (answer.documents.size() == 1 && Body(answer.documents[0]) == expected) ++answered;
  }
  EXPECT_EQ(answered, 1u);
}

TEST_F(DownloadSpecific, AnswersAContactAskedForAsAnotherKindWithAnError) {
  const LONG oid = AddContacts(1)[0];
  for (const DWORD kind : {0u, 2u}) {
    EXPECT_EQ(Body(Run(kind, {oid}).documents.at(0)),
              "<root>" + Error(oid, static_cast<HRESULT>(0x80040008)) + "</root>");
  }
}

TEST_F(DownloadSpecific, KeepsABegunRecordBesideItsError) {
  const LONG oid = AddContacts(1)[0];
  const auto plan = FaultPlan::FailCalls("IContact::get_LastName", 0x80004005);
  EXPECT_EQ(Body(Run(1, {oid}).documents.at(0)),
            "<root><CONTACT Oid=\"1\"><FIRST_NAME>1</FIRST_NAME></CONTACT>" + Error(oid, E_FAIL) +
                "</root>");
}

TEST_F(DownloadSpecific, RefusesAShortInputInTheTrailer) {
  for (const std::size_t size : {0u, 4u, 7u}) {
    const DownloadAnswer answer =
        RunDownload(DownloadSpecificPIMRecords, Words({1, 1}).substr(0, size));
    ExpectOnlyTrailer(answer, E_INVALIDARG);
  }
}

TEST_F(DownloadSpecific, RefusesToRunWithoutAStream) {
  const std::string input = Words({1, 1});
  EXPECT_EQ(DownloadSpecificPIMRecords(8, reinterpret_cast<const BYTE*>(input.data()), nullptr,
                                       nullptr, nullptr),
            E_INVALIDARG);
}

TEST_F(DownloadSpecific, DoesNotInitialiseCom) {
  const auto plan = FaultPlan::FailCalls("CoInitializeEx", 0x80004005);
  EXPECT_EQ(Run(1, AddContacts(1)).status, S_OK);
  EXPECT_FALSE(plan.fired());
}

TEST_F(DownloadSpecific, AnswersAFailedLogonInTheTrailer) {
  const auto plan = FaultPlan::FailCalls("IPOutlookApp::Logon", 0x80004005);
  ExpectOnlyTrailer(Run(1, {1}), E_FAIL);
}

TEST_F(DownloadSpecific, EndsWithoutADocumentForTheError) {
  const auto plan = FaultPlan::FailCalls("CoCreateInstance", 0x80004005);
  ExpectOnlyTrailer(Run(1, {1}), E_FAIL);
}

TEST_F(DownloadSpecific, AnswersTheLastDocumentOnABrokenConnection) {
  std::vector<LONG> oids = AddContacts(6);
  for (const std::size_t count : {6u, 5u, 1u}) {
    oids.resize(count);
    const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
    EXPECT_EQ(Run(1, oids).returned, static_cast<HRESULT>(WSAECONNRESET)) << count;
  }
}

TEST_F(DownloadSpecific, LogsOffInTheEnd) {
  const auto plan = FaultPlan::CountOnly("IPOutlookApp::Logoff");
  Run(1, {1});
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(DownloadSpecific, TakesAsManyIdentifiersAsAnInputHolds) {
  const LONG oid = AddContacts(1)[0];
  const DownloadAnswer answer = Run(1, std::vector<LONG>(255, oid));
  EXPECT_EQ(answer.documents.size(), 52u);
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(DownloadSpecific, LogsItsSteps) {
  SwitchLogOn();
  Run(1, {5});
  EXPECT_THAT(LogMessages(),
              ElementsAre("DownloadSpecificPIMRecords cbInput = 8", "After Logon hr = 0",
                          "After CreateXMLObjects hr = 0", "Calling GetItemFromOid",
                          "GetItemFromOid returned -2147024809", "AddErrorToXML",
                          "Exit AddErrorToXML", "Calling StreamXMLToDesktop"));
}

TEST_F(DownloadSpecific, LogsTheExportersStatus) {
  const LONG oid = AddContacts(1)[0];
  SwitchLogOn();
  Run(1, {oid});
  EXPECT_THAT(LogMessages(), ::testing::Contains("AddContactToXML returned 0"));
}

}  // namespace
}  // namespace corvane::testing
