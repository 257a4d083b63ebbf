// The conversion of notes, asked for over the wire.
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <iterator>

#include "tests/support/ink_note_bytes.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kText = 1;
constexpr std::uint32_t kRich = 2;
constexpr std::uint32_t kUnicode = 17;
constexpr std::uint32_t kInkNote = 67586;
constexpr std::uint32_t kUnknownExtension = 0x800A0141;
constexpr std::uint32_t kPathTooLong = 0x800A017C;
constexpr std::uint32_t kControlFailed = 0x80004005;
constexpr std::uint32_t kInvalidHandle = 6;

class InkWire : public WireTest {
 protected:
  std::filesystem::path FilePath(const std::string& name) {
    return handheld().path() / "files" / name;
  }
  void MakeFile(const std::string& name, const std::string& content) {
    std::ofstream(FilePath(name), std::ios::binary) << content;
  }
  std::string Content(const std::string& name) {
    std::ifstream file(FilePath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool HasFile(const std::string& name) { return std::filesystem::exists(FilePath(name)); }
  // Before the agent is started.
  void WithoutRichInk() {
    ce::host::Handheld::Open(handheld().path(), "a test")->Set(u"RichInk", ce::DWORD{0});
  }

  BufferedReply From(std::uint32_t format, const std::string& path) {
    return CallBuffered({.function = "CVCeConvertFromFile", .input = Word(format) + Utf16(path)});
  }
  BufferedReply To(std::uint32_t format, const std::string& path, const std::string& data) {
    const std::string bytes = Utf16(path);
    return CallBuffered(
        {.function = "CVCeConvertToFile",
         .input = Word(format) + Word(static_cast<std::uint32_t>(bytes.size())) + bytes + data});
  }
};

void ExpectOutput(const BufferedReply& reply, const std::string& output) {
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(reply.statusAgain, 0u);
  EXPECT_EQ(reply.outputCount, output.size());
  EXPECT_EQ(reply.totalLength, 16 + output.size());
  EXPECT_EQ(reply.output, output);
}

void ExpectNothing(const BufferedReply& reply, std::uint32_t status) {
  EXPECT_EQ(reply.status, status);
  EXPECT_EQ(reply.statusAgain, status);
  EXPECT_EQ(reply.outputCount, 0u);
  EXPECT_EQ(reply.totalLength, 16u);
  EXPECT_EQ(reply.output, "");
}

TEST_F(InkWire, SpeaksTheseBytes) {
  MakeFile("n.txt", "A\r\nB");
  RawConnection connection = Connect();
  connection.Send(Bytes({92, 0, 0, 0}) +                                  // the body's length
                  Bytes({69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +          // invoke
                  Bytes({2, 0, 0, 0, 'c', 0, 0, 0, 0, 0, 0, 0}) +         // library
                  Bytes({20, 0, 0, 0}) + Utf16("CVCeConvertFromFile") +   // function
                  Bytes({0, 0}) +                                         // its terminator
                  Bytes({16, 0, 0, 0, 17, 0, 0, 0}) + Utf16("\\n.txt") +  // input
                  Bytes({0, 0, 0, 0}));                                   // stream flag
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), Bytes({24, 0, 0, 0, 0, 0, 0, 0}) +  // total length, reserved
                                           Bytes({0, 0, 0, 0, 0, 0, 0, 0}) +  // status, twice
                                           Bytes({8, 0, 0, 0}) +              // output count
                                           Bytes({'A', 0, 13, 0, 10, 0, 'B', 0}));
}

TEST_F(InkWire, ReadsADevicesNote) {
  MakeFile("note.pwi", InkNote({"Milk", "don" + Bytes({0x99, 0x80}) + "t"}));
  ExpectOutput(From(kUnicode, "\\note.pwi"), Utf16("Milk\r\ndon") + Bytes({0x19, 0x20, 't', 0}));
}

TEST_F(InkWire, WritesANoteAndReadsItAgain) {
  // Hiragana, a han character, a pair of surrogates.
  const std::string text =
      Utf16("Milk\r\n\t") + Bytes({0x42, 0x30, 0x2D, 0x4E, 0x3D, 0xD8, 0x00, 0xDE});
  ExpectNothing(To(kUnicode, "\\note.pwi", text), 0);
  EXPECT_EQ(Content("note.pwi").substr(0, 14), InkHeader());
  ExpectOutput(From(kUnicode, "\\note.pwi"), text);
  StopAgent(SIGTERM);
  ExpectOutput(From(kUnicode, "\\note.pwi"), text);
}

TEST_F(InkWire, ConvertsRichTextBothWays) {
  ExpectNothing(To(kRich, "note.pwi", "{\\rtf1\\ansi one\\par tw\\'f6\\par}"), 0);
  ExpectOutput(From(kText, "note.pwi"), "one\r\ntw\xF6");
  const BufferedReply rich = From(kRich, "note.pwi");
  EXPECT_EQ(rich.output.substr(0, 6), "{\\rtf1");
  ExpectNothing(To(kRich, "again.txt", rich.output), 0);
  EXPECT_EQ(Content("again.txt"), "one\r\ntw\xF6");
}

TEST_F(InkWire, HandsANoteOnAsItIs) {
  const std::string note = InkNote({"Milk"});
  ExpectNothing(To(kInkNote, "note.pwi", note), 0);
  ExpectOutput(From(kText, "note.pwi"), "Milk");
}

TEST_F(InkWire, WritesPlainTextInTheHandheldsCodePage) {
  settings_.language = 0x0411;
  ExpectNothing(To(kUnicode, "note.txt", Bytes({0xE5, 0x65, 0x2C, 0x67})), 0);
  EXPECT_EQ(Content("note.txt"), "\x93\xFA\x96\x7B");
}

TEST_F(InkWire, MindsTheCaseOfAnExtension) {
  MakeFile("note.pwi", InkNote({"Milk"}));
  ExpectNothing(From(kUnicode, "\\note.PWI"), kUnknownExtension);
  ExpectOutput(From(kText, "\\NoTe.pwi"), "Milk");
  ExpectNothing(To(kText, "\\other.TXT", "Milk"), kUnknownExtension);
  EXPECT_FALSE(HasFile("other.TXT"));
}

TEST_F(InkWire, MakesAnEmptyFileWithoutData) {
  MakeFile("old.pwi", "old");
  ExpectNothing(To(kText, "old.pwi", ""), 0);
  ExpectNothing(To(kText, "new.txt", ""), 0);
  EXPECT_EQ(Content("old.pwi"), "");
  EXPECT_TRUE(HasFile("new.txt"));
  ExpectOutput(From(kUnicode, "old.pwi"), "");
}

TEST_F(InkWire, DoesNotNoticeAFolderThatIsNotThereUnlessItWrites) {
  ExpectNothing(To(kText, "\\no\\note.txt", ""), 0);
  EXPECT_FALSE(HasFile("no"));
  ExpectNothing(To(kText, "\\no\\note.txt", "Milk"), kInvalidHandle);
  ExpectNothing(From(kText, "\\no\\note.txt"), kInvalidHandle);
}

TEST_F(InkWire, RefusesAPathThatRunsPastTheInput) {
  for (const std::uint32_t length : {17u, 0xFFFFFFFFu}) {
    ExpectNothing(CallBuffered({.function = "CVCeConvertToFile",
                                .input = Word(kText) + Word(length) + Utf16("note.txt")}),
                  kPathTooLong);
  }
  EXPECT_FALSE(HasFile("note.txt"));
}

TEST_F(InkWire, RefusesAPathThatIsTooLong) {
  const std::string longest = "\\" + std::string(254, 'n') + ".txt";
  ExpectNothing(From(kText, longest), kInvalidHandle);  // of 259: only a name too long for a file
  ExpectNothing(From(kText, longest + "x"), kInvalidArgument);
  ExpectNothing(To(kText, std::string(400, 'n') + ".txt", ""), kInvalidArgument);
}

TEST_F(InkWire, RefusesAShortInput) {
  for (const std::size_t size : {0u, 5u}) {
    ExpectNothing(
        CallBuffered({.function = "CVCeConvertFromFile", .input = std::string(size, 'x')}),
        kInvalidArgument);
  }
  for (const std::size_t size : {0u, 9u}) {
    ExpectNothing(CallBuffered({.function = "CVCeConvertToFile", .input = std::string(size, 'x')}),
                  kInvalidArgument);
  }
}

TEST_F(InkWire, NeverLeadsOutOfTheHandheld) {
  std::ofstream(handheld().path() / "outside.txt") << "secret";
  for (const std::string path :
       {"\\..\\outside.txt", "..\\outside.txt", "/../outside.txt", "\\a\\..\\..\\outside.txt"}) {
    ExpectNothing(From(kText, path), kInvalidHandle);
    ExpectNothing(To(kText, path, "Milk"), kInvalidHandle);
    ExpectNothing(To(kText, path, ""), 0);
  }
  std::ifstream outside(handheld().path() / "outside.txt");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(outside), {}), "secret");
}

