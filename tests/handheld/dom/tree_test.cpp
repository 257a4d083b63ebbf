#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using std::string_view_literals::operator""sv;

class Create : public DomTest {};

constexpr std::u16string_view kNames[] = {u"CONTACT"sv, u"Contact2"sv,  u"_a-b.c"sv,
                                          u"a:b"sv,     u"é"sv,         u"a\u00B7\u0300"sv,
                                          u"漢字"sv,    u"\U00010000"sv};
constexpr std::u16string_view kBadNames[] = {
    u""sv,        u"1a"sv,         u"-a"sv,  u".a"sv,     u" a"sv,      u"a b"sv,     u"a\0b"sv,
    u"a<"sv,      u"a/b"sv,        u"a\""sv, u"\u00D7"sv, u"\u0300a"sv, u"a\uFFFE"sv, u"\xD800"sv,
    u"a\xDC00"sv, u"\U000F0000"sv, u"a@"sv,  u"a["sv,     u"`"sv,       u"{"sv};

TEST_F(Create, TakesXmlNames) {
  const Document document = MakeDocument();
  for (const auto name : kNames) {
    const auto element = MakeElement(document, name);
    ASSERT_TRUE(element);
    EXPECT_EQ(NameOf(element.get()), name);
    EXPECT_EQ(NameOf(MakeAttribute(document, name, u"x").get()), name);
    EXPECT_EQ(NameOf(MakeInstruction(document, name, u"x").get()), name);
  }
}

TEST_F(Create, RefusesOtherNames) {
  const Document document = MakeDocument();
  const auto goodElement = MakeElement(document, u"a");
  const auto goodAttribute = MakeAttribute(document, u"a", u"");
  const auto goodInstruction = MakeInstruction(document, u"a", u"");
  for (const auto name : kBadNames) {
    const Bstr text(name);
    IXMLDOMElement* element = goodElement.get();
    EXPECT_EQ(document->createElement(text.get(), &element), E_INVALIDARG);
    EXPECT_EQ(element, nullptr);
    IXMLDOMAttribute* attribute = goodAttribute.get();
    EXPECT_EQ(document->createAttribute(text.get(), &attribute), E_INVALIDARG);
    EXPECT_EQ(attribute, nullptr);
    IXMLDOMProcessingInstruction* instruction = goodInstruction.get();
    EXPECT_EQ(document->createProcessingInstruction(text.get(), text.get(), &instruction),
              E_INVALIDARG);
    EXPECT_EQ(instruction, nullptr);
  }
  ComPtr<IXMLDOMElement> element;
  EXPECT_EQ(document->createElement(nullptr, element.put()), E_INVALIDARG);
}

TEST_F(Create, NullTextIsEmptyText) {
  const Document document = MakeDocument();
  ComPtr<IXMLDOMText> text;
  EXPECT_EQ(document->createTextNode(nullptr, text.put()), S_OK);
  EXPECT_EQ(ValueOf(text.get()), u"");
}

TEST_F(Create, TextKeepsWhateverItIsGiven) {
  const Document document = MakeDocument();
  EXPECT_EQ(ValueOf(MakeText(document, u"a\0\x01\xD800"sv).get()), u"a\0\x01\xD800"sv);
}

class Names : public DomTest {};

TEST_F(Names, AndValuesOfEachKind) {
  const Document document = Loaded("<e a='v'>t<![CDATA[d]]><!--c--><?p i?></e>");
  EXPECT_EQ(NameOf(document.get()), u"#document");
  EXPECT_EQ(ValueOf(document.get()), u"(null)");
  const auto root = Root(document);
  EXPECT_EQ(NameOf(root.get()), u"e");
  EXPECT_EQ(ValueOf(root.get()), u"(null)");
  EXPECT_EQ(Outline(root.get()), u"e(#text=t,#cdata-section=d,#comment=c,p=i)");
  const Node attribute = AttributeOf(root.get(), u"a");
  EXPECT_EQ(Outline(attribute.get()), u"a=v");
  EXPECT_FALSE(NextSibling(attribute.get()));
  EXPECT_FALSE(FirstChild(attribute.get()));
}

