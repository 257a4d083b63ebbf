#include <string>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using std::string_view_literals::operator""sv;

class Load : public DomTest {};

struct Case {
  const char* name;
  std::string bytes;
};

void PrintTo(const Case& test, std::ostream* out) {
  *out << test.name;
}

const auto kCaseName = [](const auto& test) { return std::string(test.param.name); };

// Documents whose root holds the text "é€".
class LoadEncoding : public DomTest, public ::testing::WithParamInterface<Case> {};

const std::u16string_view kWide = u"<r>é€</r>";
const std::u16string_view kWideDeclared = u"<?xml version='1.0' encoding='UTF-16'?><r>é€</r>";
const std::u16string_view kWideUpper = u"<?XML version='1.0' encoding='UTF-16'?><r>é€</r>";

INSTANTIATE_TEST_SUITE_P(
    All, LoadEncoding,
    ::testing::Values(
        Case{"Utf8WithoutADeclaration", "<r>é€</r>"}, Case{"Utf8Mark", "\xEF\xBB\xBF<r>é€</r>"},
        Case{"Utf8Declared", "<?xml version='1.0' encoding='utf-8'?><r>é€</r>"},
        Case{"Utf8MarkAndDeclaration",
             "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><r>é€</r>"},
        Case{"Utf8UpperCaseDeclaration", "<?XML version=\"1.0\" encoding=\"UTF-8\"?><r>é€</r>"},
        Case{"Utf8MixedCaseDeclaration", "<?Xml version=\"1.0\"?><r>é€</r>"},
        Case{"Utf8MarkAndUpperCaseDeclaration",
             "\xEF\xBB\xBF<?XML\nversion=\"1.0\" encoding=\"UTF-8\"?><r>é€</r>"},
        Case{"Utf16LittleEndianMark", Utf16(u"\uFEFF" + std::u16string(kWide), false)},
        Case{"Utf16BigEndianMark", Utf16(u"\uFEFF" + std::u16string(kWide), true)},
        Case{"Utf16LittleEndianMarkDeclared",
             Utf16(u"\uFEFF" + std::u16string(kWideDeclared), false)},
        Case{"Utf16BigEndianMarkDeclared", Utf16(u"\uFEFF" + std::u16string(kWideDeclared), true)},
        Case{"Utf16LittleEndianMarkUpperCase",
             Utf16(u"\uFEFF" + std::u16string(kWideUpper), false)},
        Case{"Utf16BigEndianMarkUpperCase", Utf16(u"\uFEFF" + std::u16string(kWideUpper), true)},
        Case{"Utf16LittleEndianWithoutAMark", Utf16(kWideDeclared, false)},
        Case{"Utf16BigEndianWithoutAMark", Utf16(kWideDeclared, true)},
        Case{"Utf16WithoutAMarkUpperCase", Utf16(kWideUpper, false)},
        Case{"Windows1252", "<?xml version='1.0' encoding='windows-1252'?><r>\xE9\x80</r>"},
        Case{"Windows1252UpperCaseDeclaration",
             "<?XML version='1.0' encoding='Windows-1252'?><r>\xE9\x80</r>"},
        Case{"Latin1WithAReference",
             "<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE9&#x20AC;</r>"},
        Case{"AsciiWithReferences", "<r>&#233;&#8364;</r>"}),
    kCaseName);

TEST_P(LoadEncoding, IsRead) {
  const Document document = Loaded(GetParam().bytes);
  EXPECT_EQ(Outline(Root(document).get()), u"r(#text=é€)");
}

// "<!DOCTYPE r>" before the root, in the document's own units.
std::string WithADocumentType(std::string bytes) {
  const bool isWide = bytes.find('\0') != bytes.npos;
  const bool bigEndian = isWide && bytes.find("\0<"sv) < bytes.find("<\0"sv);
  const std::string root = isWide ? Utf16(u"<r>", bigEndian) : "<r>";
  const std::string type = isWide ? Utf16(u"<!DOCTYPE r>", bigEndian) : "<!DOCTYPE r>";
  return bytes.insert(bytes.find(root), type);
}

TEST_P(LoadEncoding, IsRefusedWithADocumentType) {
  EXPECT_EQ(LoadInto(MakeDocument(), WithADocumentType(GetParam().bytes)), E_FAIL);
}

