#include "desktop/commands/commands_pull.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "desktop/transfer/mapping.h"
#include "tests/desktop/fixtures.h"
#include "tests/support/json_lines.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

std::string Contact(const std::string& oid, const std::string& name) {
  return "<CONTACT Oid=\"" + oid + "\"><LAST_NAME>" + name + "</LAST_NAME></CONTACT>";
}

const std::string kFirst = Contact("7", "M\xC3\xBCller");
const std::string kSecond = "<CONTACT Oid=\"-2\"><COMPANY>A &amp; B</COMPANY></CONTACT>";
const std::string kTrailer = Word(0) + Word(0);
const std::string kTwoDocuments =
    Word(0) + Counted(Document(kFirst)) + Counted(Document(kSecond)) + kTrailer;

std::string Xml(const std::string& lines) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n" + lines + "</root>\n";
}

class PullTest : public CommandTest {
 protected:
  int Run(const ConnectionOptions& connection) {
    options_.mapping = directory_ / "map.json";
    return Pull(connection, options_, console_.console);
  }
  int RunAgainst(const std::string& answer) {
    FakeAgent agent({Answer(answer)});
    return Run(agent.options());
  }
  void ToFile() { options_.output = directory_ / "out"; }

  PullOptions options_;
};

class PullXmlTest : public PullTest {
 protected:
  void SetUp() override { options_.format = RecordFormat::kXml; }
};

TEST_F(PullXmlTest, AsksForAllOfTheKindInOnePiece) {
  for (const RecordKind kind : {RecordKind::kContacts, RecordKind::kContacts2}) {
    SeenRequest seen;
    FakeAgent agent({[&](Peer& peer) {
      seen = ReadRequest(peer.ReceiveOnce().substr(4));
      peer.Send(Word(0) + kTrailer);
    }});
    options_.kind = kind;
    EXPECT_EQ(Run(agent.options()), kDone);
    agent.Join();
    EXPECT_EQ(seen.function, "DownloadAllPIMRecords");
    EXPECT_EQ(seen.input, Word(static_cast<std::uint32_t>(kind)));
    EXPECT_EQ(seen.streamed, 1U);
  }
}

TEST_F(PullXmlTest, MergesTheDocumentsUnderOneRootWithTheirBytes) {
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_EQ(out(), Xml(kFirst + "\n" + kSecond + "\n"));
  EXPECT_EQ(err(), "");
}

TEST_F(PullXmlTest, WritesAnEmptyRootForAnEmptyFolder) {
  EXPECT_EQ(RunAgainst(Word(0) + kTrailer), kDone);
  EXPECT_EQ(out(), Xml(""));
}

// Sends contacts until the desktop has had enough, or a bound that it never waits for.
FakeAgent::Script SendOnAndOn(const std::function<void(int)>& onDocument) {
  return [onDocument](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0));
    char byte = 0;
    for (int oid = 1; oid < 200000; ++oid) {
      peer.Send(Counted(Document(Contact(std::to_string(oid), std::string(500, 'x')))));
      onDocument(oid);
      if (recv(peer.socket(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0) return;
    }
    peer.Send(kTrailer);
  };
}

TEST_F(PullXmlTest, StopsForAnInterruptionWhileDataFlows) {
  ToFile();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FakeAgent agent({SendOnAndOn([&](int oid) {
    if (oid == 1000) EXPECT_EQ(write(ends[1], "", 1), 1);
  })});
  ConnectionOptions connection = agent.options();
  connection.interruptFd = ends[0];
  EXPECT_EQ(Run(connection), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: interrupted\n");
  EXPECT_TRUE(Names(directory_).empty());
  agent.Join();
  close(ends[0]);
  close(ends[1]);
}

TEST_F(PullXmlTest, TakesNoMoreThanAHandheldCouldHold) {
  ToFile();
  FakeAgent agent({SendOnAndOn([](int) {})});
  ConnectionOptions connection = agent.options();
  connection.mostDownloaded = 3 << 20;
  EXPECT_EQ(Run(connection), kPartlyDone);
  EXPECT_THAT(err(), HasSubstr("more than 3 MiB came in one answer, which no handheld holds"));
  EXPECT_LT(std::filesystem::file_size(directory_ / "out.partial"), 3U << 20);
}

TEST_F(PullXmlTest, BelievesNoOidTwice) {
  ToFile();
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + Counted(Document(kSecond + kFirst)) +
                       kTrailer),
            kPartlyDone);
  EXPECT_THAT(err(), HasSubstr("the answer makes no sense: document 2: OID 7 once more"));
  EXPECT_EQ(directory_.Read("out.partial"), Xml(kFirst + "\n" + kSecond + "\n"));
}