TEST_F(Names, OutParametersAreRequired) {
  const Document document = Loaded("<r/>");
  const auto root = Root(document);
  EXPECT_EQ(root->get_nodeName(nullptr), E_POINTER);
  EXPECT_EQ(root->get_nodeValue(nullptr), E_POINTER);
  EXPECT_EQ(root->get_firstChild(nullptr), E_POINTER);
  EXPECT_EQ(root->get_nextSibling(nullptr), E_POINTER);
  EXPECT_EQ(root->get_attributes(nullptr), E_POINTER);
  EXPECT_EQ(root->selectSingleNode(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(document->get_documentElement(nullptr), E_POINTER);
  EXPECT_EQ(document->createElement(nullptr, nullptr), E_POINTER);
}

class Attributes : public DomTest {};

TEST_F(Attributes, AreFoundByTheirExactName) {
  const Document document = Loaded("<r Oid='7' p:Oid='8'/>");
  const auto root = Root(document);
  EXPECT_EQ(ValueOf(AttributeOf(root.get(), u"Oid").get()), u"7");
  EXPECT_EQ(ValueOf(AttributeOf(root.get(), u"p:Oid").get()), u"8");
  const auto map = AttributesOf(root.get());
  Node item;
  for (const auto name : {u"oid"sv, u"Oid "sv, u""sv, u"*"sv}) {
    EXPECT_EQ(map->getNamedItem(Bstr(name).get(), item.put()), S_FALSE);
    EXPECT_FALSE(item);
  }
  EXPECT_EQ(map->getNamedItem(nullptr, item.put()), S_FALSE);
}

TEST_F(Attributes, BelongToElementsAlone) {
  const Document document = Loaded("<r>t</r>");
  ComPtr<IXMLDOMNamedNodeMap> map;
  EXPECT_EQ(document->get_attributes(map.put()), S_FALSE);
  EXPECT_FALSE(map);
  EXPECT_EQ(FirstChild(Root(document).get())->get_attributes(map.put()), S_FALSE);
}

TEST_F(Attributes, OfTheSameNameAreReplaced) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(document, root);
  SetAttribute(document, root, u"a", u"1");
  SetAttribute(document, root, u"b", u"2");
  SetAttribute(document, root, u"a", u"3");
  EXPECT_EQ(Saved(document), "<r b=\"2\" a=\"3\"/>");
}

TEST_F(Attributes, SetAgainStayWhereTheyAre) {
  const Document document = Loaded("<r a='1' b='2'/>");
  const auto root = Root(document);
  const Node a = AttributeOf(root.get(), u"a");
  EXPECT_EQ(AttributesOf(root.get())->setNamedItem(a.get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document), "<r a=\"1\" b=\"2\"/>");
}

TEST_F(Attributes, ChangeInTheTreeWithTheirNode) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(document, root);
  const auto attribute = MakeAttribute(document, u"a", u"1");
  ASSERT_EQ(AttributesOf(root.get())->setNamedItem(attribute.get(), nullptr), S_OK);
  const Bstr text(u"2");
  EXPECT_EQ(attribute->put_value(Borrowed(text)), S_OK);
  EXPECT_EQ(Saved(document), "<r a=\"2\"/>");
}

TEST_F(Attributes, TakeTextAlone) {
  const Document document = MakeDocument();
  const auto attribute = MakeAttribute(document, u"a", u"1");
  VARIANT value;
  value.vt = VT_ERROR;
  value.scode = E_OUTOFMEMORY;
  EXPECT_EQ(attribute->put_value(value), E_INVALIDARG);
  EXPECT_EQ(ValueOf(attribute.get()), u"1");
}

TEST_F(Attributes, OfAnotherElementOrDocumentAreRefused) {
  const Document document = Loaded("<r a='1'><s/></r>");
  const auto root = Root(document);
  const auto map = AttributesOf(root.get());
  const Node taken = AttributeOf(root.get(), u"a");
  Node set;
  EXPECT_EQ(AttributesOf(FirstChild(root.get()).get())->setNamedItem(taken.get(), set.put()),
            E_INVALIDARG);
  EXPECT_FALSE(set);
  const Document other = MakeDocument();
  EXPECT_EQ(map->setNamedItem(MakeAttribute(other, u"b", u"1").get(), nullptr), E_INVALIDARG);
  EXPECT_EQ(map->setNamedItem(MakeText(document, u"b").get(), nullptr), E_INVALIDARG);
  EXPECT_EQ(map->setNamedItem(nullptr, nullptr), E_INVALIDARG);
  EXPECT_EQ(Saved(document), "<r a=\"1\"><s/></r>");
}

class SelectSingleNode : public DomTest {};