class LoadRefusal : public DomTest, public ::testing::WithParamInterface<Case> {};

INSTANTIATE_TEST_SUITE_P(
    All, LoadRefusal,
    ::testing::Values(
        Case{"Nothing", ""}, Case{"BlanksAlone", "  \n"}, Case{"Text", "hello"},
        Case{"NoRoot", "<?xml version='1.0'?><!-- c -->"}, Case{"Unclosed", "<r>"},
        Case{"CutOff", "<r><a>text</a"}, Case{"WrongEnd", "<a><b></a></b>"},
        Case{"TwoRoots", "<a/><b/>"}, Case{"TextAfterTheRoot", "<a/>x"},
        Case{"ZeroAfterTheRoot", std::string("<a/>\0", 5)},
        Case{"ZeroAndMoreAfterTheRoot", std::string("<a/>\0<b>", 8)},
        Case{"ZeroInText", std::string("<a>x\0y</a>", 10)},
        Case{"AttributeTwice", "<r a='1' a='2'/>"}, Case{"AttributeWithoutQuotes", "<r a=1/>"},
        Case{"AttributeWithoutAValue", "<r a/>"}, Case{"LessThanInAnAttribute", "<r a='<'/>"},
        Case{"BadName", "<1r/>"}, Case{"BadAttributeName", "<r -a='1'/>"},
        Case{"BareAmpersand", "<r>a & b</r>"}, Case{"UnknownEntity", "<r>&nothing;</r>"},
        Case{"UnknownEntityInAnAttribute", "<r a='&nothing;'/>"},
        Case{"CdataEndInText", "<r>]]></r>"}, Case{"HyphensInAComment", "<r><!-- a -- b --></r>"},
        Case{"ControlCharacter", "<r>\x01</r>"}, Case{"ReferenceToAControl", "<r>&#1;</r>"},
        Case{"ReferenceToASurrogate", "<r>&#xD800;</r>"},
        Case{"ReferenceBeyondUnicode", "<r>&#x110000;</r>"},
        Case{"ReferenceToANoncharacter", "<r>&#xFFFE;</r>"},
        Case{"LateDeclaration", " <?xml version='1.0'?><r/>"},
        Case{"LateUpperCaseDeclaration", "<r><?XML version='1.0'?></r>"},
        Case{"DeclarationWithoutAVersion", "<?xml encoding='UTF-8'?><r/>"},
        Case{"NamespaceDeclarationThatUnbinds", "<r xmlns:p=''/>"},
        Case{"UnknownEncoding", "<?xml version='1.0' encoding='nonsense'?><r/>"},
        Case{"BytesLabelledUtf16", "<?xml version='1.0' encoding='UTF-16'?><r/>"},
        Case{"BadUtf8", "<r>\xFF</r>"}, Case{"CutOffUtf8", "<r>\xE2\x82</r>"},
        Case{"OverlongUtf8", "<r>\xC0\xBC</r>"}, Case{"OverlongUtf8OfThree", "<r>\xE0\x80\xBC</r>"},
        Case{"OverlongUtf8InAName", "<r\xC1\xA1/>"}, Case{"SurrogateInUtf8", "<r>\xED\xA0\x80</r>"},
        Case{"BeyondUnicodeInUtf8", "<r>\xF4\x90\x80\x80</r>"},
        Case{"Latin1WithoutADeclaration", "<r>\xE9</r>"},
        Case{"UndefinedInWindows1252", "<?xml version='1.0' encoding='windows-1252'?><r>\x81</r>"},
        Case{"OddUtf16", Utf16(u"\uFEFF<r/>", false) + "\n"},
        Case{"LoneSurrogateInUtf16", Utf16(u"\uFEFF<r>\xD800</r>", false)},
        Case{"DocumentType", "<!DOCTYPE r><r/>"},
        Case{"DocumentTypeOutside", "<!DOCTYPE r SYSTEM 'r.dtd'><r/>"},
        Case{"DocumentTypeWithAPublicName", "<!DOCTYPE r PUBLIC 'p' 'r.dtd'><r/>"},
        Case{"DocumentTypeWithASubset", "<!DOCTYPE r [<!ELEMENT r ANY>]><r/>"},
        Case{"DocumentTypeBehindOtherMarkup",
             "<?xml version='1.0'?><!--<r>--><?p '<r>'?>\n<!DOCTYPE r ><r/>"},
        Case{"Entity", "<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>"},
        Case{"EntityInAnAttribute", "<!DOCTYPE r [<!ENTITY e 'x'>]><r a='&e;'/>"},
        Case{"EntityThatNamesItself", "<!DOCTYPE r [<!ENTITY e '&e;'>]><r>&e;</r>"},
        Case{"ExternalEntity", "<!DOCTYPE r [<!ENTITY e SYSTEM '/etc/passwd'>]><r>&e;</r>"},
        Case{"ParameterEntity", "<!DOCTYPE r [<!ENTITY % e SYSTEM '/etc/passwd'>%e;]><r/>"},
        Case{"DefaultAttribute", "<!DOCTYPE r [<!ATTLIST r a CDATA 'x'>]><r/>"}),
    kCaseName);

