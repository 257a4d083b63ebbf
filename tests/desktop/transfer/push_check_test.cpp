// What a push learns from the handheld before it sends anything.
#include "desktop/transfer/push_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/commands/commands_pull.h"
#include "desktop/transfer/mapping.h"
#include "desktop/wire/download.h"
#include "tests/desktop/push_fixture.h"

namespace desktop::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kConflict[] =
    "conflict: changed on the handheld since, or another handheld (OID 101); pull first, or push "
    "with --force\n";
constexpr char kStranger[] = "<CONTACT><LAST_NAME>Stranger</LAST_NAME></CONTACT>";

class PushCheck : public PushTest {
 protected:
  void PushFirst(const std::string& cards) {
    Input(cards);
    ASSERT_EQ(PushTo(store_), kDone);
    store_.chunks.clear();
  }
};

TEST_F(PushCheck, DoesNotOverwriteAnotherPersonUnderTheSameOid) {
  PushFirst(Card("u1", "Lee") + Card("u2", "Ray"));
  store_.items[101] = kStranger;
  Input(Card("u1", "Leeds") + Card("u2", "Rayner"));
  EXPECT_EQ(PushTo(store_), kPartlyDone);
  EXPECT_EQ(out(), place(1) + "Leeds: " + kConflict + place(7) + "Rayner: changed (OID 102)\n");
  EXPECT_THAT(err(), HasSubstr("1 changed, 1 conflict\n"));
  EXPECT_EQ(store_.items[101], kStranger);
}

TEST_F(PushCheck, TellsAConflictOfWhatHasNotChangedHere) {
  PushFirst(Card("u1", "Lee"));
  store_.items[101] = kStranger;
  EXPECT_EQ(PushTo(store_), kFailed);
  EXPECT_EQ(out(), place(1) + "Lee: " + kConflict);
  EXPECT_TRUE(store_.chunks.empty());
}

TEST_F(PushCheck, OverwritesWithForceWithoutLooking) {
  PushFirst(Card("u1", "Lee"));
  store_.items[101] = kStranger;
  store_.requests.clear();
  options_.policy.force = true;
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.requests, Not(Contains("DownloadSpecificPIMRecords")));
  EXPECT_THAT(store_.items[101], HasSubstr("<LAST_NAME>Lee</LAST_NAME>"));
}

TEST_F(PushCheck, AddsAnewWhatIsGoneThoughItHasNotChangedHere) {
  PushFirst(Card("u1", "Lee"));
  store_.items.clear();
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Lee: was gone, added anew with OID 102\n");
}

