#include <vector>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

class Ownership : public DomTest {};

TEST_F(Ownership, AReleasedDocumentTakesItsTreeAlong) {
  Document document = Loaded("<?xml version='1.0'?><r a='1'><b>t<![CDATA[d]]><!--c--></b></r>");
  Saved(document);  // makes all of it
  EXPECT_GT(host::LiveComObjects(), 5);
  document.reset();
  EXPECT_EQ(host::LiveComObjects(), 0);
}

TEST_F(Ownership, ANodeThatIsNeverAppendedLivesByItsReferences) {
  const Document document = MakeDocument();
  const LONG before = host::LiveComObjects();
  auto element = MakeElement(document, u"e");
  const auto attribute = MakeAttribute(document, u"a", u"1");
  EXPECT_EQ(host::LiveComObjects(), before + 2);
  element.reset();
  EXPECT_EQ(host::LiveComObjects(), before + 1);
}

TEST_F(Ownership, AnAppendedNodeLivesWithItsParent) {
  const Document document = MakeDocument();
  const LONG before = host::LiveComObjects();
  auto parent = MakeElement(document, u"p");
  Append(parent, MakeElement(document, u"c"));
  EXPECT_EQ(host::LiveComObjects(), before + 2);
  parent.reset();
  EXPECT_EQ(host::LiveComObjects(), before);
}

TEST_F(Ownership, ANodeKeepsItsWholeDocument) {
  Document document = Loaded("<r><a>1</a><b>2</b></r>");
  Node a = FirstChild(Root(document).get());
  document.reset();
  const Node b = NextSibling(a.get());
  ASSERT_TRUE(b);
  a.reset();
  EXPECT_EQ(Outline(b.get()), u"b(#text=2)");
}

TEST_F(Ownership, AnAttributeKeepsItsWholeDocument) {
  Document document = Loaded("<r a='1' b='2'/>");
  auto map = AttributesOf(Root(document).get());
  const Node a = AttributeOf(Root(document).get(), u"a");
  document.reset();
  Node b;
  EXPECT_EQ(map->getNamedItem(Bstr(u"b").get(), b.put()), S_OK);
  map.reset();
  b.reset();
  EXPECT_EQ(ValueOf(a.get()), u"1");
}

TEST_F(Ownership, ADetachedNodeKeepsItsDocument) {
  Document document = MakeDocument();
  const auto element = MakeElement(document, u"e");
  Append(element, MakeText(document, u"t"));
  document.reset();
  EXPECT_EQ(Outline(element.get()), u"e(#text=t)");
}

TEST_F(Ownership, AHeldChildOutlivesItsParent) {
  const Document document = MakeDocument();
  auto parent = MakeElement(document, u"p");
  const auto child = MakeElement(document, u"c");
  Append(parent, child);
  Append(parent, MakeElement(document, u"d"));
  Append(child, MakeText(document, u"t"));
  parent.reset();
  EXPECT_FALSE(NextSibling(child.get()));
  EXPECT_EQ(Outline(child.get()), u"c(#text=t)");
  // It can go on as part of another tree.
  Append(document, child);
  EXPECT_EQ(Saved(document), "<c>t</c>");
}

TEST_F(Ownership, AHeldDescendantOutlivesAllAboveIt) {
  const Document document = MakeDocument();
  auto top = MakeElement(document, u"t");
  ComPtr<IXMLDOMElement> deepest = top;
  for (int i = 0; i < 5; ++i) {
    auto child = MakeElement(document, u"d");
    Append(deepest, child);
    deepest = child;
  }
  Append(deepest, MakeElement(document, u"last"));
  top.reset();
  EXPECT_EQ(Outline(deepest.get()), u"d(last())");
  EXPECT_EQ(host::LiveComObjects(), 3);
}

