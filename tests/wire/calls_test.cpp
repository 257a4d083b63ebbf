// The call log, asked for over the wire.
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>

#include "tests/support/call_filler.h"
#include "tests/support/ink_note_bytes.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

using ce::host::StoredCall;
using Counts = std::vector<std::size_t>;

constexpr std::uint32_t kCalls = 4;

class CallsWire : public WireTest {
 protected:
  // All before the agent is started.
  template <typename Fill>
  void Filling(Fill fill) {
    const auto opened = ce::host::Handheld::Open(handheld().path(), "a test");
    CallFiller filler(*opened);
    fill(filler);
  }
  void AddMany(int count) {
    Filling([count](CallFiller& filler) { filler.AddMany(count); });
  }
  void Lacking(const char16_t* setting) {
    ce::host::Handheld::Open(handheld().path(), "a test")->Set(setting, ce::DWORD{0});
  }
  void MakeFile(const std::string& name, const std::string& content) {
    std::ofstream(handheld().path() / "files" / name, std::ios::binary) << content;
  }

  Download Calls() { return CallDownload("DownloadAllPIMRecords", Word(kCalls)); }
  static Counts Sizes(const Download& download) {
    Counts sizes;
    for (const std::string& document : download.documents) {
      sizes.push_back(CountElements(document, "Call"));
    }
    return sizes;
  }
  static void ExpectOnlyTrailer(const Download& download, std::uint32_t status) {
    EXPECT_TRUE(download.documents.empty());
    EXPECT_EQ(download.finalStatus, status);
    EXPECT_EQ(download.rest, "");
  }
};