TEST_F(SelectSingleNode, FindsTheFirstChildElementOfTheName) {
  const Document document =
      Loaded("<r><?a d?><b><a>deep</a></b><!--a--><a>1</a><a>2</a><p:a>3</p:a></r>");
  const auto root = Root(document);
  Node found;
  EXPECT_EQ(root->selectSingleNode(Bstr(u"a").get(), found.put()), S_OK);
  EXPECT_EQ(Outline(found.get()), u"a(#text=1)");
  EXPECT_EQ(root->selectSingleNode(Bstr(u"p:a").get(), found.put()), S_OK);
  EXPECT_EQ(Outline(found.get()), u"p:a(#text=3)");
  EXPECT_EQ(document->selectSingleNode(Bstr(u"r").get(), found.put()), S_OK);
  EXPECT_EQ(found.get(), root.get());
}

TEST_F(SelectSingleNode, AbsentIsNullAndNoFailure) {
  const Document document = Loaded("<r><a>t</a></r>");
  const auto root = Root(document);
  for (const auto* name : {u"b", u"A", u"r", u"t"}) {
    Node found;
    EXPECT_EQ(root->selectSingleNode(Bstr(name).get(), found.put()), S_FALSE);
    EXPECT_FALSE(found);
  }
}

TEST_F(SelectSingleNode, UnderstandsPlainNamesAlone) {
  const Document document = Loaded("<r><a/></r>");
  const auto root = Root(document);
  for (const auto* query : {u"", u"a/b", u"*", u"//a", u"@a", u".", u"a[1]", u"#text", u" a"}) {
    Node found;
    EXPECT_EQ(root->selectSingleNode(Bstr(query).get(), found.put()), E_INVALIDARG);
    EXPECT_FALSE(found);
  }
  Node found;
  EXPECT_EQ(root->selectSingleNode(nullptr, found.put()), E_INVALIDARG);
}

class AppendChild : public DomTest {
 protected:
  const Document document_ = Loaded("<r><a><b/></a><c/></r>");
  ComPtr<IXMLDOMElement> root_ = Root(document_);

  Node Find(std::u16string_view name) {
    Node found;
    root_->selectSingleNode(Bstr(name).get(), found.put());
    return found;
  }
  void TearDown() override {
    root_.reset();
    const_cast<Document&>(document_).reset();
    DomTest::TearDown();
  }
};

TEST_F(AppendChild, HandsOutTheChildWhenAsked) {
  const auto child = MakeElement(document_, u"d");
  Node appended;
  EXPECT_EQ(root_->appendChild(child.get(), appended.put()), S_OK);
  EXPECT_EQ(appended.get(), child.get());
}

TEST_F(AppendChild, MovesANode) {
  EXPECT_EQ(Find(u"c")->appendChild(Find(u"a").get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document_), "<r><c><a><b/></a></c></r>");
}

TEST_F(AppendChild, MovesANodeToTheEndOfItsOwnParent) {
  EXPECT_EQ(root_->appendChild(Find(u"a").get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document_), "<r><c/><a><b/></a></r>");
  EXPECT_EQ(root_->appendChild(Find(u"a").get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document_), "<r><c/><a><b/></a></r>");
}

TEST_F(AppendChild, RefusesCycles) {
  const Node a = Find(u"a");
  const Node b = FirstChild(a.get());
  EXPECT_EQ(a->appendChild(a.get(), nullptr), E_FAIL);
  EXPECT_EQ(a->appendChild(root_.get(), nullptr), E_FAIL);
  EXPECT_EQ(b->appendChild(root_.get(), nullptr), E_FAIL);
  EXPECT_EQ(b->appendChild(a.get(), nullptr), E_FAIL);
  EXPECT_EQ(Find(u"c")->appendChild(Find(u"c").get(), nullptr), E_FAIL);
  EXPECT_EQ(Saved(document_), "<r><a><b/></a><c/></r>");
}

TEST_F(AppendChild, RefusesASecondRoot) {
  const auto second = MakeElement(document_, u"s");
  Node appended;
  EXPECT_EQ(document_->appendChild(second.get(), appended.put()), E_FAIL);
  EXPECT_FALSE(appended);
  EXPECT_EQ(document_->appendChild(root_.get(), nullptr), S_OK);  // the one that is there
  EXPECT_EQ(Outline(document_.get()), u"#document(r(a(b()),c()))");
}

