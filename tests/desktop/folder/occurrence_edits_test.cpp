// Occurrences of one UID that are items of their own, edited together.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "tests/desktop/folder/folder_support.h"

namespace desktop::testing {
namespace {

using formats::Appointment;

constexpr const char* kFile = "calendar/meeting.ics";

std::string Changed(int day, const std::string& location) {
  return Event("meeting", fmt::format("RECURRENCE-ID:202601{0:02}T090000\r\n"
                                      "SUMMARY:Meeting {0}\r\n"
                                      "DTSTART:202601{0:02}T090000\r\n"
                                      "DTEND:202601{0:02}T100000\r\n"
                                      "LOCATION:{1}\r\nX-OWN:stays\r\n",
                                      day, location));
}

// Nothing that a handheld could say, so that each occurrence is an item.
std::string EveryTwentyFiveHours(int count) {
  return Event("meeting", fmt::format("SUMMARY:Meeting\r\n"
                                      "DTSTART;TZID=Europe/Berlin:20260105T090000\r\n"
                                      "DTEND;TZID=Europe/Berlin:20260105T100000\r\n"
                                      "LOCATION:A\r\nRRULE:FREQ=HOURLY;INTERVAL=25;COUNT={}\r\n",
                                      count));
}

struct OccurrenceEditsTest : FolderTest, ::testing::Test {
  // Each n-th item goes, the others move to another place; what they are to be then.
  std::vector<DeskEdit> EditsOfAll(std::size_t removed) {
    std::vector<DeskEdit> edits;
    for (const DeskItem& item : Items()) {
      DeskEdit edit{item, {}};
      if (removed == 0 || (edits.size() + 1) % removed != 0) {
        Appointment to = std::get<Appointment>(item.item);
        to.location = "B";
        edit.to = to;
      }
      edits.push_back(std::move(edit));
    }
    return edits;
  }

  void ExpectDone(const std::vector<DeskEdit>& edits) {
    std::set<std::string> expected;
    for (const DeskOutcome& outcome : folder.Edit(edits, trash)) {
      EXPECT_FALSE(outcome.refused);
      EXPECT_EQ(outcome.losses, std::vector<std::string>());
    }
    for (const DeskEdit& edit : edits) {
      if (edit.to) expected.insert(UidOf(*edit.to));
    }
    std::set<std::string> there;
    for (const DeskItem& item : Items()) {
      there.insert(UidOf(item.item));
      EXPECT_EQ(std::get<Appointment>(item.item).location, "B");
    }
    EXPECT_EQ(there, expected);
  }
};

TEST_F(OccurrenceEditsTest, OfASeriesThatIsNotThereChangeTheirOwnLinesAlone) {
  std::string before;
  std::string after;
  for (int day = 5; day < 28; ++day) {
    before += Changed(day, "A");
    after += Changed(day, "B");
  }
  Write(kFile, Calendar(before));
  ExpectDone(EditsOfAll(0));
  EXPECT_EQ(Read(kFile), Calendar(after));
}

TEST_F(OccurrenceEditsTest, OfARuleThatNoHandheldSaysBecomeEventsBesideIt) {
  Write(kFile, Calendar(EveryTwentyFiveHours(20)));
  ExpectDone(EditsOfAll(0));
  const std::string frame = Calendar("");
  const std::string begin = frame.substr(0, frame.find("END:"));
  const std::string bytes = Read(kFile);
  EXPECT_NE(bytes.find(EveryTwentyFiveHours(20)), std::string::npos);
  EXPECT_EQ(bytes.substr(0, begin.size()), begin);
  // And once more, when they have them.
  std::vector<DeskEdit> edits = EditsOfAll(0);
  for (DeskEdit& edit : edits) std::get<Appointment>(*edit.to).subject = "Other";
  ExpectDone(edits);
  for (const DeskItem& item : Items()) {
    EXPECT_EQ(std::get<Appointment>(item.item).subject, "Other");
  }
}

TEST_F(OccurrenceEditsTest, CanBeChangedAndRemovedAtOnce) {
  for (const std::size_t removed : {2, 3}) {
    Write(kFile, Calendar(EveryTwentyFiveHours(9) + Changed(28, "A")));
    ExpectDone(EditsOfAll(removed));
    std::string events;
    for (int day = 5; day < 14; ++day) events += Changed(day, "A");
    Write(kFile, Calendar(events));
    ExpectDone(EditsOfAll(removed));
  }
}

}  // namespace
}  // namespace desktop::testing