TEST_F(PullXmlTest, NeedsNoMapping) {
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_TRUE(Names(directory_).empty());
}

TEST_F(PullXmlTest, KeepsCompleteDocumentsWhenCutOffAtEachByte) {
  ToFile();
  const std::size_t first = 4 + Counted(Document(kFirst)).size();
  const std::size_t second = first + Counted(Document(kSecond)).size();
  std::vector<FakeAgent::Script> scripts;
  for (std::size_t length = 0; length <= kTwoDocuments.size(); ++length) {
    scripts.push_back(Answer(kTwoDocuments.substr(0, length)));
  }
  FakeAgent agent(std::move(scripts));
  for (std::size_t length = 0; length <= kTwoDocuments.size(); ++length) {
    const std::filesystem::path partial = directory_ / "out.partial";
    std::filesystem::remove(partial);
    directory_.Write("out", "before");
    const int code = Run(agent.options());
    if (length == kTwoDocuments.size()) {
      EXPECT_EQ(code, kDone);
      EXPECT_EQ(directory_.Read("out"), Xml(kFirst + "\n" + kSecond + "\n"));
      continue;
    }
    EXPECT_EQ(code, length < first ? kFailed : kPartlyDone) << length;
    EXPECT_EQ(directory_.Read("out"), "before") << length;
    EXPECT_EQ(std::filesystem::exists(partial), length >= first) << length;
    if (length >= second) {
      EXPECT_EQ(directory_.Read(partial), Xml(kFirst + "\n" + kSecond + "\n"));
    } else if (length >= first) {
      EXPECT_EQ(directory_.Read(partial), Xml(kFirst + "\n"));
    }
  }
  EXPECT_EQ(Names(directory_), std::vector<std::string>{"out"});
}

TEST_F(PullXmlTest, KeepsWhatCameBeforeAFailingTrailer) {
  ToFile();
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + Word(0) + Word(0x80070070)),
            kPartlyDone);
  EXPECT_EQ(directory_.Read("out.partial"), Xml(kFirst + "\n"));
  EXPECT_FALSE(std::filesystem::exists(directory_ / "out"));
  const std::string name = (directory_ / "out").string();
  EXPECT_EQ(err(),
            "corvane-desktop: partial: the handheld broke off: 0x80070070 (the disk is full); the "
            "1 contacts received until then are in " +
                name + ".partial, and " + name + " is as it was\n");
}

TEST_F(PullXmlTest, FailsWhenTheTrailerFailsBeforeAnything) {
  EXPECT_EQ(RunAgainst(Word(0) + Word(0) + Word(0x80004005)), kFailed);
  EXPECT_EQ(out(), "");
  EXPECT_EQ(err(), "corvane-desktop: the handheld broke off: 0x80004005 (failed)\n");
}

TEST_F(PullXmlTest, RefusesACountBeyondTheBound) {
  EXPECT_EQ(RunAgainst(Word(0) + Word(256 * 1024 * 1024 + 1) + "x"), kFailed);
  EXPECT_THAT(err(), HasSubstr("makes no sense: a document of 268435457 bytes"));
}

TEST_F(PullXmlTest, TakesNoMemoryForBytesThatDoNotCome) {
  EXPECT_EQ(RunAgainst(Word(0) + Word(256 * 1024 * 1024) + "x"), kFailed);
  EXPECT_THAT(err(), HasSubstr("ended the connection midway, after 9 bytes"));
}

TEST_F(PullXmlTest, NamesTheDocumentThatIsNoXml) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + Counted("<root>") + kTrailer),
            kPartlyDone);
  EXPECT_THAT(err(), HasSubstr("the answer makes no sense: document 2: line 1: "));
  EXPECT_EQ(out(), Xml(kFirst + "\n"));
}

TEST_F(PullXmlTest, RefusesAContactWithoutAnOid) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document("<CONTACT/>")) + kTrailer), kFailed);
  EXPECT_THAT(err(), HasSubstr("document 1: a contact without an OID"));
}