TEST_F(AppendChild, RefusesWhatTheTreeCannotHold) {
  const auto text = MakeText(document_, u"t");
  EXPECT_EQ(document_->appendChild(text.get(), nullptr), E_FAIL);
  EXPECT_EQ(text->appendChild(MakeElement(document_, u"x").get(), nullptr), E_FAIL);
  EXPECT_EQ(text->appendChild(text.get(), nullptr), E_FAIL);
  const auto instruction = MakeInstruction(document_, u"t", u"d");
  EXPECT_EQ(instruction->appendChild(text.get(), nullptr), E_FAIL);
  EXPECT_EQ(root_->appendChild(document_.get(), nullptr), E_FAIL);
  EXPECT_EQ(document_->appendChild(document_.get(), nullptr), E_FAIL);
  const auto attribute = MakeAttribute(document_, u"t", u"d");
  EXPECT_EQ(root_->appendChild(attribute.get(), nullptr), E_FAIL);
  EXPECT_EQ(attribute->appendChild(text.get(), nullptr), E_FAIL);
  EXPECT_EQ(root_->appendChild(nullptr, nullptr), E_INVALIDARG);
  EXPECT_EQ(Saved(document_), "<r><a><b/></a><c/></r>");
}

TEST_F(AppendChild, RefusesNodesOfAnotherDocument) {
  const Document other = MakeDocument();
  EXPECT_EQ(root_->appendChild(MakeElement(other, u"x").get(), nullptr), E_INVALIDARG);
  EXPECT_EQ(root_->appendChild(MakeText(other, u"x").get(), nullptr), E_INVALIDARG);
  EXPECT_EQ(root_->appendChild(other.get(), nullptr), E_INVALIDARG);
}

// A node of somebody else's.
class ForeignNode final : public host::ComObject<IXMLDOMNode> {
 public:
  HRESULT get_nodeName(BSTR*) override { return E_NOTIMPL; }
  HRESULT get_nodeValue(VARIANT*) override { return E_NOTIMPL; }
  HRESULT get_firstChild(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT get_nextSibling(IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT get_attributes(IXMLDOMNamedNodeMap**) override { return E_NOTIMPL; }
  HRESULT appendChild(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
  HRESULT selectSingleNode(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
};

TEST_F(AppendChild, RefusesForeignNodes) {
  Node foreign;
  foreign.attach(new ForeignNode());
  EXPECT_EQ(root_->appendChild(foreign.get(), nullptr), E_INVALIDARG);
  EXPECT_EQ(AttributesOf(root_.get())->setNamedItem(foreign.get(), nullptr), E_INVALIDARG);
}

class Interfaces : public DomTest {};

TEST_F(Interfaces, OfEachNodeLeadToTheSameObject) {
  const Document document = Loaded("<r/>");
  const ComPtr<IUnknown> identity = document.query<IUnknown>();
  EXPECT_EQ(static_cast<void*>(document.query<IXMLDOMNode>().get()),
            static_cast<void*>(document.get()));
  const auto safety = document.query<IObjectSafety>();
  ASSERT_TRUE(safety);
  EXPECT_EQ(safety.query<IUnknown>().get(), identity.get());
  EXPECT_TRUE(safety.query<IXMLDOMDocument>());
  EXPECT_FALSE(document.query<IXMLDOMElement>());
  const auto root = Root(document);
  EXPECT_TRUE(root.query<IXMLDOMNode>());
  EXPECT_TRUE(root.query<IDispatch>());
  EXPECT_FALSE(root.query<IXMLDOMText>());
  EXPECT_FALSE(root.query<IObjectSafety>());
}

TEST_F(Interfaces, ObjectSafetyTakesTheSupportedOptions) {
  const auto safety = MakeDocument().query<IObjectSafety>();
  DWORD supported = 42;
  DWORD enabled = 42;
  EXPECT_EQ(safety->GetInterfaceSafetyOptions(IXMLDOMDocument::kIid, &supported, &enabled), S_OK);
  EXPECT_EQ(supported, 3u);
  EXPECT_EQ(enabled, 0u);
  EXPECT_EQ(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, supported, 0), S_OK);
  EXPECT_EQ(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, 3, 3), S_OK);
  EXPECT_EQ(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, 1, 0), S_OK);
  EXPECT_EQ(safety->GetInterfaceSafetyOptions(IXMLDOMDocument::kIid, &supported, &enabled), S_OK);
  EXPECT_EQ(enabled, 2u);
  EXPECT_EQ(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, 4, 4), E_FAIL);
  EXPECT_EQ(safety->GetInterfaceSafetyOptions(IXMLDOMDocument::kIid, nullptr, &enabled), E_POINTER);
}

}  // namespace
}  // namespace ce::testing
