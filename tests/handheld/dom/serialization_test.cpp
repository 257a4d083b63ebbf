#include <string>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using std::string_view_literals::operator""sv;

class Serialization : public DomTest {};

struct TextCase {
  const char* name;
  std::u16string_view text;
  std::string_view bytes;
};

void PrintTo(const TextCase& test, std::ostream* out) {
  *out << test.name;
}

class TextSerialization : public DomTest, public ::testing::WithParamInterface<TextCase> {};
class AttributeSerialization : public DomTest, public ::testing::WithParamInterface<TextCase> {};
class InstructionSerialization : public DomTest, public ::testing::WithParamInterface<TextCase> {};

const auto kTestName = [](const auto& test) { return std::string(test.param.name); };

INSTANTIATE_TEST_SUITE_P(
    All, TextSerialization,
    ::testing::Values(
        TextCase{"Plain", u"Smith"sv, "Smith"sv},
        TextCase{"MarkupIsEscaped", u"a<b>c&d]]>"sv, "a&lt;b&gt;c&amp;d]]&gt;"sv},
        TextCase{"QuotesAndApostrophesStand", u"\"it's\""sv, "\"it's\""sv},
        TextCase{"LineBreaksAreThemselves", u"a\r\nb\nc\rd\te"sv, "a\r\nb\nc\rd\te"sv},
        TextCase{"BlanksStay", u"  a  "sv, "  a  "sv},
        TextCase{"TwoBytes", u"\u0080é߿"sv, "\xC2\x80\xC3\xA9\xDF\xBF"sv},
        TextCase{"ThreeBytes", u"\u0800€\uD7FF\uE000\uFFFD"sv,
                 "\xE0\xA0\x80\xE2\x82\xAC\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD"sv},
        TextCase{"FourBytes", u"\U00010000\U0001F600\U0010FFFF"sv,
                 "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"sv},
        TextCase{"SignExtendedBytes", u"\uFFE9"sv, "\xEF\xBF\xA9"sv},
        TextCase{"ControlsAreLeftOut", u"a\0b\x01\x08\x0B\x0C\x0E\x1F\x7F"sv, "ab\x7F"sv},
        TextCase{"LoneSurrogatesAreLeftOut",
                 u"a\xD800"
                 u"b\xDC00"
                 u"c\xDC00\xD800"
                 u"d\xD83D"sv,
                 "abcd"sv},
        TextCase{"LeadBeforeAPairIsLeftOut", u"\xD83D\xD83D\xDE00"sv, "\xF0\x9F\x98\x80"sv},
        TextCase{"NoncharactersAreLeftOut", u"a\uFFFE\uFFFFb"sv, "ab"sv}),
    kTestName);

TEST_P(TextSerialization, IsByteExact) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(root, MakeText(document, GetParam().text));
  Append(document, root);
  EXPECT_EQ(Saved(document), "<r>" + std::string(GetParam().bytes) + "</r>");
}

INSTANTIATE_TEST_SUITE_P(
    All, AttributeSerialization,
    ::testing::Values(
        TextCase{"Plain", u"Smith"sv, "Smith"sv}, TextCase{"Empty", u""sv, ""sv},
        TextCase{"MarkupAndQuotesAreEscaped", u"<a>&\"b\""sv, "&lt;a&gt;&amp;&quot;b&quot;"sv},
        TextCase{"ApostrophesStand", u"it's"sv, "it's"sv},
        // As characters they would be read as blanks.
        TextCase{"LineBreaksAndTabsAreReferences", u"a\r\nb\tc"sv, "a&#13;&#10;b&#9;c"sv},
        TextCase{"ForbiddenIsLeftOut", u"a\x01\xD800\uFFFEb"sv, "ab"sv}),
    kTestName);

TEST_P(AttributeSerialization, IsByteExact) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  SetAttribute(document, root, u"a", GetParam().text);
  Append(document, root);
  EXPECT_EQ(Saved(document), "<r a=\"" + std::string(GetParam().bytes) + "\"/>");
}

INSTANTIATE_TEST_SUITE_P(All, InstructionSerialization,
                         ::testing::Values(TextCase{"AsGiven", u"version=\"1.0\" & <more>"sv,
                                                    " version=\"1.0\" & <more>"sv},
                                           TextCase{"WithoutData", u""sv, ""sv},
                                           TextCase{"AnEndInsideIsBroken", u"a?>b?>"sv,
                                                    " a? >b? >"sv},
                                           TextCase{"AnEndAroundWhatIsLeftOutIsBroken",
                                                    u"a?\x01\xD800\uFFFE>b"sv, " a? >b"sv},
                                           TextCase{"AMarkAtTheEndStands", u"a?"sv, " a?"sv}),
                         kTestName);

TEST_P(InstructionSerialization, IsByteExact) {
  const Document document = MakeDocument();
  Append(document, MakeInstruction(document, u"target", GetParam().text));
  Append(document, MakeElement(document, u"r"));
  const std::string saved = Saved(document);
  EXPECT_EQ(saved, "<?target" + std::string(GetParam().bytes) + "?><r/>");
  EXPECT_EQ(LoadInto(document, saved), S_OK);
}