TEST_F(Ownership, AHeldAttributeOutlivesItsElement) {
  const Document document = MakeDocument();
  auto element = MakeElement(document, u"e");
  const auto attribute = MakeAttribute(document, u"a", u"1");
  ASSERT_EQ(AttributesOf(element.get())->setNamedItem(attribute.get(), nullptr), S_OK);
  element.reset();
  EXPECT_EQ(ValueOf(attribute.get()), u"1");
  // It is free for another element.
  const auto other = MakeElement(document, u"o");
  EXPECT_EQ(AttributesOf(other.get())->setNamedItem(attribute.get(), nullptr), S_OK);
}

TEST_F(Ownership, AReplacedAttributeLivesByItsReferences) {
  const Document document = MakeDocument();
  const auto element = MakeElement(document, u"e");
  SetAttribute(document, element, u"a", u"1");
  const LONG before = host::LiveComObjects();
  SetAttribute(document, element, u"a", u"2");
  EXPECT_EQ(host::LiveComObjects(), before);
}

TEST_F(Ownership, TheAttributeMapKeepsItsElement) {
  const Document document = MakeDocument();
  auto element = MakeElement(document, u"e");
  SetAttribute(document, element, u"a", u"1");
  const auto map = AttributesOf(element.get());
  element.reset();
  Node item;
  EXPECT_EQ(map->getNamedItem(Bstr(u"a").get(), item.put()), S_OK);
}

TEST_F(Ownership, AMovedNodeHasOneOwner) {
  const Document document = Loaded("<r><a/><b/></r>");
  Saved(document);
  const LONG before = host::LiveComObjects();
  const auto root = Root(document);
  {
    const Node a = FirstChild(root.get());
    const Node b = NextSibling(a.get());
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(b->appendChild(a.get(), nullptr), S_OK);
      EXPECT_EQ(root->appendChild(a.get(), nullptr), S_OK);
    }
  }
  EXPECT_EQ(host::LiveComObjects(), before);
  EXPECT_EQ(Saved(document), "<r><b/><a/></r>");
}

TEST_F(Ownership, NodesHeldOverALoadStayAsTheyWere) {
  const Document document = Loaded("<r><a>1</a><b/></r>");
  const Node a = FirstChild(Root(document).get());
  EXPECT_EQ(LoadInto(document, "<s/>"), S_OK);
  EXPECT_EQ(Outline(a.get()), u"a(#text=1)");
  EXPECT_FALSE(NextSibling(a.get()));
  EXPECT_EQ(Outline(document.get()), u"#document(s())");
}

TEST_F(Ownership, ReferencesAreCounted) {
  const Document document = MakeDocument();
  IXMLDOMElement* element = nullptr;
  ASSERT_EQ(document->createElement(Bstr(u"e").get(), &element), S_OK);
  EXPECT_EQ(element->AddRef(), 2u);
  EXPECT_EQ(element->Release(), 1u);
  EXPECT_EQ(element->Release(), 0u);
}

TEST_F(Ownership, FreeingADeepTreeCostsNoStack) {
  const Document document = MakeDocument();
  auto top = MakeElement(document, u"t");
  AppendChain(document, top, 300000);
  top.reset();
  EXPECT_EQ(host::LiveComObjects(), 1);
}

TEST_F(Ownership, FreeingADeepTreeWhoseNodesAreHeldIsSafe) {
  const Document document = MakeDocument();
  std::vector<ComPtr<IXMLDOMElement>> held;
  {
    ComPtr<IXMLDOMElement> deepest = MakeElement(document, u"t");
    for (int i = 0; i < 10000; ++i) {
      auto child = MakeElement(document, u"d");
      Append(deepest, child);
      if (i % 3 == 0) held.push_back(child);
      deepest = child;
    }
  }
  for (const auto& node : held) {
    const Node child = FirstChild(node.get());
    EXPECT_TRUE(!child || NameOf(child.get()) == u"d");
  }
  held.clear();
  EXPECT_EQ(host::LiveComObjects(), 1);
}

}  // namespace
}  // namespace ce::testing
