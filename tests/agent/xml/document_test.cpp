#include "agent/xml/document.h"

#include <gtest/gtest.h>

#include <memory>
#include <string_view>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/xml/values.h"
#include "handheld/base/fault.h"
#include "tests/support/desktop_end.h"
#include "tests/support/golden.h"
#include "tests/support/test_handheld.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;

constexpr char kDeclaration[] = "<?XML version=\"1.0\" encoding=\"UTF-8\"?>";

class XmlDocument : public HandheldTest {
 protected:
  std::string Streamed(IXMLDOMDocument* document, HRESULT expected = S_OK) {
    DesktopEnd desktop;
    {
      CorvaneStream stream;
      stream.Attach(desktop.socket());
      EXPECT_EQ(StreamXMLToDesktop(document, &stream), expected);
    }
    return desktop.Received();
  }
};

TEST_F(XmlDocument, HoldsADeclarationAndAnEmptyRoot) {
  const TestDocument document;
  EXPECT_EQ(document.Text(), std::string(kDeclaration) + "<root/>");
  EXPECT_TRUE(EqualsGolden("empty_root.xml", document.Text()));
}

TEST_F(XmlDocument, GoesOnWithoutADeclarationThatFails) {
  const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::createProcessingInstruction", 8);
  const TestDocument document;
  EXPECT_EQ(document.Text(), "<root/>");
}

TEST_F(XmlDocument, FailsWithoutADocument) {
  const auto plan = FaultPlan::FailCalls("CoCreateInstance", 0x80004005);
  ComPtr<IXMLDOMDocument> document;
  ComPtr<IXMLDOMElement> root;
  EXPECT_EQ(CreateXMLObjects(document.put(), root.put()), E_FAIL);
  EXPECT_FALSE(document);
  EXPECT_FALSE(root);
}

TEST_F(XmlDocument, AnswersTheLastErrorWhenTheDeclarationsTextFails) {
  for (const std::uint64_t string : {1, 2}) {
    const auto plan = FaultPlan::FailNthCall("SysAllocString", string, ERROR_NOT_ENOUGH_MEMORY);
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(CreateXMLObjects(document.put(), root.put()), 8) << "positive: counts as success";
    EXPECT_FALSE(document);
    EXPECT_FALSE(root);
  }
}

TEST_F(XmlDocument, HandsOutNothingWhenTheRootFails) {
  for (const char* call : {"IXMLDOMDocument::createElement", "IXMLDOMNode::appendChild"}) {
    // The declaration is appended first.
    const auto plan =
        FaultPlan::FailNthCall(call, std::string_view(call).ends_with("Child") ? 2 : 1, 0x80004005);
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(CreateXMLObjects(document.put(), root.put()), E_FAIL) << call;
    EXPECT_FALSE(document) << call;
    EXPECT_FALSE(root) << call;
  }
}

TEST_F(XmlDocument, CreatesAnElementThatIsNotAttached) {
  const TestDocument document;
  ComPtr<IXMLDOMElement> element;
  EXPECT_EQ(CreateXMLElement(document.document(), u"CONTACT", element.put()), S_OK);
  EXPECT_EQ(document.Inner(), "");
  EXPECT_EQ(document.root()->appendChild(element.get(), nullptr), S_OK);
  EXPECT_EQ(document.Inner(), "<CONTACT/>");
}

TEST_F(XmlDocument, AddsEmptyElementsInOrder) {
  const TestDocument document;
  EXPECT_EQ(AddEmptyElement(document.document(), document.root(), u"SUBJECT"), S_OK);
  EXPECT_EQ(AddEmptyElement(document.document(), document.root(), u"LOCATION"), S_OK);
  EXPECT_EQ(document.Inner(), "<SUBJECT/><LOCATION/>");
}

TEST_F(XmlDocument, RefusesAMissingDocumentOrParent) {
  const TestDocument document;
  ComPtr<IXMLDOMElement> element;
  EXPECT_EQ(CreateXMLElement(nullptr, u"A", element.put()), E_POINTER);
  EXPECT_EQ(AddEmptyElement(document.document(), nullptr, u"A"), E_POINTER);
  Bstr value(u"1");
  EXPECT_EQ(SetElementAttribute(document.document(), nullptr, u"Oid", value.address()), E_POINTER);
  EXPECT_FALSE(value);
}

class ElementAttribute : public XmlDocument {
 protected:
  void SetUp() override {
    document_ = std::make_unique<TestDocument>();
    ASSERT_EQ(CreateXMLElement(document_->document(), u"A", element_.put()), S_OK);
    ASSERT_EQ(document_->root()->appendChild(element_.get(), nullptr), S_OK);
  }
  void TearDown() override {
    element_.reset();
    document_.reset();
    XmlDocument::TearDown();
  }
  HRESULT Set(Bstr* value) {
    return SetElementAttribute(document_->document(), element_.get(), u"Oid", value->address());
  }

  std::unique_ptr<TestDocument> document_;
  ComPtr<IXMLDOMElement> element_;
};

TEST_F(ElementAttribute, IsSetAndTakesTheValueOver) {
  Bstr value(u"-2");
  EXPECT_EQ(Set(&value), S_OK);
  EXPECT_FALSE(value);
  EXPECT_EQ(document_->Inner(), "<A Oid=\"-2\"/>");
}

TEST_F(ElementAttribute, ReplacesAnEarlierValue) {
  Bstr first(u"1");
  Bstr second(u"2");
  EXPECT_EQ(Set(&first), S_OK);
  EXPECT_EQ(Set(&second), S_OK);
  EXPECT_EQ(document_->Inner(), "<A Oid=\"2\"/>");
}