TEST_F(PushCheck, TakesAHandheldThatAlreadyHasTheChangeForNoConflict) {
  PushFirst(Card("u1", "Lee"));
  Input(Card("u1", "Leeds"));
  const FakeAgent::Script serve = store_.Serve();
  FakeAgent agent({serve, store_.Serve(0)});
  EXPECT_EQ(Run(agent.options()), kFailed);
  EXPECT_THAT(out(), HasSubstr("it may have been done (OID 101)"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Leeds: changed (OID 101)\n");
}

TEST_F(PushCheck, PassesWhereAnOldMappingDoesNotRememberTheState) {
  PushFirst(Card("u1", "Lee"));
  std::string map = directory_.Read("map.json");
  const std::size_t at = map.find("\"state\"");
  ASSERT_NE(at, std::string::npos);
  directory_.Write("map.json", map.replace(at, 7, "\"other\""));
  store_.items[101] = kStranger;
  Input(Card("u1", "Leeds"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Leeds: changed (OID 101)\n");
}

TEST_F(PushCheck, AsksInBatchesThatARequestHasRoomFor) {
  std::string cards;
  const std::size_t count = OidsPerRequest() + 1;
  for (std::size_t i = 0; i < count; ++i) cards += Card("u" + std::to_string(i), "N");
  PushFirst(cards);
  store_.requests.clear();
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(store_.requests, std::vector<std::string>(2, "DownloadSpecificPIMRecords"));
  EXPECT_EQ(err(), std::to_string(count) + " unchanged\n");
}

TEST_F(PushCheck, SendsNothingWhenTheHandheldDoesNotTellAboutEach) {
  PushFirst(Card("u1", "Lee"));
  Input(Card("u1", "Leeds"));
  for (const std::string& answer : {Word(0) + Word(0x80004005), Word(0) + Word(0), std::string()}) {
    EXPECT_EQ(RunAgainst([&](Peer& peer) {
                peer.ReceiveCounted();
                peer.Send(Word(0) + answer);
              }),
              kFailed);
    EXPECT_EQ(out(), place(1) + "Leeds: not sent\n");
  }
}

TEST_F(PushCheck, SendsARecordThatNamesItsItemAsItIs) {
  PushFirst(Card("u1", "Lee"));
  store_.items[101] = kStranger;
  store_.requests.clear();
  options_.files = {directory_ / "in.xml"};
  Input("<root><CONTACT Oid='101'><COMPANY>D</COMPANY></CONTACT></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(store_.requests, std::vector<std::string>{"UploadPIMRecords"});
}

TEST_F(PushCheck, AddsNothingTwiceWhenTheAnswersOfTheFirstTimeWereLost) {
  Input(Card("u1", "Lee") + Card("", "Ray"));
  EXPECT_EQ(PushTo(store_, 1), kPartlyDone);
  ASSERT_EQ(store_.items.size(), 2U);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.requests, Contains("DownloadAllPIMRecords"));
  EXPECT_EQ(out(),
            place(1) + "Lee: unchanged (OID 101)\n" + place(7) + "Ray: unchanged (OID 102)\n");
  EXPECT_EQ(store_.items.size(), 2U);
  EXPECT_TRUE(Mapping(directory_ / "map.json").expected().empty());
}

TEST_F(PushCheck, AddsWhatNeverArrivedThoughItWasExpected) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_, 0), kFailed);
  store_.items = {{7, kStranger}};
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Lee: added with OID 102\n");
}

TEST_F(PushCheck, AdoptsNoItemThatIsMappedAlready) {
  PushFirst(Card("u1", "Lee"));
  Input(Card("u2", "Lee"));
  EXPECT_EQ(PushTo(store_, 0), kFailed);
  store_.items.erase(102);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Lee: added with OID 103\n");
}

TEST_F(PushCheck, AdoptsWhatWasAddedAnewAndNotAnswered) {
  PushFirst(Card("u1", "Lee"));
  store_.items.clear();
  FakeAgent agent({store_.Serve(), store_.Serve(0)});
  EXPECT_EQ(Run(agent.options()), kFailed);
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Lee: unchanged (OID 102)\n");
  EXPECT_EQ(store_.items.size(), 1U);
}

// As if the process ended after it had sent: only the journal is there.
TEST_F(PushCheck, HasWhatItIsAboutToAddOnTheDiskBeforeItSends) {
  Input(Card("u1", "Lee"));
  std::string journal;
  EXPECT_EQ(RunAgainst([&](Peer& peer) {
              peer.ReceiveCounted();
              peer.Send(Word(0));
              peer.ReceiveCounted();
              journal = directory_.Read("map.json.journal");
            }),
            kFailed);
  std::filesystem::remove(directory_ / "map.json");
  directory_.Write("map.json.journal", journal);
  const Mapping left(directory_ / "map.json");
  ASSERT_EQ(left.expected().size(), 1U);
  EXPECT_EQ(left.expected().begin()->second.uid, "u1");
  EXPECT_TRUE(left.items().empty());
}

TEST_F(PushCheck, AddsNothingTwiceWhenAPullCameBetween) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_, 0), kFailed);
  FakeAgent agent({store_.Serve()});
  PullOptions pull;
  pull.mapping = options_.mapping;
  EXPECT_EQ(Pull(agent.options(), pull, console_.console), kDone);
  EXPECT_THAT(out(), HasSubstr("UID:u1\r\n"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(out(), place(1) + "Lee: unchanged (OID 101)\n");
}

TEST_F(PushCheck, GoesOnExpectingWhenItCannotLook) {
  Input(Card("u1", "Lee"));
  EXPECT_EQ(PushTo(store_, 0), kFailed);
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_EQ(Mapping(directory_ / "map.json").expected().size(), 1U);
}

TEST_F(PushCheck, SaysOnceAFieldWhatTheWireDoesNotCarry) {
  Input(
      "BEGIN:VCARD\nVERSION:3.0\nN:Le\x01"
      "e\x02;;;;\nUID:u\nTEL;TYPE=CAR:1\n"
      "TEL;TYPE=X-ASSISTANT:2\nX-OFFICE:o\nCATEGORIES:a\x03,b\x04\nNOTE:fine\\nnote\nEND:VCARD\n");
  EXPECT_EQ(PushTo(store_), kDone);
  const std::string control = ": control characters are left out\n";
  EXPECT_EQ(err(), place(3) + "N" + control + place(8) + "CATEGORIES" + control + place(1) +
                       "OfficeLocation: the wire does not carry it\n" + place(1) +
                       "CarTelephoneNumber: the wire does not carry it\n" + place(1) +
                       "AssistantTelephoneNumber: the wire does not carry it\n1 added\n");
}

}  // namespace
}  // namespace desktop::testing