TEST_F(PullXmlTest, SaysWhatIsNoContact) {
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document("<TASK Oid=\"1\"/>" + kFirst)) + kTrailer),
            kDone);
  EXPECT_EQ(err(), "left out: TASK is no contact\n");
  EXPECT_EQ(out(), Xml(kFirst + "\n"));
}

TEST_F(PullXmlTest, ReportsErrorRecordsAndThePartOfARecordBesideThem) {
  options_.oids = {7, 8};
  const std::string document = Document(kFirst + Contact("8", "Half") +
                                        "<Error Oid=\"8\"><Value>-2147024809</Value></Error>");
  EXPECT_EQ(RunAgainst(Word(0) + Counted(document) + kTrailer), kPartlyDone);
  EXPECT_EQ(out(), Xml(kFirst + "\n"));
  EXPECT_EQ(err(), "OID 8: 0x80070057 (invalid argument, or no such item)\n");
}

TEST_F(PullXmlTest, AsksForIdentifiersInAsManyRequestsAsTheyNeed) {
  std::vector<SeenRequest> seen;
  const FakeAgent::Script script = [&](Peer& peer) {
    seen.push_back(ReadRequest(peer.ReceiveCounted()));
    peer.Send(Word(0) + kTrailer);
  };
  FakeAgent agent({script, script, script});
  std::string words;
  for (Oid oid = 1; oid <= 459; ++oid) {
    options_.oids.push_back(oid);
    words += Word(oid);
  }
  EXPECT_EQ(Run(agent.options()), kDone);
  agent.Join();
  ASSERT_EQ(seen.size(), 3U);
  std::string asked;
  for (const SeenRequest& each : seen) {
    EXPECT_EQ(each.function, "DownloadSpecificPIMRecords");
    EXPECT_EQ(each.input.substr(0, 4), Word(1));
    asked += each.input.substr(4);
  }
  EXPECT_EQ(asked, words);
  EXPECT_EQ(seen[0].input.size(), 4U + 4U * 229U);
}

TEST_F(PullXmlTest, WritesNothingWhenInterrupted) {
  ToFile();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FakeAgent agent({[&](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0) + Counted(Document(kFirst)));
    ASSERT_EQ(write(ends[1], "", 1), 1);
    peer.AwaitEnd();
  }});
  ConnectionOptions connection = agent.options();
  connection.interruptFd = ends[0];
  EXPECT_EQ(Run(connection), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: interrupted\n");
  EXPECT_TRUE(Names(directory_).empty());
  agent.Join();
  close(ends[0]);
  close(ends[1]);
}

TEST_F(PullXmlTest, SaysWhenNobodyListensAndLeavesTheFile) {
  ToFile();
  directory_.Write("out", "before");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("is corvane running there?"));
  EXPECT_EQ(directory_.Read("out"), "before");
}

TEST_F(PullXmlTest, SaysHowManyContactsAreInTheFile) {
  ToFile();
  const std::string name = (directory_ / "out").string();
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_EQ(out(), name + ": 2 contacts\n");
  EXPECT_EQ(err(), "");
  console_.out.str("");
  options_.overwrite = true;
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + kTrailer), kDone);
  EXPECT_EQ(out(), name + ": 1 contact\n");
}

TEST_F(PullXmlTest, LeavesAFileThatHoldsMore) {
  ToFile();
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  const std::string held = directory_.Read("out");
  console_.out.str("");
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + kTrailer), kFailed);
  EXPECT_EQ(out(), "");
  EXPECT_EQ(err(), "corvane-desktop: " + (directory_ / "out").string() +
                       " holds 2 contacts and the handheld has sent 1: it stays as it is; "
                       "--overwrite replaces it\n");
  EXPECT_EQ(directory_.Read("out"), held);
  EXPECT_EQ(RunAgainst(Word(0) + kTrailer), kFailed);
  EXPECT_EQ(directory_.Read("out"), held);
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
}

TEST_F(PullTest, RemembersNothingOfAPullThatItDidNotWrite) {
  ToFile();
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  const std::string mapping = directory_.Read("map.json");
  EXPECT_EQ(RunAgainst(Word(0) + kTrailer), kFailed);
  EXPECT_EQ(directory_.Read("map.json"), mapping);
}