TEST_F(Serialization, EmptyRecordDocumentIsDeclarationAndRoot) {
  const Document document = MakeDocument();
  Append(document, MakeInstruction(document, u"XML", u"version=\"1.0\" encoding=\"UTF-8\""));
  Append(document, MakeElement(document, u"root"));
  EXPECT_EQ(Saved(document), "<?XML version=\"1.0\" encoding=\"UTF-8\"?><root/>");
}

TEST_F(Serialization, NothingStandsBetweenNodes) {
  const Document document = MakeDocument();
  Append(document, MakeInstruction(document, u"XML", u"version=\"1.0\""));
  const auto root = MakeElement(document, u"root");
  Append(document, root);
  for (const auto* name : {u"CONTACT", u"Contact2"}) {
    const auto record = MakeElement(document, name);
    SetAttribute(document, record, u"Oid", u"7");
    SetAttribute(document, record, u"Delete", u"0");
    Append(root, record);
    const auto field = MakeElement(document, u"FileAs");
    Append(record, field);
    Append(field, MakeText(document, u"Smith, John"));
    Append(record, MakeElement(document, u"Empty"));
  }
  EXPECT_EQ(Saved(document),
            "<?XML version=\"1.0\"?><root>"
            "<CONTACT Oid=\"7\" Delete=\"0\"><FileAs>Smith, John</FileAs><Empty/></CONTACT>"
            "<Contact2 Oid=\"7\" Delete=\"0\"><FileAs>Smith, John</FileAs><Empty/></Contact2>"
            "</root>");
}

TEST_F(Serialization, AnEmptyTextNodeMakesNoEmptyElement) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(root, MakeText(document, u""));
  Append(document, root);
  EXPECT_EQ(Saved(document), "<r></r>");
}

TEST_F(Serialization, AnEmptyDocumentIsNoBytes) {
  EXPECT_EQ(Saved(MakeDocument()), "");
}

TEST_F(Serialization, NamesBeyondAsciiAreUtf8) {
  const Document document = MakeDocument();
  Append(document, MakeElement(document, u"Straße\U00010000"));
  EXPECT_EQ(Saved(document), "<Straße\xF0\x90\x80\x80/>");
}

TEST_F(Serialization, CommentsAndCdataComeOutAsTheyWereRead) {
  const std::string_view bytes = "<!-- a - b --><r><![CDATA[<&>]]]]>x<!----><?t d?></r><?e?>";
  EXPECT_EQ(Saved(Loaded(bytes)), bytes);
}

TEST_F(Serialization, LongTextGoesOutInLargePieces) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  std::u16string text;
  std::string expected = "<r>";
  for (int i = 0; i < 200000; ++i) {
    text += u"\U0001F600&";
    expected += "\xF0\x9F\x98\x80&amp;";
  }
  Append(root, MakeText(document, text));
  Append(document, root);
  BufferStream stream;
  EXPECT_EQ(SaveTo(document, &stream), S_OK);
  EXPECT_EQ(stream.content(), expected + "</r>");
  EXPECT_LT(stream.writes(), 40);
}

TEST_F(Serialization, AStreamMayTakeLessThanItIsGiven) {
  const Document document = Loaded("<r>some text</r>");
  BufferStream stream;
  stream.TakeAtMost(3);
  EXPECT_EQ(SaveTo(document, &stream), S_OK);
  EXPECT_EQ(stream.content(), "<r>some text</r>");
}

TEST_F(Serialization, TheStreamsFailureIsTheResult) {
  const Document document = Loaded("<r>some text</r>");
  BufferStream stream;
  stream.FailWrites(1, E_ACCESSDENIED);
  EXPECT_EQ(SaveTo(document, &stream), E_ACCESSDENIED);
  EXPECT_EQ(stream.writes(), 1);
}

TEST_F(Serialization, AStreamThatTakesNothingFails) {
  const Document document = Loaded("<r>some text</r>");
  BufferStream stream;
  stream.FailWrites(1, 8);  // a positive code, which passes for success
  EXPECT_EQ(SaveTo(document, &stream), E_FAIL);
}

TEST_F(Serialization, NothingIsWrittenAfterAFailure) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(root, MakeText(document, std::u16string(500000, u'x')));
  Append(document, root);
  BufferStream stream;
  stream.FailWrites(2, E_FAIL);
  EXPECT_EQ(SaveTo(document, &stream), E_FAIL);
  EXPECT_EQ(stream.writes(), 2);
}

TEST_F(Serialization, TheTargetMustBeAStream) {
  const Document document = MakeDocument();
  VARIANT target;
  EXPECT_EQ(document->save(target), E_INVALIDARG);
  target.vt = VT_UNKNOWN;
  EXPECT_EQ(document->save(target), E_INVALIDARG);
  target.punkVal = document.get();
  EXPECT_EQ(document->save(target), E_INVALIDARG);
  const Bstr path(u"file");
  target.vt = VT_BSTR;
  target.bstrVal = path.get();
  EXPECT_EQ(document->save(target), E_INVALIDARG);
}

TEST_F(Serialization, ADeepTreeCostsNoStack) {
  const Document document = MakeDocument();
  const auto root = MakeElement(document, u"r");
  Append(document, root);
  constexpr int kDepth = 300000;
  AppendChain(document, root, kDepth);
  EXPECT_EQ(Saved(document).size(), std::string("<r></r><d/>").size() + (kDepth - 1) * 7);
}

}  // namespace
}  // namespace ce::testing
