#include "agent/pim_import/category_list.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/support/parsed_record.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;

std::string Category(const std::string& name) {
  return "<CATEGORY><Name>" + name + "</Name></CATEGORY>";
}

class CategoryList : public PimTest {
 protected:
  // The joined names; nothing for a null text.
  static std::string Parsed(const std::string& entries, HRESULT expected = S_FALSE) {
    const ParsedRecord list("<CATEGORIES>" + entries + "</CATEGORIES>");
    Bstr names;
    EXPECT_EQ(ParseXMLCategoriesList(list.get(), names.put()), expected);
    return names ? Narrow(names.view()) : "(null)";
  }
};

TEST_F(CategoryList, IsJoinedWithCommas) {
  EXPECT_EQ(Parsed(Category("A") + Category("B")), "A,B");
  EXPECT_EQ(Parsed("<X/>" + Category(" B ")), " B ");
}

TEST_F(CategoryList, IsNullWithoutACategory) {
  EXPECT_EQ(Parsed(""), "(null)");
  EXPECT_EQ(Parsed("<category><Name>A</Name></category>"), "(null)");
}

TEST_F(CategoryList, FailsAtACategoryWithoutAName) {
  EXPECT_EQ(Parsed(Category("A") + "<CATEGORY/>", E_FAIL), "(null)");
  EXPECT_EQ(Parsed(Category("A") + "<CATEGORY><NAME>B</NAME></CATEGORY>", E_FAIL), "(null)");
  EXPECT_EQ(UploadContact("<CATEGORIES><CATEGORY/></CATEGORIES>"), (RecordReply{0, E_FAIL}));
}

TEST_F(CategoryList, HoldsUpToItsLengthAndRefusesMore) {
  const std::string half(511, 'x');
  EXPECT_EQ(Parsed(Category(half) + Category(half)), half + "," + half);
  EXPECT_EQ(Parsed(Category(half) + Category(half + "x"), kTextTooLong), "(null)");
  EXPECT_EQ(Parsed(Category(std::string(1024, 'x')), kTextTooLong), "(null)");
  EXPECT_EQ(UploadContact("<CATEGORIES>" + Category(half) + Category(half + "x") + "</CATEGORIES>"),
            (RecordReply{0, kTextTooLong}));
  EXPECT_TRUE(store_->Oids().empty());
}

TEST_F(CategoryList, AnswersTheLastErrorWhenItsTextCannotBeMade) {
  const ParsedRecord list("<CATEGORIES>" + Category("A") + "</CATEGORIES>");
  Bstr names;
  std::uint64_t strings = 0;
  {
    const auto plan = FaultPlan::CountOnly("SysAllocStringLen");
    EXPECT_EQ(ParseXMLCategoriesList(list.get(), names.put()), S_FALSE);
    strings = plan.calls();
  }
  const auto plan = FaultPlan::FailNthCall("SysAllocStringLen", strings, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(ParseXMLCategoriesList(list.get(), names.put()), 8) << "positive: counts as success";
  EXPECT_FALSE(names);
}

TEST_F(CategoryList, IsStoredAndCleared) {
  const RecordReply reply =
      UploadContact("<CATEGORIES>" + Category("A") + Category("B") + "</CATEGORIES>");
  EXPECT_EQ(store_->Text(reply.oid, &IContact::get_Categories), u"A,B");
  UploadContact("<CATEGORIES/>", OidTag(reply.oid));
  EXPECT_EQ(store_->Text(reply.oid, &IContact::get_Categories), u"");
}

TEST_F(CategoryList, LogsItsChildren) {
  const ParsedRecord list("<L>" + Category("A") + "<X/></L>");
  Bstr names;
  SwitchLogOn();
  EXPECT_GE(ParseXMLCategoriesList(list.get(), names.put()), 0);
  EXPECT_THAT(LogMessages(), ElementsAre("ParseXMLCategoriesList called", "bstrCntrName = CATEGORY",
                                         "bstrCntrName = X", "returning 1"));
}

}  // namespace
}  // namespace corvane::testing
