#include "agent/pim_import/child_elements.h"

#include "agent/pim_import/field_values.h"
#include "handheld/base/com_object.h"
#include "handheld/base/fault.h"
#include "tests/support/parsed_record.h"
#include "tests/support/pim_requests.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;

class ChildElementsOf : public PimTest {
 protected:
  // The text of the field "F", looked up after a walk and without one; "none" without it.
  static std::string Field(const std::string& children) {
    const ParsedRecord parsed("<R>" + children + "</R>");
    ChildElements indexed(parsed.get());
    EXPECT_EQ(indexed.Index(), S_OK);
    const std::string text = TextOf(indexed);
    EXPECT_EQ(TextOf(ChildElements(parsed.get())), text);
    return text;
  }

 private:
  static std::string TextOf(const ChildElements& children) {
    ComPtr<IXMLDOMNode> child;
    const HRESULT status = children.Find(u"F", child.put());
    EXPECT_EQ(status, child ? S_OK : E_FAIL);
    if (!child) return "none";
    Variant text;
    EXPECT_EQ(GetNodeText(child.get(), text.put()), S_OK);
    return Narrow(text.text());
  }
};

std::string Others(int count) {
  std::string elements;
  while (count-- > 0) elements += "<Other/>";
  return elements;
}

TEST_F(ChildElementsOf, ANodeAreFoundByName) {
  EXPECT_EQ(Field("<F>1</F>"), "1");
  EXPECT_EQ(Field("<A>a</A>text<F>1</F><F>2</F>"), "1");
  EXPECT_EQ(Field("<FF>1</FF><f>2</f><A><F>deeper</F></A>"), "none");
  EXPECT_EQ(Field(""), "none");
}

TEST_F(ChildElementsOf, ANodeAreNotItsInstructions) {
  EXPECT_EQ(Field("<?F an instruction?><F>1</F>"), "1");
  EXPECT_EQ(Field("<?F an instruction?>"), "none");
}

TEST_F(ChildElementsOf, ANodeAreFoundHoweverManyThereAre) {
  for (const int others : {62, 63, 64, 65, 200}) {
    EXPECT_EQ(Field(Others(others) + "<F>1</F><F>2</F>"), "1") << others;
    EXPECT_EQ(Field("<F>1</F>" + Others(others) + "<F>2</F>"), "1") << others;
    EXPECT_EQ(Field(Others(others)), "none") << others;
  }
}

TEST_F(ChildElementsOf, ANodeThatCannotBeWalkedAreNotTakenForMissing) {
  const ParsedRecord parsed("<R><A/><F>1</F></R>");
  const LONG objects = host::LiveComObjects();
  for (const char* call : {"IXMLDOMNode::get_firstChild", "IXMLDOMNode::get_nodeName",
                           "IXMLDOMNode::get_nextSibling"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x8000FFFF);
    ChildElements children(parsed.get());
    EXPECT_EQ(children.Index(), E_UNEXPECTED) << call;
  }
  EXPECT_EQ(host::LiveComObjects(), objects);
}

TEST_F(ChildElementsOf, ARecordThatCannotBeWalkedFailIt) {
  const auto plan = FaultPlan::FailNthCall("IXMLDOMNode::get_nodeName", 2, 0x8000FFFF);
  EXPECT_EQ(UploadContact("<FIRST_NAME>a</FIRST_NAME>"), (RecordReply{0, E_UNEXPECTED}));
}

}  // namespace
}  // namespace corvane::testing