TEST_F(ElementAttribute, IsNotSetToAnEmptyOrNullValue) {
  Bstr empty(u"");
  Bstr null;
  EXPECT_EQ(Set(&empty), S_OK);
  EXPECT_EQ(Set(&null), S_OK);
  EXPECT_FALSE(empty);
  EXPECT_EQ(document_->Inner(), "<A/>");
}

TEST_F(ElementAttribute, FreesTheValueWhicheverStepFails) {
  const char* const calls[] = {"IXMLDOMDocument::createAttribute", "IXMLDOMAttribute::put_value",
                               "IXMLDOMNode::get_attributes", "IXMLDOMNamedNodeMap::setNamedItem"};
  for (const char* call : calls) {
    Bstr value(u"7");
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    EXPECT_EQ(Set(&value), E_FAIL) << call;
    EXPECT_TRUE(plan.fired()) << call;
    EXPECT_FALSE(value) << call;
  }
  EXPECT_EQ(document_->Inner(), "<A/>");
}

TEST_F(ElementAttribute, PassesAnErrorForAValueThatCannotBeCopied) {
  Bstr value(u"7");
  // The attribute's name is the first string, the copy of its value the second.
  const auto plan = FaultPlan::FailNthCall("SysAllocString", 2, 8);
  EXPECT_EQ(Set(&value), E_INVALIDARG);
  EXPECT_FALSE(value);
}

using StreamedDocument = XmlDocument;

TEST_F(StreamedDocument, IsItsLengthAndItsText) {
  const TestDocument document;
  const std::string text = std::string(kDeclaration) + "<root/>";
  ASSERT_EQ(text.size(), 45u);
  EXPECT_EQ(Streamed(document.document()), std::string("\x2D\0\0\0", 4) + text);
}

TEST_F(StreamedDocument, CountsBytesAndNotCharacters) {
  const TestDocument document;
  ASSERT_EQ(AddStringElement(document.document(), document.root(), u"A", u"\u00E9\u6771"), S_OK);
  const std::string bytes = Streamed(document.document());
  EXPECT_EQ(static_cast<unsigned char>(bytes[0]), bytes.size() - 4);
  EXPECT_TRUE(bytes.ends_with("<A>\xC3\xA9\xE6\x9D\xB1</A></root>"));
}

TEST_F(StreamedDocument, NeedsADocumentAndAStream) {
  const TestDocument document;
  EXPECT_EQ(Streamed(nullptr), "");
  EXPECT_EQ(StreamXMLToDesktop(document.document(), nullptr), S_OK);
}

TEST_F(StreamedDocument, SendsNothingWhenItCannotBeSaved) {
  const TestDocument document;
  const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::save", 0x80004005);
  EXPECT_EQ(Streamed(document.document(), E_FAIL), "");
}

TEST_F(StreamedDocument, SendsNothingWhenMemoryRunsOut) {
  const TestDocument document;
  const auto plan = FaultPlan::FailCalls("LocalAlloc", 8);
  EXPECT_EQ(Streamed(document.document(), E_FAIL), "");
}

TEST_F(StreamedDocument, WritesTheDataAlsoAfterALengthThatFailed) {
  LoadLogSettings();
  SetLoggingLevel(1);
  const TestDocument document;
  std::string sent;
  {
    const auto plan = FaultPlan::FailNthCall("send", 1, WSAECONNRESET);
    sent = Streamed(document.document());
    EXPECT_TRUE(plan.fired());
  }
  EXPECT_EQ(sent, document.Text());
  CloseLog();
  ResetLogSettings();
  const std::string log = handheld_.FileContent("CorvaneLog.txt");
  EXPECT_EQ(log.find("StreamXMLToDesktop"), std::string::npos) << "a positive code is no failure";
}

TEST_F(StreamedDocument, LogsWritesThatFailWithANegativeCode) {
  LoadLogSettings();
  SetLoggingLevel(1);
  const TestDocument document;
  for (const std::uint64_t write : {1, 2}) {
    const auto plan = FaultPlan::FailNthCall("send", write, 0x80004005);
    Streamed(document.document(), E_FAIL);
  }
  CloseLog();
  ResetLogSettings();
  const std::string log = handheld_.FileContent("CorvaneLog.txt");
  EXPECT_NE(log.find("StreamXMLToDesktop1 0x80004005\r\n"), std::string::npos);
  EXPECT_NE(log.find("StreamXMLToDesktop2 0x80004005\r\n"), std::string::npos);
}

TEST_F(StreamedDocument, IsWholeWhateverItsSize) {
  const TestDocument document;
  const std::u16string text(3 << 20, u'x');
  ASSERT_EQ(AddStringElement(document.document(), document.root(), u"A", text.c_str()), S_OK);
  const std::string bytes = Streamed(document.document());
  EXPECT_EQ(bytes.substr(4), document.Text());
}

TEST_F(XmlDocument, WritesWordsWithTheirLowestByteFirst) {
  DesktopEnd desktop;
  {
    CorvaneStream stream;
    stream.Attach(desktop.socket());
    EXPECT_EQ(WriteWord(&stream, 0x80070057), S_OK);
    EXPECT_EQ(WriteBlock(&stream, "abc", 3), S_OK);
    EXPECT_EQ(WriteBlock(&stream, nullptr, 0), S_OK);
  }
  EXPECT_EQ(desktop.Received(), std::string("\x57\x00\x07\x80", 4) + "abc");
}

}  // namespace
}  // namespace corvane::testing
