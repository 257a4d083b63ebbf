#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/commands/commands_delete.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

class DeleteMessagesTest : public ::testing::Test {
 protected:
  int Run(const ConnectionOptions& connection, bool yes) {
    DeleteOptions options;
    options.kind = RecordKind::kMessages;
    options.yes = yes;
    return Delete(connection, options, console_.console);
  }
  int RunAgainst(std::uint32_t status, bool yes = true) {
    FakeAgent agent({[this, status](Peer& peer) {
      seen_ = ReadRequest(peer.ReceiveCounted());
      peer.Send(ReplyRecord(status));
    }});
    const int code = Run(agent.options(), yes);
    agent.Join();
    return code;
  }
  std::string err() const { return console_.err.str(); }

  TestConsole console_;
  SeenRequest seen_;
};

TEST_F(DeleteMessagesTest, AsksTheAgentForKindFive) {
  EXPECT_EQ(RunAgainst(0), kDone);
  EXPECT_EQ(seen_.function, "DeleteAllPIMRecords");
  EXPECT_EQ(seen_.input, Word(5));
  EXPECT_EQ(seen_.streamed, 0U);
  EXPECT_EQ(console_.out.str(), "all text messages deleted, but for drafts and deleted items\n");
}

TEST_F(DeleteMessagesTest, NeedsYesWithoutATerminal) {
  EXPECT_EQ(Run(NobodyThere(), false), kUsage);
  EXPECT_EQ(err(), "corvane-desktop: deleting all text messages needs --yes\n");
}

TEST_F(DeleteMessagesTest, AsksOnATerminal) {
  console_.console.inIsTerminal = true;
  console_.in.str("n\n");
  EXPECT_EQ(Run(NobodyThere(), false), kFailed);
  EXPECT_THAT(err(), HasSubstr("Delete all text messages on the handheld at "));
  EXPECT_THAT(err(), HasSubstr("nothing deleted\n"));
  console_.in.str("y\n");
  EXPECT_EQ(RunAgainst(0, false), kDone);
}

TEST_F(DeleteMessagesTest, SaysWhyItFailed) {
  EXPECT_EQ(RunAgainst(0x80004005), kFailed);
  EXPECT_EQ(err(),
            "corvane-desktop: not all text messages could be deleted: 0x80004005 (failed)\n");
}

TEST_F(DeleteMessagesTest, SaysThatThereIsNoMessageStore) {
  EXPECT_EQ(RunAgainst(0x80004001), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld has no store of text messages"));
  EXPECT_EQ(console_.out.str(), "");
}

}  // namespace
}  // namespace desktop::testing
