#include "agent/pim_import/record_tags.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/support/parsed_record.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Tags {
  HRESULT status;
  LONG oid;
  LONG deleteFlag;
  friend bool operator==(const Tags&, const Tags&) = default;
};

class RecordTags : public PimTest {
 protected:
  static Tags Read(const std::string& attributes) {
    const ParsedRecord record("<CONTACT " + attributes + "/>");
    return ReadOf(record);
  }
  static Tags ReadOf(const ParsedRecord& record) {
    Tags tags{S_OK, 7, 7};
    tags.status = ReadRecordTags(record.get(), &tags.oid, &tags.deleteFlag);
    return tags;
  }
};

TEST_F(RecordTags, AreZeroWhenAbsent) {
  EXPECT_EQ(Read(""), (Tags{S_OK, 0, 0}));
  EXPECT_EQ(Read("oid='5' delete='1'"), (Tags{S_OK, 0, 0}));
}

TEST_F(RecordTags, AreDecimalNumbers) {
  EXPECT_EQ(Read("Oid='5'"), (Tags{S_OK, 5, 0}));
  EXPECT_EQ(Read("Oid='-16' Delete='1'"), (Tags{S_OK, -16, 1}));
  EXPECT_EQ(Read("Delete='2' Oid='12abc'"), (Tags{S_OK, 12, 2}));
  EXPECT_EQ(Read("Oid='0x1F' Delete='TRUE'"), (Tags{S_OK, 0, 0}));
  EXPECT_EQ(Read("Oid='4294967298' Delete='4294967296'"), (Tags{S_OK, 2147483647, 2147483647}));
}

TEST_F(RecordTags, DeletionIsSeenWithoutAnIdentifier) {
  EXPECT_EQ(Read("Delete='1'"), (Tags{S_OK, 0, 1}));
}

TEST_F(RecordTags, AreZeroWhenTheyCannotBeLookedUp) {
  const ParsedRecord record("<CONTACT Oid='5' Delete='1'/>");
  const auto plan = FaultPlan::FailCalls("IXMLDOMNamedNodeMap::getNamedItem", 0x80004005);
  EXPECT_EQ(ReadOf(record), (Tags{S_OK, 0, 0}));
}

TEST_F(RecordTags, FailWhenTheIdentifiersValueFails) {
  const ParsedRecord record("<CONTACT Oid='5' Delete='1'/>");
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::get_nodeValue", 1, 0x80004005);
  EXPECT_EQ(ReadOf(record), (Tags{E_FAIL, 0, 0}));
}

TEST_F(RecordTags, TakeADeletionWhoseValueFailsForNone) {
  const ParsedRecord record("<CONTACT Oid='5' Delete='1'/>");
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::get_nodeValue", 2, 0x80004005);
  EXPECT_EQ(ReadOf(record), (Tags{S_OK, 5, 0}));
}

TEST_F(RecordTags, LogWhatTheyFind) {
  const ParsedRecord both("<CONTACT Oid='5' Delete='1'/>");
  const ParsedRecord one("<CONTACT Oid='5'/>");
  const ParsedRecord none("<CONTACT/>");
  SwitchLogOn();
  ReadOf(both);
  ReadOf(one);
  ReadOf(none);
  EXPECT_THAT(LogMessages(),
              ElementsAre("getNamedItem returned 0", "get_nodeValue returned 0", "bDelete = 1",
                          "getNamedItem returned 0", "get_nodeValue returned 0",
                          "Didn't find delete tag", "getNamedItem returned 1"));
}

}  // namespace
}  // namespace corvane::testing