TEST_F(PullXmlTest, SaysNothingOfAFileThatIsOnlyThereInPart) {
  ToFile();
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst))), kPartlyDone);
  EXPECT_EQ(out(), "");
}

TEST_F(PullXmlTest, SaysWhenTheOutputTakesNothing) {
  console_.out.setstate(std::ios::badbit);
  EXPECT_EQ(RunAgainst(kTwoDocuments), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: cannot write to the standard output\n");
}

TEST_F(PullTest, WritesJsonWithPropertyNamesAndUnsignedOids) {
  options_.format = RecordFormat::kJson;
  const std::string record =
      "<CONTACT Oid=\"-2\"><LAST_NAME>Lee</LAST_NAME><CATEGORIES><CATEGORY><Name>A</Name>"
      "</CATEGORY></CATEGORIES><BIRTHDAY>19700228T000000</BIRTHDAY></CONTACT>";
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst + record)) + kTrailer), kDone);
  EXPECT_EQ(out(),
            "{\"oid\":7,\"LastName\":\"M\xC3\xBCller\"}\n"
            "{\"oid\":4294967294,\"LastName\":\"Lee\",\"categories\":[\"A\"],"
            "\"Birthday\":\"1970-02-28\"}\n");
  EXPECT_EQ(corvane::testing::JsonLines(out()).size(), 2U);
}

TEST_F(PullTest, WritesNoLineOfJsonForNothing) {
  options_.format = RecordFormat::kJson;
  EXPECT_EQ(RunAgainst(Word(0) + kTrailer), kDone);
  EXPECT_EQ(out(), "");
}

TEST_F(PullTest, GivesEachContactAUidThatStays) {
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  const std::string first = out();
  std::string uid;
  {
    const Mapping mapping(directory_ / "map.json");
    ASSERT_EQ(mapping.items().size(), 2U);
    ASSERT_NE(mapping.FindOid(0xFFFFFFFE), nullptr);
    uid = mapping.FindOid(7)->uid;
  }
  const formats::VCardFile file = formats::ReadVCards(first);
  ASSERT_EQ(file.contacts.size(), 2U);
  EXPECT_EQ(file.contacts[0].contact.uid, uid);
  EXPECT_NE(file.contacts[0].contact.uid, file.contacts[1].contact.uid);

  console_.out.str("");
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_EQ(out(), first);
}

TEST_F(PullTest, KeepsTheUidThatAContactWasPushedWith) {
  {
    Mapping mapping(directory_ / "map.json");
    mapping.Put({7, "contact", "my-own-uid", "", "old"});
    mapping.Save();
  }
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_THAT(out(), HasSubstr("my-own-uid"));
}

TEST_F(PullTest, ForgetsContactsThatAreGoneAfterAWholeDownloadOnly) {
  {
    Mapping mapping(directory_ / "map.json");
    mapping.Put({99, "contact", "gone", "", "h"});
    mapping.Put({98, "TASK", "", "c", "h"});
    mapping.Save();
  }
  options_.oids = {7};
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + kTrailer), kDone);
  EXPECT_NE(Mapping(directory_ / "map.json").FindOid(99), nullptr);
  options_.oids.clear();
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst))), kPartlyDone);
  EXPECT_NE(Mapping(directory_ / "map.json").FindOid(99), nullptr);
  EXPECT_EQ(RunAgainst(Word(0) + Counted(Document(kFirst)) + kTrailer), kDone);
  EXPECT_EQ(Mapping(directory_ / "map.json").FindOid(99), nullptr);
  EXPECT_NE(Mapping(directory_ / "map.json").FindOid(98), nullptr);
}

TEST_F(PullTest, DoesNothingWithADamagedMapping) {
  ToFile();
  directory_.Write("map.json", "{");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_THAT(err(), HasSubstr("cannot be understood"));
  EXPECT_EQ(directory_.Read("map.json"), "{");
  EXPECT_FALSE(std::filesystem::exists(directory_ / "out"));
}

TEST_F(PullTest, WritesTheVCardVersionAskedFor) {
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_THAT(out(), HasSubstr("VERSION:3.0\r\n"));
  options_.version = formats::VCardVersion::k40;
  console_.out.str("");
  EXPECT_EQ(RunAgainst(kTwoDocuments), kDone);
  EXPECT_THAT(out(), HasSubstr("VERSION:4.0\r\n"));
}

}  // namespace
}  // namespace desktop::testing
