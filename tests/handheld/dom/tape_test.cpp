// The nodes of a loaded document are made when they are asked for.
#include "handheld/dom/tape.h"

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

class LoadedNodes : public DomTest {};

TEST_F(LoadedNodes, AWalkMakesAFewAtATime) {
  const Document document = Loaded("<r>" + Repeated("<a b='1'>t<c><d/></c></a>", 1000) + "</r>");
  EXPECT_EQ(host::LiveComObjects(), 1);
  int count = 0;
  {
    const auto root = Root(document);
    for (Node a = FirstChild(root.get()); a; a = NextSibling(a.get())) {
      EXPECT_EQ(ValueOf(AttributeOf(a.get(), u"b").get()), u"1");
      EXPECT_EQ(Outline(a.get()), u"a(#text=t,c(d()))");
      EXPECT_LE(host::LiveComObjects(), 4);
      ++count;
    }
  }
  EXPECT_EQ(count, 1000);
  EXPECT_EQ(host::LiveComObjects(), 1);
}

TEST_F(LoadedNodes, AreTheSameAsLongAsTheyAreHeld) {
  const Document document = Loaded("<r><a/>t<b x='1'/><!--c--></r>");
  const auto root = Root(document);
  const Node a = FirstChild(root.get());
  const Node text = NextSibling(a.get());
  EXPECT_EQ(FirstChild(root.get()).get(), a.get());
  EXPECT_EQ(NextSibling(a.get()).get(), text.get());
  const Node b = NextSibling(text.get());
  Node found;
  EXPECT_EQ(root->selectSingleNode(Bstr(u"b").get(), found.put()), S_OK);
  EXPECT_EQ(found.get(), b.get());
  const Node x = AttributeOf(b.get(), u"x");
  EXPECT_EQ(AttributeOf(b.get(), u"x").get(), x.get());
  EXPECT_EQ(Root(document).get(), root.get());
}

TEST_F(LoadedNodes, StandInOrderInWhateverOrderTheyAreAskedFor) {
  const Document document = Loaded("<r><a/><b/><c/><d/></r>");
  const auto root = Root(document);
  Node c;
  Node b;
  EXPECT_EQ(root->selectSingleNode(Bstr(u"c").get(), c.put()), S_OK);
  EXPECT_EQ(root->selectSingleNode(Bstr(u"b").get(), b.put()), S_OK);
  EXPECT_EQ(NextSibling(b.get()).get(), c.get());
  EXPECT_EQ(Outline(root.get()), u"r(a(),b(),c(),d())");
  EXPECT_EQ(Saved(document), "<r><a/><b/><c/><d/></r>");
}

TEST_F(LoadedNodes, KeepWhatIsChangedInThem) {
  const Document document = Loaded("<r><a><b x='1'/></a><c/></r>");
  {
    const Node a = FirstChild(Root(document).get());
    const Node b = FirstChild(a.get());
    SetAttribute(document, ComPtr<IXMLDOMElement>(static_cast<IXMLDOMElement*>(b.get())), u"y",
                 u"2");
  }
  {
    const Node c = NextSibling(FirstChild(Root(document).get()).get());
    EXPECT_EQ(c->appendChild(MakeText(document, u"t").get(), nullptr), S_OK);
  }
  EXPECT_EQ(Outline(document.get()), u"#document(r(a(b()),c(#text=t)))");
  EXPECT_EQ(Saved(document), "<r><a><b x=\"1\" y=\"2\"/></a><c>t</c></r>");
}

TEST_F(LoadedNodes, KeepTheValueThatAnAttributeWasGiven) {
  const Document document = Loaded("<r><a x='1'/></r>");
  {
    const Node x = AttributeOf(FirstChild(Root(document).get()).get(), u"x");
    const Bstr text(u"2");
    EXPECT_EQ(static_cast<IXMLDOMAttribute*>(x.get())->put_value(Borrowed(text)), S_OK);
  }
  EXPECT_EQ(Saved(document), "<r><a x=\"2\"/></r>");
}

TEST_F(LoadedNodes, StayWhileOnlyAnAttributeOfTheirsIsHeld) {
  const Document document = Loaded("<r><a x='1'/><b/></r>");
  Node x = AttributeOf(FirstChild(Root(document).get()).get(), u"x");
  EXPECT_EQ(AttributeOf(FirstChild(Root(document).get()).get(), u"x").get(), x.get());
  x.reset();
  EXPECT_EQ(host::LiveComObjects(), 1);
}

TEST_F(LoadedNodes, MoveToAnotherParent) {
  const Document document = Loaded("<r><a><b>1</b></a><c/></r>");
  const auto root = Root(document);
  const Node b = FirstChild(FirstChild(root.get()).get());
  EXPECT_EQ(root->appendChild(b.get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document), "<r><a/><c/><b>1</b></r>");
  const Node c = NextSibling(FirstChild(root.get()).get());
  EXPECT_EQ(b->appendChild(root.get(), nullptr), E_FAIL) << "it lies in it";
  EXPECT_EQ(b->appendChild(c.get(), nullptr), S_OK);
  EXPECT_EQ(Saved(document), "<r><a/><b>1<c/></b></r>");
}

TEST_F(LoadedNodes, GoWithNothing) {
  const Document document = Loaded("<r><a/></r>");
  VARIANT_BOOL successful = VARIANT_TRUE;
  EXPECT_EQ(document->load(VARIANT{}, &successful), S_FALSE);
  EXPECT_EQ(successful, VARIANT_FALSE);
  EXPECT_EQ(Outline(document.get()), u"#document()");
}

TEST_F(LoadedNodes, HeldOverALoadTheyLieOnTheirOwnTape) {
  const Document document = Loaded("<r><a>1</a><b/></r>");
  const auto old = Root(document);
  EXPECT_EQ(LoadInto(document, "<s><t>2</t></s>"), S_OK);
  EXPECT_EQ(Outline(old.get()), u"r(a(#text=1),b())");
  EXPECT_EQ(Outline(document.get()), u"#document(s(t(#text=2)))");
}

}  // namespace
}  // namespace ce::testing