TEST_P(LoadRefusal, FailsAndLeavesAnEmptyDocument) {
  const Document document = Loaded("<before/>");
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(LoadInto(document, GetParam().bytes), E_FAIL);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(Outline(document.get()), u"#document()");
  EXPECT_FALSE(Root(document));
  // The same document takes the next one.
  EXPECT_EQ(LoadInto(document, "<after/>"), S_OK);
  EXPECT_EQ(Outline(document.get()), u"#document(after())");
}

TEST_P(LoadRefusal, HoldsWithExternalsResolvedToo) {
  const Document document = MakeDocument();
  EXPECT_EQ(document->put_resolveExternals(VARIANT_TRUE), S_OK);
  EXPECT_EQ(document->put_validateOnParse(VARIANT_TRUE), S_OK);
  EXPECT_EQ(LoadInto(document, GetParam().bytes), E_FAIL);
}

struct TreeCase {
  const char* name;
  std::string bytes;
  std::u16string_view outline;
};

void PrintTo(const TreeCase& test, std::ostream* out) {
  *out << test.name;
}

class LoadTree : public DomTest, public ::testing::WithParamInterface<TreeCase> {};

INSTANTIATE_TEST_SUITE_P(
    All, LoadTree,
    ::testing::Values(TreeCase{"BlankTextIsDropped", "<r>\n <a> x </a>\r\n\t<b> </b></r>",
                               u"r(a(#text= x ),b())"},
                      TreeCase{"TextIsOneNode", "<r>a&lt;b&#99;\r\nd&amp;&gt;&apos;&quot;</r>",
                               u"r(#text=a<bc\nd&>'\")"},
                      TreeCase{"LineEndsBecomeLineFeeds", "<r>a\r\nb\rc\nd\r\r\n</r>",
                               u"r(#text=a\nb\nc\nd\n\n)"},
                      TreeCase{"AReferenceKeepsItsCarriageReturn", "<r>a&#13;&#10;b</r>",
                               u"r(#text=a\r\nb)"},
                      TreeCase{"CdataIsANodeOfItsOwn", "<r>a<![CDATA[<b>]]>c</r>",
                               u"r(#text=a,#cdata-section=<b>,#text=c)"},
                      TreeCase{"BlankCdataStays", "<r><![CDATA[ ]]></r>", u"r(#cdata-section= )"},
                      TreeCase{"CommentsAndInstructionsAreNodes", "<r><!--c--> <?t  d ?>a</r>",
                               u"r(#comment=c,t=d ,#text=a)"},
                      TreeCase{"PrefixesStayInTheName", "<p:r xmlns:p='u'><p:a/><q:b/></p:r>",
                               u"p:r(p:a(),q:b())"}),
    kCaseName);

TEST_P(LoadTree, IsBuilt) {
  const Document document = Loaded(GetParam().bytes);
  EXPECT_EQ(Outline(Root(document).get()), GetParam().outline);
}

TEST_F(Load, PreservesBlankTextWhenAsked) {
  const Document document = Loaded("<r>\n <a> </a>\r\n</r>", true);
  EXPECT_EQ(Outline(Root(document).get()), u"r(#text=\n ,a(#text= ),#text=\n)");
}

TEST_F(Load, DropsBlankTextByDefault) {
  const Document document = MakeDocument();
  ASSERT_EQ(LoadInto(document, "<r> <a/> </r>"), S_OK);
  EXPECT_EQ(Outline(Root(document).get()), u"r(a())");
}

