#include "desktop/sync/handheld_items.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "common/formats/items/identity.h"
#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

std::string NumberedContact(Oid oid, const std::string& name = "Ada") {
  return "<CONTACT Oid=\"" + OidAttribute(oid) + "\"><FIRST_NAME>" + name +
         "</FIRST_NAME></CONTACT>";
}

class ReadHandheldTest : public ::testing::Test {
 protected:
  void Know(Oid oid, const std::string& record) {
    hashes_[oid] = formats::ContentHash(record);
    known_[oid] = hashes_[oid];
  }

  std::vector<HandheldItem> Read(const std::vector<std::string>& documents) {
    FakeAgent agent({[&](Peer& peer) {
      peer.ReceiveCounted();
      peer.Send(Word(0));
      for (const std::string& document : documents) peer.Send(Counted(document));
      peer.Send(Word(0) + Word(0));
    }});
    return ReadHandheld(agent.options(), ItemKind::kContact, *calendar::Zone::Find("Europe/Berlin"),
                        known_);
  }

  std::string ProblemOf(const std::vector<std::string>& documents) {
    try {
      Read(documents);
    } catch (const Error& problem) {
      return problem.what();
    }
    return {};
  }

  std::map<Oid, std::string> hashes_;
  KnownRecords known_;
};

TEST_F(ReadHandheldTest, UnderstandsWhatIsNotKnown) {
  for (Oid oid = 1; oid <= 8; ++oid) Know(oid, NumberedContact(oid));
  const std::string changed = NumberedContact(5, "Ben");
  const std::vector<HandheldItem> items = Read(
      {Document(NumberedContact(1) + NumberedContact(2)),
       Document(NumberedContact(3) + NumberedContact(4)), Document(changed + NumberedContact(6)),
       Document(NumberedContact(7)), Document(NumberedContact(9) + NumberedContact(8))});
  ASSERT_EQ(items.size(), 9u);
  for (const HandheldItem& item : items) {
    const bool isNew = item.oid == 5 || item.oid == 9;
    EXPECT_EQ(item.item.has_value(), isNew) << item.oid;
    EXPECT_EQ(item.record, item.oid == 5 ? changed : NumberedContact(item.oid));
    EXPECT_EQ(item.hash, formats::ContentHash(item.record));
    EXPECT_FALSE(item.unreadable);
  }
}

TEST_F(ReadHandheldTest, SeesWhatCouldNotBeSentAmongWhatIsKnown) {
  for (Oid oid = 1; oid <= 3; ++oid) Know(oid, NumberedContact(oid));
  const std::vector<HandheldItem> items =
      Read({Document(NumberedContact(1)), Document(NumberedContact(2)),
            Document(NumberedContact(3) + "<Error Oid=\"3\"><Value>-1</Value></Error>")});
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[2].oid, 3u);
  EXPECT_TRUE(items[2].unreadable);
}

TEST_F(ReadHandheldTest, RefusesADocumentThatIsNoneAroundWhatIsKnown) {
  for (Oid oid = 1; oid <= 2; ++oid) Know(oid, NumberedContact(oid));
  const std::string good = Document(NumberedContact(1));
  const std::string bad = Document(NumberedContact(2));
  EXPECT_EQ(ProblemOf({good, bad}), "");
  EXPECT_NE(ProblemOf({good, bad + "<"}), "");
  EXPECT_NE(ProblemOf({good, bad.substr(0, bad.size() - 1)}), "");
  EXPECT_NE(ProblemOf({good, Document(NumberedContact(2) + "</CONTACT>")}), "");
  EXPECT_NE(ProblemOf({good, Document("</CONTACT>" + NumberedContact(2))}), "");
}

TEST_F(ReadHandheldTest, RefusesAnItemThatComesTwiceWhetherKnownOrNot) {
  for (Oid oid = 1; oid <= 2; ++oid) Know(oid, NumberedContact(oid));
  EXPECT_THAT(ProblemOf({Document(NumberedContact(1)), Document(NumberedContact(2)),
                         Document(NumberedContact(2))}),
              HasSubstr("OID 2 twice"));
}

TEST_F(ReadHandheldTest, LeavesOutAKnownItemOfAnotherKind) {
  const std::string task = "<TASK Oid=\"9\"><SUBJECT>Tea</SUBJECT></TASK>";
  Know(9, task);
  Know(1, NumberedContact(1));
  const std::vector<HandheldItem> items =
      Read({Document(task), Document(task), Document(NumberedContact(1)), Document(task)});
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].oid, 1u);
}

}  // namespace
}  // namespace desktop::testing