TEST_F(InkWire, AnswersWhatTheControlRefuses) {
  MakeFile("note.pwi", "no note");
  ExpectNothing(From(kText, "note.pwi"), kControlFailed);
  MakeFile("note.txt", "text");
  ExpectNothing(From(99, "note.txt"), kControlFailed);
  ExpectNothing(To(kRich, "note.txt", "no rich text"), kControlFailed);
  EXPECT_EQ(Content("note.txt"), "text");
}

TEST_F(InkWire, TellsThatItHasTheControl) {
  ExpectOutput(CallBuffered({.function = "CVCeHasRichInk"}), Word(1));
}

TEST_F(InkWire, LacksTheControlOnAHandheldWithoutIt) {
  WithoutRichInk();
  MakeFile("note.txt", "text");
  ExpectOutput(CallBuffered({.function = "CVCeHasRichInk"}), Word(0));
  ExpectNothing(From(kText, "note.txt"), kNotImplemented);
  ExpectNothing(To(kText, "new.txt", ""), kNotImplemented);
  EXPECT_FALSE(HasFile("new.txt"));
}

TEST_F(InkWire, IsNoStreamedRequest) {
  for (const char* name : {"CVCeConvertFromFile", "CVCeConvertToFile", "CVCeHasRichInk"}) {
    RawConnection connection = Connect();
    connection.Send(
        Record(Invoke{.function = name, .input = std::string(16, '\0'), .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveToEnd(), Word(127)) << name;
  }
}

}  // namespace
}  // namespace corvane::testing
