#include <gmock/gmock.h>

#include "agent/pim_export/categories_to_xml.h"
#include "agent/pim_export/error_to_xml.h"
#include "agent/pim_export/ink_to_xml.h"
#include "handheld/base/fault.h"
#include "tests/support/golden.h"
#include "tests/support/pim_requests.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;

class CategoriesToXml : public PimTest {
 protected:
  std::string Split(std::u16string_view names, HRESULT expected = S_OK) {
    const TestDocument document;
    Bstr text(names);
    EXPECT_EQ(
        AddCategoriesToXML(document.document(), document.root(), u"CATEGORIES", text.address()),
        expected);
    EXPECT_FALSE(text);
    return document.Inner();
  }
  static std::string Category(const std::string& name) {
    return "<CATEGORY><Name>" + name + "</Name></CATEGORY>";
  }
  static std::string List(const std::string& inner) {
    return "<CATEGORIES>" + inner + "</CATEGORIES>";
  }
};

TEST_F(CategoriesToXml, SkipsOneBlankBehindAComma) {
  EXPECT_EQ(Split(u"Business, Personal"), List(Category("Business") + Category("Personal")));
  EXPECT_EQ(Split(u"Business,Personal"), List(Category("Business") + Category("Personal")));
}

TEST_F(CategoriesToXml, KeepsASecondBlank) {
  EXPECT_EQ(Split(u"A,  B"), List(Category("A") + Category(" B")));
}

TEST_F(CategoriesToXml, WritesACategoryWithoutANameForAnEmptyOne) {
  EXPECT_EQ(Split(u"A,,B"), List(Category("A") + "<CATEGORY/>" + Category("B")));
  EXPECT_EQ(Split(u","), List("<CATEGORY/><CATEGORY/>"));
  EXPECT_EQ(Split(u"A, "), List(Category("A") + "<CATEGORY/>"));
}

TEST_F(CategoriesToXml, KeepsBlanksBeforeACommaAndAtTheStart) {
  EXPECT_EQ(Split(u" A ,B"), List(Category(" A ") + Category("B")));
}

TEST_F(CategoriesToXml, WritesNothingForNoText) {
  EXPECT_EQ(Split(u""), "");
  const TestDocument document;
  Bstr null;
  EXPECT_EQ(AddCategoriesToXML(document.document(), document.root(), u"C", null.address()), S_OK);
}

TEST_F(CategoriesToXml, AttachesNothingAfterAFailure) {
  for (const std::uint64_t element : {1, 2, 3, 4, 5}) {
    const auto plan =
        FaultPlan::FailNthCall("IXMLDOMDocument::createElement", element + 1, 0x80004005);
    EXPECT_EQ(Split(u"A,B", E_FAIL), "") << element;
  }
}

TEST(InkNote, IsLongerThanItsSignature) {
  const auto isInk = [](std::string_view block) {
    return IsInkNote(static_cast<DWORD>(block.size()), reinterpret_cast<const BYTE*>(block.data()));
  };
  EXPECT_TRUE(isInk("{\\pwi\x15"));
  EXPECT_FALSE(isInk("{\\pwi"));
  EXPECT_FALSE(isInk("{\\PWI\x15"));
  EXPECT_FALSE(isInk(""));
  EXPECT_FALSE(IsInkNote(100, nullptr));
}

class ErrorToXml : public PimTest {};

TEST_F(ErrorToXml, HoldsTheIdentifierAndTheStatusInDecimal) {
  const TestDocument document;
  EXPECT_EQ(AddErrorToXML(document.document(), document.root(), -2, E_INVALIDARG), S_OK);
  EXPECT_EQ(document.Inner(), "<Error Oid=\"-2\"><Value>-2147024809</Value></Error>");
  EXPECT_TRUE(EqualsGolden("error_record.xml", document.Text()));
}

TEST_F(ErrorToXml, StaysInTheDocumentWithoutWhatFailed) {
  {
    const TestDocument document;
    const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::createAttribute", 0x80004005);
    EXPECT_EQ(AddErrorToXML(document.document(), document.root(), 7, E_FAIL), E_FAIL);
    EXPECT_EQ(document.Inner(), "<Error/>");
  }
  const TestDocument document;
  EXPECT_EQ(AddErrorToXML(document.document(), nullptr, 7, E_FAIL), E_POINTER);
  EXPECT_EQ(document.Inner(), "");
}

TEST_F(ErrorToXml, LogsItsWay) {
  SwitchLogOn();
  const TestDocument document;
  EXPECT_EQ(AddErrorToXML(document.document(), document.root(), 7, E_FAIL), S_OK);
  EXPECT_THAT(LogMessages(), ElementsAre("AddErrorToXML", "Exit AddErrorToXML"));
}

}  // namespace
}  // namespace corvane::testing
