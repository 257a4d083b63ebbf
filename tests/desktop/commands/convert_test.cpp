#include "desktop/commands/commands_convert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "common/text/unicode.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

std::string ToFileInput(std::uint32_t format, const std::string& path, const std::string& note) {
  const std::string bytes = text::ToUtf16Le(text::FromUtf8Lossy(path));
  return Word(format) + Word(static_cast<std::uint32_t>(bytes.size())) + bytes + note;
}

const std::string kInk = ReplyRecord(0, Word(1));
const std::string kDoneReply = ReplyRecord(0);

class ConvertTest : public CommandTest {
 protected:
  // Answers one request with each; an empty one ends the connection without an answer.
  int RunAgainst(const std::vector<std::string>& replies) {
    seen_.clear();
    return CommandTest::RunAgainst(replies, [this](const ConnectionOptions& connection) {
      return Convert(connection, options_, console_.console);
    });
  }
  void File(const std::string& name, const std::string& bytes) {
    directory_.Write(name, bytes);
    options_.file = directory_ / name;
  }

  ConvertOptions options_;
};

TEST_F(ConvertTest, GoesThroughAFileOnTheHandheldAndEmptiesIt) {
  File("note.RTF", "{\\rtf1 Hi}");
  options_.format = NoteFormat::kUnicode;
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, text::ToUtf16Le(u"Hi")), kDoneReply}),
            kDone);
  EXPECT_EQ(out(), text::ToUtf16Le(u"Hi"));
  EXPECT_EQ(err(), "");
  ASSERT_EQ(seen_.size(), 4U);
  EXPECT_EQ(seen_[0].function, "CVCeHasRichInk");
  EXPECT_EQ(seen_[1].function, "CVCeConvertToFile");
  EXPECT_EQ(seen_[1].input, ToFileInput(2, "\\~note.pwi", "{\\rtf1 Hi}"));
  EXPECT_EQ(seen_[2].function, "CVCeConvertFromFile");
  EXPECT_EQ(seen_[2].input, Word(17) + text::ToUtf16Le(u"\\~note.pwi"));
  EXPECT_EQ(seen_[3].function, "CVCeConvertToFile");
  EXPECT_EQ(seen_[3].input, ToFileInput(1, "\\~note.pwi", ""));
}

TEST_F(ConvertTest, WritesToAFile) {
  File("note.txt", "Hi");
  options_.format = NoteFormat::kInk;
  options_.output = directory_ / "out.pwi";
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, "ink"), kDoneReply}), kDone);
  EXPECT_EQ(directory_.Read("out.pwi"), "ink");
  EXPECT_EQ(out(), (directory_ / "out.pwi").string() + ": 3 bytes\n");
}

TEST_F(ConvertTest, LeavesAByteOrderMarkBehind) {
  File("note.unicode", "\xFF\xFE" + text::ToUtf16Le(u"Hi"));
  options_.format = NoteFormat::kText;
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, "Hi"), kDoneReply}), kDone);
  EXPECT_EQ(seen_.at(1).input, ToFileInput(17, "\\~note.pwi", text::ToUtf16Le(u"Hi")));
}

TEST_F(ConvertTest, SendsAsMuchAsARequestHasRoomForAndNoMore) {
  const std::size_t room = NoteRoom(kScratchNote);
  EXPECT_EQ(room, 912U);
  options_.format = NoteFormat::kText;
  File("note.txt", std::string(room, 'x'));
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, "x"), kDoneReply}), kDone);
  File("note.txt", std::string(room + 1, 'x'));
  EXPECT_EQ(Convert(NobodyThere(), options_, console_.console), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: " + options_.file->string() +
                       " is too large: a note travels to the handheld in one request, which has "
                       "room for 912 bytes of it, and it has 913; nothing has been sent\n");
}

TEST_F(ConvertTest, NeedsAKnownNameOrAFormat) {
  File("note.doc", "Hi");
  options_.format = NoteFormat::kRichText;
  EXPECT_EQ(Convert(NobodyThere(), options_, console_.console), kFailed);
  EXPECT_THAT(err(), HasSubstr("note.doc: a note's name ends in .pwi, .rtf, .txt or .unicode"));
  options_.from = NoteFormat::kText;
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, "{}"), kDoneReply}), kDone);
  EXPECT_EQ(seen_.at(1).input, ToFileInput(1, "\\~note.pwi", "Hi"));
}

TEST_F(ConvertTest, EmptiesTheFileAlsoWhenTheNoteDoesNotComeBack) {
  File("note.txt", "Hi");
  options_.format = NoteFormat::kRichText;
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, "", kDoneReply}), kFailed);
  ASSERT_EQ(seen_.size(), 4U);
  EXPECT_EQ(seen_[3].input, ToFileInput(1, "\\~note.pwi", ""));
  EXPECT_EQ(out(), "");
}

TEST_F(ConvertTest, EmptiesTheFileAlsoWhenInterrupted) {
  File("note.txt", "Hi");
  options_.format = NoteFormat::kRichText;
  int interruption[2];
  ASSERT_EQ(pipe(interruption), 0);
  SeenRequest last;
  FakeAgent agent({[](Peer& peer) {
                     peer.ReceiveCounted();
                     peer.Send(kInk);
                   },
                   [&](Peer& peer) {
                     peer.ReceiveCounted();
                     EXPECT_EQ(write(interruption[1], "x", 1), 1);
                     peer.AwaitEnd();
                   },
                   [&](Peer& peer) {
                     last = ReadRequest(peer.ReceiveCounted());
                     peer.Send(kDoneReply);
                   }});
  ConnectionOptions connection = agent.options();
  connection.interruptFd = interruption[0];
  EXPECT_EQ(Convert(connection, options_, console_.console), kFailed);
  agent.Join();
  EXPECT_EQ(last.input, ToFileInput(1, "\\~note.pwi", ""));
  EXPECT_EQ(err(), "corvane-desktop: interrupted\n");
  close(interruption[0]);
  close(interruption[1]);
}