TEST_F(Load, NodesAroundTheRootStay) {
  const Document document = Loaded("<!--a--><?p d?>\n<r/>\n<!--b-->");
  EXPECT_EQ(Outline(document.get()), u"#document(#comment=a,p=d,r(),#comment=b)");
}

TEST_F(Load, TheDeclarationIsANodeThatSaysUtf8) {
  struct Declaration {
    const char* bytes;
    std::u16string_view outline;
  };
  for (const Declaration& c :
       {Declaration{"<?xml version='1.0' encoding='ISO-8859-1' standalone='yes'?><r/>",
                    u"#document(xml=version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\",r())"},
        Declaration{"<?XML version=\"1.0\" encoding=\"UTF-8\"?><r/>",
                    u"#document(XML=version=\"1.0\" encoding=\"UTF-8\",r())"},
        Declaration{"<?xml version='1.0'?><r/>", u"#document(xml=version=\"1.0\",r())"},
        Declaration{"<?xml version='1.0' standalone='no'?><r/>",
                    u"#document(xml=version=\"1.0\" standalone=\"no\",r())"}}) {
    EXPECT_EQ(Outline(Loaded(c.bytes).get()), c.outline) << c.bytes;
  }
}

TEST_F(Load, AttributesKeepNamesAndNormalisedValues) {
  const std::string_view bytes =
      "<r xmlns='u' xml:lang='en' b='1' p:a='&lt;&quot;&amp;' c='x\r\ny\tz' d='&#13;&#10;&#9;' "
      "xmlns:p='v'/>";
  EXPECT_EQ(Saved(Loaded(bytes)),
            "<r xmlns=\"u\" xmlns:p=\"v\" xml:lang=\"en\" b=\"1\" p:a=\"&lt;&quot;&amp;\" "
            "c=\"x y z\" d=\"&#13;&#10;&#9;\"/>");
}

TEST_F(Load, ReplacesWhatWasLoadedBefore) {
  const Document document = Loaded("<a><b/></a>");
  EXPECT_EQ(LoadInto(document, "<c/>"), S_OK);
  EXPECT_EQ(Outline(document.get()), u"#document(c())");
}

TEST_F(Load, TheSourceMustBeAByteArray) {
  const Document document = MakeDocument();
  VARIANT source;
  source.vt = VT_NULL;
  VARIANT_BOOL successful = VARIANT_TRUE;
  EXPECT_EQ(document->load(source, &successful), E_INVALIDARG);
  EXPECT_EQ(successful, VARIANT_FALSE);
  source.vt = VT_ARRAY | VT_UI1;
  EXPECT_EQ(document->load(source, &successful), E_INVALIDARG);
  const Bstr path(u"file.xml");
  source.vt = VT_BSTR;
  source.bstrVal = path.get();
  EXPECT_EQ(document->load(source, &successful), E_INVALIDARG);
  EXPECT_EQ(document->load(source, nullptr), E_POINTER);
}

class LoadBound : public DomTest {};

TEST_F(LoadBound, DepthOf256Loads) {
  const Document document = Loaded(Repeated("<a>", 256) + "x" + Repeated("</a>", 256));
  EXPECT_EQ(Saved(document), Repeated("<a>", 256) + "x" + Repeated("</a>", 256));
}

TEST_F(LoadBound, DepthOf257IsRefused) {
  EXPECT_EQ(LoadInto(MakeDocument(), Repeated("<a>", 257) + Repeated("</a>", 257)), E_FAIL);
  EXPECT_EQ(LoadInto(MakeDocument(), Repeated("<a>", 1000000)), E_FAIL);
}

TEST_F(LoadBound, HugeTextsLoad) {
  constexpr std::size_t kSize = 20 * 1024 * 1024;
  const Document text = Loaded("<r>" + std::string(kSize, 'x') + "</r>");
  EXPECT_EQ(ValueOf(FirstChild(Root(text).get()).get()).size(), kSize);
  // Beyond ten million bytes, too, in the other places.
  const std::string part(11'000'000, 'x');
  for (const auto& [before, after] :
       {std::pair{"<r><![CDATA[", "]]></r>"}, {"<r a=\"", "\"/>"}, {"<r><!--", "--></r>"}}) {
    const std::string bytes = before + part + after;
    EXPECT_TRUE(Saved(Loaded(bytes)) == bytes) << before;
  }
}

}  // namespace
}  // namespace ce::testing
