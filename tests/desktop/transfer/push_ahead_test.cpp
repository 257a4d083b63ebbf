// What a push has on the way at once, and what it knows of it when that ends early.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_session.h"
#include "tests/desktop/push_fixture.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

std::string Cards(int count) {
  std::string cards;
  for (int i = 0; i < count; ++i) cards += Card("u" + std::to_string(i), "N" + std::to_string(i));
  return cards;
}

bool HasMore(const Peer& peer) {
  char byte = 0;
  return recv(peer.socket(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

class PushAhead : public PushTest {
 protected:
  PushAhead() { options_.policy.chunk = 1; }

  // Begins an upload.
  static void Begin(Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0));
  }
  int RunPatientlyAgainst(FakeAgent::Script script) {
    FakeAgent agent({std::move(script)});
    ConnectionOptions connection = agent.options();
    connection.timeout = std::chrono::seconds(5);
    return Run(connection);
  }
};

TEST_F(PushAhead, SendsFurtherChunksBeforeTheFirstIsAnswered) {
  Input(Cards(3));
  EXPECT_EQ(RunPatientlyAgainst([](Peer& peer) {
              Begin(peer);
              for (int i = 0; i < 3; ++i) peer.ReceiveCounted();
              peer.Send(Word(11) + Word(0) + Word(0) + Word(0x80004005) + Word(13) + Word(0));
              peer.AwaitEnd();
            }),
            kPartlyDone);
  EXPECT_EQ(out(), place(1) + "N0: added with OID 11\n" + place(7) +
                       "N1: failed: 0x80004005 (failed)\n" + place(13) + "N2: added with OID 13\n");
}

TEST_F(PushAhead, SendsNoMoreThanMayBeOnTheWay) {
  Input(Cards(4));
  options_.policy.ahead = 2;
  bool more = false;
  EXPECT_EQ(RunPatientlyAgainst([&](Peer& peer) {
              Begin(peer);
              peer.ReceiveCounted();
              peer.ReceiveCounted();
              more = HasMore(peer);
              for (Oid oid = 11; oid < 13; ++oid) {
                peer.Send(Word(oid) + Word(0));
                peer.ReceiveCounted();
                more = more || HasMore(peer);
              }
              peer.Send(Word(13) + Word(0) + Word(14) + Word(0));
              peer.AwaitEnd();
            }),
            kDone);
  EXPECT_FALSE(more);
}

TEST_F(PushAhead, KeepsTheOrderAmongThoseThatAreNotSent) {
  Input(Card("u1", "Lee") + Card("u2", "Ray") + Card("u3", "Kim"));
  ASSERT_EQ(PushTo(store_), kDone);
  Input(Card("u4", "New") + Card("u1", "Lee") + Card("u2", "Rayner") + Card("u3", "Kim") +
        Card("u5", "Last"));
  for (const std::size_t chunk : {1U, 2U, 20U}) {
    const std::string map = directory_.Read("map.json");
    Store store;
    store.items = store_.items;
    options_.policy.chunk = chunk;
    EXPECT_EQ(PushTo(store), kDone);
    EXPECT_EQ(out(), place(1) + "New: added with OID 104\n" + place(7) +
                         "Lee: unchanged (OID 101)\n" + place(13) + "Rayner: changed (OID 102)\n" +
                         place(19) + "Kim: unchanged (OID 103)\n" + place(25) +
                         "Last: added with OID 105\n");
    directory_.Write("map.json", map);
  }
}

// As if the process ended at any of its words: what is on the disk then is all that the next one
// has.
TEST_F(PushAhead, TellsOfNothingThatTheNextOneWouldNotRecognise) {
  Input(Cards(7));
  options_.policy.chunk = 2;
  const NoticeSink notices = [](const auto&...) {};
  const auto records = ReadPushFile(options_.files[0], options_.zone, notices);
  FakeAgent agent({store_.Serve()});
  std::size_t told = 0;
  {
    Mapping mapping(*options_.mapping);
    PushSession session(agent.options(), options_.policy, mapping, [&](const PushResult& result) {
      ASSERT_EQ(result.outcome, PushOutcome::kAdded);
      ++told;
      directory_.Write("left.json.journal", directory_.Read("map.json.journal"));
      const Mapping left(directory_ / "left.json");
      const MappedItem* item = left.FindUid("contact", result.record->uid);
      ASSERT_NE(item, nullptr) << told;
      EXPECT_EQ(item->oid, result.oid);
      std::filesystem::remove(directory_ / "left.json");
    });
    session.Run(records);
  }
  EXPECT_EQ(told, 7U);
}

TEST_F(PushAhead, HasAllOnTheDiskThatItMayHaveAddedWhenItIsKilled) {
  Input(Cards(3));
  std::string journal;
  EXPECT_EQ(RunPatientlyAgainst([&](Peer& peer) {
              Begin(peer);
              peer.ReceiveCounted();
              journal = directory_.Read("map.json.journal");
            }),
            kFailed);
  EXPECT_THAT(err(), HasSubstr("3 unanswered\n"));
  directory_.Write("left.json.journal", journal);
  EXPECT_EQ(Mapping(directory_ / "left.json").expected().size(), 3U);
}

TEST_F(PushAhead, TakesTheAnswersThatCameBeforeTheConnectionBroke) {
  Input(Cards(400));
  options_.policy.ahead = 400;
  EXPECT_EQ(RunPatientlyAgainst([](Peer& peer) {
              Begin(peer);
              for (int i = 0; i < 5; ++i) peer.ReceiveCounted();
              std::string answers;
              for (Oid oid = 11; oid < 16; ++oid) answers += Word(oid) + Word(0);
              peer.Send(answers);
              peer.Close();
            }),
            kPartlyDone);
  EXPECT_THAT(err(), HasSubstr("5 added, "));
  EXPECT_EQ(Mapping(directory_ / "map.json").items().size(), 5U);
}

TEST_F(PushAhead, BringsWhatIsOnTheWayToItsEndBeforeItStopsForAnInterruption) {
  Input(Cards(3));
  options_.policy = {.chunk = 2, .ahead = 0};
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FakeAgent agent({[&](Peer& peer) {
    Begin(peer);
    peer.ReceiveCounted();
    ASSERT_EQ(write(ends[1], "", 1), 1);
    peer.Send(Word(11) + Word(0) + Word(12) + Word(0));
    peer.AwaitEnd();
  }});
  ConnectionOptions connection = agent.options();
  connection.interruptFd = ends[0];
  EXPECT_EQ(Run(connection), kPartlyDone);
  EXPECT_EQ(err(), "corvane-desktop: interrupted\n2 added, 1 not sent\n");
  EXPECT_EQ(Mapping(directory_ / "map.json").items().size(), 2U);
  agent.Join();
  close(ends[0]);
  close(ends[1]);
}

// The OIDs that the mapping knows are other items' there, in another order.
TEST_F(PushAhead, OverwritesNothingOnAHandheldThatWasEmptied) {
  Input(Card("u1", "Lee") + Card("u2", "Ray"));
  ASSERT_EQ(PushTo(store_), kDone);
  Input(Card("u2", "Ray") + Card("u1", "Lee"));
  Store emptied;
  EXPECT_EQ(PushTo(emptied), kDone);
  ASSERT_EQ(emptied.items.size(), 2U);
  EXPECT_THAT(emptied.items[101], HasSubstr("Ray"));
  EXPECT_THAT(emptied.items[102], HasSubstr("Lee"));
  EXPECT_EQ(err(), "2 added anew\n");
}

TEST_F(PushAhead, BelievesNoHandheldThatAnswersEachRecordWithTheSameOid) {
  Input(Cards(3));
  EXPECT_EQ(RunPatientlyAgainst([](Peer& peer) {
              Begin(peer);
              for (int i = 0; i < 3; ++i) {
                peer.ReceiveCounted();
                peer.Send(Word(7) + Word(0));
              }
              peer.AwaitEnd();
            }),
            kPartlyDone);
  EXPECT_THAT(out(), HasSubstr("N0: added with OID 7\n"));
  EXPECT_THAT(out(), HasSubstr("N2: sent, but the handheld answered with the OID of another item"));
  EXPECT_EQ(err(), "1 added, 2 wrongly answered\n");
  const Mapping mapping(directory_ / "map.json");
  EXPECT_EQ(mapping.FindOid(7)->uid, "u0");
  EXPECT_EQ(mapping.expected().size(), 2U);
}

}  // namespace
}  // namespace desktop::testing