TEST_F(CallsWire, SpeaksTheseBytes) {
  Filling([](CallFiller& filler) { filler.Add(SampleCall()); });
  RawConnection connection = Connect();
  connection.Send(Bytes({84, 0, 0, 0}) +                                   // the body's length
                  Bytes({69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +           // invoke
                  Bytes({2, 0, 0, 0, 'c', 0, 0, 0, 0, 0, 0, 0}) +          // library
                  Bytes({22, 0, 0, 0}) + Utf16("DownloadAllPIMRecords") +  // function
                  Bytes({0, 0}) +                                          // its terminator
                  Bytes({4, 0, 0, 0, 4, 0, 0, 0}) +                        // input: the kind
                  Bytes({1, 0, 0, 0}));                                    // stream flag
  const std::string document =
      "<?XML version=\"1.0\" encoding=\"UTF-8\"?><root><Call><Number>+4912345</Number>"
      "<Name>Ada Lovelace</Name><Type>m</Type><Outgoing>FALSE</Outgoing>"
      "<Connected>TRUE</Connected><Roam>FALSE</Roam><Ended>TRUE</Ended><CID>2</CID>"
      "<Start>20080215T134501</Start><End>20080215T134601</End></Call></root>";
  EXPECT_EQ(connection.ReceiveToEnd(), Bytes({0, 0, 0, 0}) +  // a known name
                                           Word(static_cast<std::uint32_t>(document.size())) +
                                           document + Bytes({0, 0, 0, 0}) +  // no more
                                           Bytes({0, 0, 0, 0}));             // status
}

TEST_F(CallsWire, SendsOnlyTheTrailerForAnEmptyLog) {
  ExpectOnlyTrailer(Calls(), 0);
}

TEST_F(CallsWire, SendsTheFirstAloneAndFortyToADocumentBehindIt) {
  AddMany(42);
  const Download download = Calls();
  EXPECT_EQ(Sizes(download), (Counts{1, 40, 1}));
  EXPECT_EQ(download.finalStatus, 0u);
  EXPECT_EQ(download.rest, "");
}

TEST_F(CallsWire, SendsTheNewestFirst) {
  AddMany(3);
  std::string all;
  for (const std::string& document : Calls().documents) all += document;
  const std::size_t first = all.find("<Number>1<");
  const std::size_t second = all.find("<Number>2<");
  EXPECT_LT(first, second);
  EXPECT_LT(second, all.find("<Number>3<"));
}

TEST_F(CallsWire, SendsALongLogWhole) {
  AddMany(10'000);
  const Download download = Calls();
  std::size_t calls = 0;
  for (const std::size_t size : Sizes(download)) calls += size;
  EXPECT_EQ(calls, 10'000u);
  EXPECT_EQ(download.documents.size(), 251u);
  EXPECT_EQ(download.finalStatus, 0u);
}

TEST_F(CallsWire, SendsTheTextOfANote) {
  MakeFile("call.pwi", InkNote({"Call back", "don" + Bytes({0x99, 0x80}) + "t forget"}));
  Filling([](CallFiller& filler) {
    StoredCall call = SampleCall();
    call.note = u"\\call.pwi";
    filler.Add(call);
  });
  const Download download = Calls();
  ASSERT_EQ(download.documents.size(), 1u);
  EXPECT_NE(download.documents[0].find("<Note>Call back\r\ndon\u2019t forget</Note>"),
            std::string::npos)
      << download.documents[0];
}

TEST_F(CallsWire, EndsWithTheStatusOfANoteThatCannotBeConverted) {
  Filling([](CallFiller& filler) {
    filler.AddMany(2);
    StoredCall oldest = SampleCall();
    oldest.startTime -= 9 * kMinute;
    oldest.note = u"\\call.doc";
    filler.Add(oldest);
  });
  const Download download = Calls();
  EXPECT_EQ(Sizes(download), (Counts{1}));
  EXPECT_EQ(download.finalStatus, 0x800A0141u);
}

TEST_F(CallsWire, ReadsNoNoteFromOutsideTheHandheld) {
  std::ofstream(handheld().path() / "outside.txt") << "secret";
  Filling([](CallFiller& filler) {
    StoredCall call = SampleCall();
    call.note = u"\\..\\outside.txt";
    filler.Add(call);
  });
  const Download download = Calls();
  EXPECT_EQ(download.finalStatus, 0u);
  ASSERT_EQ(download.documents.size(), 1u);
  EXPECT_EQ(download.documents[0].find("secret"), std::string::npos);
}

TEST_F(CallsWire, AnswersNotImplementedWithoutATelephone) {
  AddMany(1);
  Lacking(u"Phone");
  ExpectOnlyTrailer(Calls(), kNotImplemented);
}

TEST_F(CallsWire, CannotBeDeleted) {
  AddMany(3);
  const BufferedReply reply =
      CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kCalls)});
  EXPECT_EQ(reply.status, kNotImplemented);
  EXPECT_EQ(reply.statusAgain, kNotImplemented);
  EXPECT_EQ(reply.outputCount, 0u);
  EXPECT_EQ(Sizes(Calls()), (Counts{1, 2}));
}

TEST_F(CallsWire, StaysOverARestart) {
  AddMany(3);
  const Download before = Calls();
  StopAgent(SIGKILL);
  EXPECT_EQ(Calls().documents, before.documents);
}

TEST_F(CallsWire, WritesItsSteps) {
  AddMany(2);
  handheld().SetAgentValue(u"Logging", 1);
  Calls();
  // The request's last line comes behind the connection's end; an agent that ends waits for it.
  {
    RawConnection quit = Connect();
    quit.Send(Record(Word(kQuit)));
    quit.FinishSending();
    quit.ReceiveToEnd();
  }
  Wake();
  EXPECT_EQ(WaitForAgent(), 0);
  std::ifstream file(handheld().path() / "files" / "CorvaneLog.txt");
  const std::string log{std::istreambuf_iterator<char>(file), {}};
  const std::size_t begin = log.find(" : DownloadALLCallLog\r\n");
  ASSERT_NE(begin, std::string::npos);
  EXPECT_LT(log.find(" : DownloadAllPIMRecords\r\n"), begin);
  EXPECT_NE(log.find(" : Calling StreamXMLToDesktop\r\n", begin), std::string::npos);
  EXPECT_NE(log.find(" : Exit DownloadAllPIMRecords hr = 0x00000000\r\n", begin),
            std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