TEST_F(ConvertTest, WarnsOfATextInUtf8) {
  options_.format = NoteFormat::kRichText;
  const std::vector<std::string> replies = {kInk, kDoneReply, ReplyRecord(0, "{}"), kDoneReply};
  File("note.txt", "\xE4 Hi");
  EXPECT_EQ(RunAgainst(replies), kDone);
  EXPECT_EQ(err(), "");
  File("note.txt", "\xC3\xA4 Hi");
  EXPECT_EQ(RunAgainst(replies), kDone);
  EXPECT_EQ(err(), options_.file->string() +
                       ": seems to be UTF-8; the handheld takes it for text in its own 8-bit "
                       "characters\n");
}

TEST_F(ConvertTest, SaysThatTheFileCouldNotBeEmptied) {
  File("note.txt", "Hi");
  options_.format = NoteFormat::kRichText;
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(0, "{}"), ReplyRecord(5)}), kPartlyDone);
  EXPECT_EQ(out(), "{}");
  EXPECT_EQ(err(),
            "corvane-desktop: the note still lies in \\~note.pwi on the handheld: the handheld did "
            "not take the note \\~note.pwi: 5 (access denied)\n");
}

TEST_F(ConvertTest, SaysThatTheHandheldConvertsNothing) {
  File("note.txt", "Hi");
  options_.format = NoteFormat::kRichText;
  EXPECT_EQ(RunAgainst({ReplyRecord(0, Word(0))}), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: the handheld has no RichInk control to convert notes\n");
}

TEST_F(ConvertTest, SaysThatTheNoteIsDamaged) {
  File("note.pwi", "no ink");
  options_.format = NoteFormat::kRichText;
  EXPECT_EQ(RunAgainst({kInk, ReplyRecord(0x80004005), kDoneReply}), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld cannot convert the note, which is damaged: 0x8000"));
}

TEST_F(ConvertTest, FetchesANoteOfTheHandheld) {
  options_.devicePath = "/My Notes/a.pwi";
  options_.format = NoteFormat::kText;
  EXPECT_EQ(RunAgainst({kInk, ReplyRecord(0, "Hi")}), kDone);
  EXPECT_EQ(out(), "Hi");
  EXPECT_EQ(seen_.at(1).function, "CVCeConvertFromFile");
  EXPECT_EQ(seen_.at(1).input, Word(1) + text::ToUtf16Le(u"\\My Notes\\a.pwi"));
  EXPECT_EQ(RunAgainst({kInk, ReplyRecord(6)}), kFailed);
  EXPECT_THAT(err(), HasSubstr("there is no file /My Notes/a.pwi on the handheld, or it cannot"));
  EXPECT_EQ(RunAgainst({kInk, ReplyRecord(0x80004005)}), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld cannot convert /My Notes/a.pwi, which is damaged"));
}

TEST_F(ConvertTest, PutsAFileOnTheHandheld) {
  File("note.txt", "Hi");
  options_.toDevice = "\\a.pwi";
  EXPECT_EQ(RunAgainst({kInk, kDoneReply}), kDone);
  EXPECT_EQ(seen_.at(1).input, ToFileInput(1, "\\a.pwi", "Hi"));
  EXPECT_EQ(out(), options_.file->string() + ": is \\a.pwi on the handheld now\n");
  EXPECT_EQ(RunAgainst({kInk, ReplyRecord(3)}), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld cannot make the file \\a.pwi: 3 (path not found)"));
}

TEST_F(ConvertTest, LooksWhetherAnEmptyFileHasBeenMade) {
  File("note.txt", "");
  options_.toDevice = "\\No\\a.pwi";
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, ReplyRecord(6)}), kFailed);
  EXPECT_THAT(err(), HasSubstr("there is no file \\No\\a.pwi on the handheld"));
  EXPECT_EQ(RunAgainst({kInk, kDoneReply, kDoneReply}), kDone);
}

TEST_F(ConvertTest, TakesNamesOfTheHandheldInSmallLettersAlone) {
  File("note.txt", "Hi");
  for (const char* name : {"\\a.PWI", "\\a.doc", "\\a", "\\a.b\\c"}) {
    options_.toDevice = name;
    EXPECT_EQ(Convert(NobodyThere(), options_, console_.console), kFailed);
    EXPECT_THAT(err(), HasSubstr(std::string(name) + ": a note's name on the handheld ends in"));
  }
  options_ = {};
  options_.devicePath = "\\b.TXT";
  options_.format = NoteFormat::kText;
  EXPECT_EQ(Convert(NobodyThere(), options_, console_.console), kFailed);
  EXPECT_THAT(err(), HasSubstr("\\b.TXT: a note's name on the handheld ends in"));
}

TEST(NoteRoom, ShrinksWithThePathDownToNothing) {
  EXPECT_EQ(NoteRoom("\\a.pwi"), 920U);
  EXPECT_EQ(NoteRoom(std::string(259, 'a')), 414U);
}

}  // namespace
}  // namespace desktop::testing
