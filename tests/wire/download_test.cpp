// Streamed downloads and the buffered delete.
#include <gtest/gtest.h>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kContacts2 = 3;

class DownloadWire : public WireTest {
 protected:
  Download All(std::uint32_t kind) { return CallDownload("DownloadAllPIMRecords", Word(kind)); }
  Download Specific(std::uint32_t kind, const std::vector<std::uint32_t>& oids) {
    std::string input = Word(kind);
    for (const std::uint32_t oid : oids) input += Word(oid);
    return CallDownload("DownloadSpecificPIMRecords", input);
  }
  static std::vector<std::size_t> Sizes(const Download& download, std::string_view name) {
    std::vector<std::size_t> sizes;
    for (const std::string& document : download.documents)
      sizes.push_back(CountElements(document, name));
    return sizes;
  }
  void ExpectOnlyTrailer(const Download& download, std::uint32_t status) {
    EXPECT_TRUE(download.documents.empty());
    EXPECT_EQ(download.finalStatus, status);
    EXPECT_EQ(download.rest, "");
  }
};
using Counts = std::vector<std::size_t>;

TEST_F(DownloadWire, SendsOnlyTheTrailerForAnEmptyFolder) {
  ExpectOnlyTrailer(All(kContacts), 0);
}

TEST_F(DownloadWire, SendsTwelveContactsAsFiveFiveAndTwo) {
  AddContacts(12);
  const Download download = All(kContacts);
  EXPECT_EQ(Sizes(download, "CONTACT"), (Counts{5, 5, 2}));
  EXPECT_EQ(download.finalStatus, 0u);
  EXPECT_EQ(download.rest, "");
}

TEST_F(DownloadWire, SendsTenContactsAsTwoFullDocumentsAndNoEmptyOne) {
  AddContacts(10);
  EXPECT_EQ(Sizes(All(kContacts), "CONTACT"), (Counts{5, 5}));
}

TEST_F(DownloadWire, WritesTheDocumentByteForByte) {
  settings_.firstOid = 0x80000001;
  AddContacts(1);
  const Download download = All(kContacts);
  ASSERT_EQ(download.documents.size(), 1u);
  EXPECT_EQ(download.documents[0],
            kDeclaration +
                "<root><CONTACT Oid=\"-2147483647\"><FIRST_NAME>Contact1</FIRST_NAME></CONTACT>"
                "</root>");
}

TEST_F(DownloadWire, NamesTheSecondFormContact2) {
  const std::vector<std::uint32_t> oids = AddContacts(1);
  const Download download = All(kContacts2);
  ASSERT_EQ(download.documents.size(), 1u);
  EXPECT_EQ(download.documents[0], kDeclaration + "<root><Contact2 Oid=\"" +
                                       std::to_string(oids[0]) +
                                       "\"><FIRST_NAME>Contact1</FIRST_NAME></Contact2></root>");
}

TEST_F(DownloadWire, RefusesAKindThatDoesNotExist) {
  ExpectOnlyTrailer(All(9), kInvalidArgument);
}

TEST_F(DownloadWire, RefusesAnInputOfTheWrongSize) {
  ExpectOnlyTrailer(CallDownload("DownloadAllPIMRecords", "abc"), kInvalidArgument);
  ExpectOnlyTrailer(CallDownload("DownloadAllPIMRecords", ""), kInvalidArgument);
  ExpectOnlyTrailer(CallDownload("DownloadAllPIMRecords", Word(1) + Word(1)), kInvalidArgument);
  ExpectOnlyTrailer(CallDownload("DownloadSpecificPIMRecords", Word(1)), kInvalidArgument);
  ExpectOnlyTrailer(CallDownload("DownloadSpecificPIMRecords", Word(1) + "abc"), kInvalidArgument);
}

TEST_F(DownloadWire, SendsSevenIdentifiersAsOneFiveAndOne) {
  const Download download = Specific(kContacts, AddContacts(7));
  EXPECT_EQ(Sizes(download, "CONTACT"), (Counts{1, 5, 1}));
  EXPECT_EQ(download.finalStatus, 0u);
  EXPECT_EQ(download.rest, "");
}

TEST_F(DownloadWire, SendsSixIdentifiersAsOneAndFive) {
  EXPECT_EQ(Sizes(Specific(kContacts, AddContacts(6)), "CONTACT"), (Counts{1, 5}));
}

TEST_F(DownloadWire, KeepsTheOrderAsked) {
  std::vector<std::uint32_t> oids = AddContacts(3);
  std::swap(oids[0], oids[2]);
  std::string all;
  for (const std::string& document : Specific(kContacts2, oids).documents) all += document;
  EXPECT_EQ(OidsOf(all), oids);
}

