#include <random>
#include <string>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

class RoundTrip : public DomTest {};

// Builds trees of every kind of node from a fixed series of numbers.
class Gardener {
 public:
  Gardener(const Document& document, unsigned seed) : document_(document), numbers_(seed) {}

  void Grow(const ComPtr<IXMLDOMElement>& parent, int levels) {
    for (unsigned i = Pick(3); i > 0; --i) SetAttribute(document_, parent, Name(), Text());
    bool afterText = false;  // neighbours would be read as one
    for (unsigned i = Pick(5); i > 0; --i) {
      if (!afterText && Pick(2) == 0) {
        Append(parent, MakeText(document_, u"x" + Text()));
        afterText = true;
        continue;
      }
      afterText = false;
      if (Pick(8) == 0) {
        Append(parent, MakeInstruction(document_, u"t", u"d" + Text()));
        continue;
      }
      const auto child = MakeElement(document_, Name());
      Append(parent, child);
      if (levels > 0) Grow(child, levels - 1);
    }
  }

 private:
  unsigned Pick(unsigned below) { return static_cast<unsigned>(numbers_() % below); }
  std::u16string Name() {
    static constexpr std::u16string_view kNames[] = {u"CONTACT", u"FileAs", u"a", u"é", u"p:q"};
    return std::u16string(kNames[Pick(std::size(kNames))]);
  }
  std::u16string Text() {
    static constexpr std::u16string_view kPieces[] = {
        u"a", u"&", u"<",          u">",  u"\"",    u"'",        u"]]>",    u" ",  u"\n",  u"\t",
        u"é", u"€", u"\U0001F600", u"?>", u"&amp;", u"\x01\x02", u"\uFFFE", u"--", u"\x7F"};
    std::u16string text;
    for (unsigned i = Pick(6); i > 0; --i) text += kPieces[Pick(std::size(kPieces))];
    return text;
  }

  const Document& document_;
  std::mt19937 numbers_;
};

TEST_F(RoundTrip, WhatWasSavedSavesAgainTheSame) {
  for (unsigned seed = 0; seed < 500; ++seed) {
    const Document document = MakeDocument();
    Append(document, MakeInstruction(document, u"XML", u"version=\"1.0\" encoding=\"UTF-8\""));
    const auto root = MakeElement(document, u"root");
    Append(document, root);
    Gardener(document, seed).Grow(root, 3);
    const std::string saved = Saved(document);
    const Document loaded = Loaded(saved);
    ASSERT_EQ(Saved(loaded), saved) << "seed " << seed;
    ASSERT_EQ(Saved(Loaded(saved, true)), saved) << "seed " << seed;
  }
}

TEST_F(RoundTrip, CarriageReturnsSurviveInAttributesOnly) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  SetAttribute(document, root, u"a", u"1\r\n2");
  Append(root, MakeText(document, u"1\r\n2"));
  Append(document, root);
  EXPECT_EQ(Saved(Loaded(Saved(document))), "<r a=\"1&#13;&#10;2\">1\n2</r>");
}

}  // namespace
}  // namespace ce::testing
