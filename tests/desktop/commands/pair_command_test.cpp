#include "desktop/commands/commands_pair.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "desktop/config/pair.h"
#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

class PairCommand : public CommandTest {
 protected:
  PairCommand() { options_.name = "work"; }
  int Run() {
    console_.out.str("");
    console_.err.str("");
    return SetPair({}, options_, console_.console);
  }
  void AtATerminal(const std::string& typed) {
    console_.console.inIsTerminal = true;
    console_.in.str(typed);
  }

  const ConfigHome home_{directory_.path()};
  PairOptions options_;
};

TEST_F(PairCommand, WritesAPairAndSaysIt) {
  options_.address = Target{"10.0.0.7", "2005"};
  options_.folder = "/home/eva/handheld/";
  options_.zone = ZoneNamed("Europe/Berlin");
  options_.kinds = {RecordKind::kContacts};
  EXPECT_EQ(Run(), kDone);
  EXPECT_EQ(out(), "work: 10.0.0.7:2005, /home/eva/handheld/, Europe/Berlin, contacts\n");
  EXPECT_EQ(FindPair("work")->zone, "Europe/Berlin");
}

TEST_F(PairCommand, ChangesWhatIsGivenAndTellsTheRest) {
  options_.folder = "/f";
  options_.zone = ZoneNamed("UTC");
  EXPECT_EQ(Run(), kDone);
  options_ = {};
  options_.name = "work";
  options_.policy = "desk";
  EXPECT_EQ(Run(), kDone);
  options_.policy.reset();
  EXPECT_EQ(Run(), kDone);
  EXPECT_EQ(out(), "work: 127.0.0.1:2005, /f, UTC, all kinds, desk\n");
  options_.name.reset();
  EXPECT_EQ(Run(), kDone);
  EXPECT_EQ(out(), "work: 127.0.0.1:2005, /f, UTC, all kinds, desk\n");
}

TEST_F(PairCommand, AsksForTheZoneUntilItIsOne) {
  options_.folder = "/f";
  AtATerminal("Mars\n  Asia/Kolkata \n");
  EXPECT_EQ(Run(), kDone);
  EXPECT_THAT(err(), HasSubstr("Mars is no time zone\n"));
  EXPECT_EQ(FindPair("work")->zone, "Asia/Kolkata");
}

TEST_F(PairCommand, TakesThisComputersZoneForAnEmptyAnswer) {
  options_.folder = "/f";
  AtATerminal("\n");
  EXPECT_EQ(Run(), kDone);
  EXPECT_EQ(FindPair("work")->zone, calendar::Zone::OfHost().name());
}

TEST_F(PairCommand, WritesNothingWithoutAZoneOrAFolder) {
  EXPECT_EQ(Run(), kUsage);
  EXPECT_THAT(err(), HasSubstr("--folder"));
  options_.folder = "/f";
  EXPECT_EQ(Run(), kUsage);
  EXPECT_THAT(err(), HasSubstr("--zone"));
  AtATerminal("");
  EXPECT_EQ(Run(), kUsage);
  options_.name = "a b";
  EXPECT_EQ(Run(), kUsage);
  EXPECT_TRUE(AllPairs().empty());
}

class PlaceChoice : public PairCommand {
 protected:
  PlaceChoice() { WritePair({"work", {"10.0.0.7", "2005"}, "/f", "Asia/Kolkata", "IN", {}, {}}); }
  ConnectionOptions connection_;
};

TEST_F(PlaceChoice, TakesTheAddressOfThePairThatIsNamed) {
  const Place place = ChoosePlace({.pair = "work"}, connection_);
  EXPECT_EQ(connection_.target, (Target{"10.0.0.7", "2005"}));
  EXPECT_EQ(place.zone.name(), "Asia/Kolkata");
  EXPECT_FALSE(place.zoneIsGuessed);
  EXPECT_EQ(place.country, "IN");
}

TEST_F(PlaceChoice, KeepsTheAddressThatIsGiven) {
  connection_.target = {"10.0.0.8", "2005"};
  EXPECT_EQ(ChoosePlace({.pair = "work", .addressGiven = true}, connection_).zone.name(),
            "Asia/Kolkata");
  EXPECT_EQ(connection_.target.host, "10.0.0.8");
}

TEST_F(PlaceChoice, KnowsThePairByItsAddress) {
  connection_.target = {"10.0.0.7", "2005"};
  EXPECT_EQ(ChoosePlace({.addressGiven = true}, connection_).zone.name(), "Asia/Kolkata");
}

TEST_F(PlaceChoice, PrefersWhatIsGiven) {
  const PlaceOptions options = {.pair = "work", .zone = ZoneNamed("UTC"), .country = "DE"};
  const Place place = ChoosePlace(options, connection_);
  EXPECT_EQ(place.zone.name(), "UTC");
  EXPECT_EQ(place.country, "DE");
}

TEST_F(PlaceChoice, GuessesTheZoneOfAStranger) {
  const Place place = ChoosePlace({}, connection_);
  EXPECT_TRUE(place.zoneIsGuessed);
  EXPECT_EQ(place.zone.name(), calendar::Zone::OfHost().name());
  EXPECT_EQ(place.country, std::nullopt);
  EXPECT_THROW(ChoosePlace({.pair = "home"}, connection_), Error);
}

}  // namespace
}  // namespace desktop::testing