TEST_F(DownloadWire, IgnoresBytesBehindTheLastWholeIdentifier) {
  const std::vector<std::uint32_t> oids = AddContacts(1);
  const Download download =
      CallDownload("DownloadSpecificPIMRecords", Word(kContacts) + Word(oids[0]) + "xyz");
  EXPECT_EQ(Sizes(download, "CONTACT"), (Counts{1}));
  EXPECT_EQ(download.finalStatus, 0u);
}

TEST_F(DownloadWire, ReportsAnUnknownIdentifierAndGoesOn) {
  const std::vector<std::uint32_t> oids = AddContacts(2);
  const Download download = Specific(kContacts, {oids[0], 0xFFFFFFF0, oids[1]});
  ASSERT_EQ(download.documents.size(), 2u);
  EXPECT_EQ(Sizes(download, "CONTACT"), (Counts{1, 1}));
  EXPECT_NE(download.documents[1].find(
                "<root><Error Oid=\"-16\"><Value>-2147024809</Value></Error><CONTACT Oid=\""),
            std::string::npos)
      << download.documents[1];
  EXPECT_EQ(download.finalStatus, 0u);
}

TEST_F(DownloadWire, ReportsEveryIdentifierOfAnUnknownKind) {
  const std::vector<std::uint32_t> oids = AddContacts(2);
  const Download download = Specific(9, oids);
  EXPECT_EQ(Sizes(download, "Error"), (Counts{1, 1}));
  EXPECT_EQ(download.finalStatus, 0u);
}

TEST_F(DownloadWire, ReportsAContactAskedForAsATaskByTheInterfaceCode) {
  const std::vector<std::uint32_t> oids = AddContacts(1);
  const Download download = Specific(2, oids);
  ASSERT_EQ(download.documents.size(), 1u);
  EXPECT_NE(download.documents[0].find("<Value>-2147221496</Value>"), std::string::npos)
      << download.documents[0];
}

TEST_F(DownloadWire, ServesTheNextRequestAfterAPeerThatLeavesMidway) {
  AddContacts(50);
  {
    RawConnection connection = Connect();
    connection.Send(Record(
        Invoke{.function = "DownloadAllPIMRecords", .input = Word(1), .streamFlag = 1}.Body()));
    connection.Receive(100);
  }
  EXPECT_EQ(All(kContacts).documents.size(), 10u);
}

TEST_F(DownloadWire, DeletesAllContacts) {
  AddContacts(12);
  const BufferedReply reply =
      CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kContacts)});
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(reply.outputCount, 0u);
  ExpectOnlyTrailer(All(kContacts), 0);
}

TEST_F(DownloadWire, DeletesTheSameContactsUnderTheSecondKind) {
  AddContacts(3);
  EXPECT_EQ(CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kContacts2)}).status,
            0u);
  ExpectOnlyTrailer(All(kContacts), 0);
}

TEST_F(DownloadWire, DeletesNothingForAKindThatDoesNotExistAndSucceeds) {
  AddContacts(3);
  EXPECT_EQ(CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(9)}).status, 0u);
  EXPECT_EQ(Sizes(All(kContacts), "CONTACT"), (Counts{3}));
}

TEST_F(DownloadWire, RefusesToDeleteTheCallLog) {
  EXPECT_EQ(CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(4)}).status,
            kNotImplemented);
}

TEST_F(DownloadWire, RefusesADeleteOfTheWrongSize) {
  AddContacts(1);
  EXPECT_EQ(CallBuffered({.function = "DeleteAllPIMRecords", .input = "abc"}).status,
            kInvalidArgument);
  EXPECT_EQ(CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(1) + "x"}).status,
            kInvalidArgument);
  EXPECT_EQ(Sizes(All(kContacts), "CONTACT"), (Counts{1}));
}

TEST_F(DownloadWire, DoesNotDeleteInStreamMode) {
  AddContacts(1);
  RawConnection connection = Connect();
  connection.Send(
      Record(Invoke{.function = "DeleteAllPIMRecords", .input = Word(1), .streamFlag = 1}.Body()));
  EXPECT_EQ(connection.ReceiveToEnd(), Word(127));
  EXPECT_EQ(Sizes(All(kContacts), "CONTACT"), (Counts{1}));
}

TEST_F(DownloadWire, NeverUsesAnIdentifierTwice) {
  const std::vector<std::uint32_t> first = AddContacts(3);
  CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kContacts)});
  const std::vector<std::uint32_t> second = AddContacts(3);
  for (const std::uint32_t oid : second) EXPECT_GT(oid, first.back());
}

}  // namespace
}  // namespace corvane::testing
