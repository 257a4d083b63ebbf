// Small documents that would cost much time or memory.
#include <string>

#include "handheld/dom/byte_source.h"
#include "handheld/dom/loader.h"
#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

// ` a0="" a1=""` and so on.
std::string Attributes(int count, const std::string& prefix = "a") {
  std::string text;
  for (int i = 0; i < count; ++i) text += " " + prefix + std::to_string(i) + "='u'";
  return text;
}

// With a byte-order mark.
std::string Wide(std::string_view ascii, bool bigEndian) {
  return Utf16(u"\uFEFF" + std::u16string(ascii.begin(), ascii.end()), bigEndian);
}

HRESULT LoadNew(std::string_view bytes) {
  return LoadInto(MakeDocument(), bytes);
}

class LoadAttributes : public DomTest {};

TEST_F(LoadAttributes, TheBoundItselfLoads) {
  const std::string bytes = "<r" + Attributes(1024) + "/>";
  EXPECT_EQ(LoadNew(bytes), S_OK);
  EXPECT_EQ(LoadNew(Wide(bytes, false)), S_OK);
  EXPECT_EQ(LoadNew(Wide(bytes, true)), S_OK);
  EXPECT_EQ(LoadNew("<r" + Attributes(1024, "xmlns:a") + "/>"), S_OK);
}

TEST_F(LoadAttributes, OneMoreIsRefused) {
  const std::string bytes = "<r" + Attributes(1025) + "/>";
  EXPECT_EQ(LoadNew(bytes), E_FAIL);
  EXPECT_EQ(LoadNew(Wide(bytes, false)), E_FAIL);
  EXPECT_EQ(LoadNew(Wide(bytes, true)), E_FAIL);
  EXPECT_EQ(LoadNew("<r" + Attributes(1025, "xmlns:a") + "/>"), E_FAIL);
  EXPECT_EQ(LoadNew("<r" + Attributes(512) + Attributes(513, "xmlns:a") + "/>"), E_FAIL);
}

TEST_F(LoadAttributes, HundredsOfThousandsAreRefused) {
  EXPECT_EQ(LoadNew("<r" + Attributes(400'000) + "/>"), E_FAIL);
  EXPECT_EQ(LoadNew("<r" + Attributes(400'000, "xmlns:a") + "/>"), E_FAIL);
}

TEST_F(LoadAttributes, ARefusedDocumentIsEmptyAndTakesTheNext) {
  const Document document = MakeDocument();
  EXPECT_EQ(LoadInto(document, "<r><a>x</a><b" + Attributes(1025) + "/></r>"), E_FAIL);
  EXPECT_EQ(Outline(document.get()), u"#document()");
  EXPECT_EQ(LoadInto(document, "<r/>"), S_OK);
}

TEST_F(LoadAttributes, EachElementCountsForItself) {
  EXPECT_EQ(LoadNew("<r>" + Repeated("<a" + Attributes(1000) + "></a>", 5) + "</r>"), S_OK);
}

TEST_F(LoadAttributes, OnlyMarkupCounts) {
  const std::string signs = Repeated("=<\"' =", 5000);
  const std::string plain = Repeated("=\"'> =", 5000);
  EXPECT_EQ(LoadNew("<r><![CDATA[" + signs + "]]]]></r>"), S_OK);
  EXPECT_EQ(LoadNew("<r><!--" + signs + "--></r>"), S_OK);
  EXPECT_EQ(LoadNew("<r><?p " + signs + "?\?></r>"), S_OK);
  EXPECT_EQ(LoadNew("<r>" + plain + "</r>"), S_OK);
  EXPECT_EQ(
      LoadNew("<r a='" + Repeated("=>\" ", 5000) + "' b=\"" + Repeated("=>' &lt;", 5000) + "\"/>"),
      S_OK);
  EXPECT_EQ(LoadNew("<!--" + signs + "--><?p " + signs + "?><r/><!--" + signs + "-->"), S_OK);
}

TEST_F(LoadAttributes, WhatFollowsOtherMarkupStillCounts) {
  const std::string element = "<a" + Attributes(1025) + "/>";
  for (const std::string before : {"<!--'-->", "<!---><-->", "<![CDATA[\"]]>", "<![CDATA[]]]>",
                                   "<?p '?>", "<?p?\?>", "'", "<b c='>\"'/>", "<b c=\"'\"></b >"}) {
    EXPECT_EQ(LoadNew("<r>" + before + element + "</r>"), E_FAIL) << before;
  }
}

TEST_F(LoadAttributes, IllFormedMarkupDoesNotHideThem) {
  const std::string element = "<a" + Attributes(400'000) + "/>";
  std::string quoted = element;
  for (char& c : quoted) c = c == '\'' ? '"' : c;
  EXPECT_EQ(LoadNew("<r><b c='" + quoted + "'/></r>"), E_FAIL);
  EXPECT_EQ(LoadNew("<r><!-- -- " + element + "--></r>"), E_FAIL);
}

TEST_F(LoadAttributes, Utf16CharactersThatContainMarkupBytesAreNone) {
  // U+3D3C and U+2722 have the bytes of "<=" and of quotes.
  std::string bytes = Wide("<r a='", false);
  bytes += Repeated("\x3C\x3D\x22\x27\x27\x22", 3000);
  bytes += Wide("'>", false).substr(2) + Repeated("\x3C\x3D\x3C\x3C", 3000);
  bytes += Wide("</r>", false).substr(2);
  EXPECT_EQ(LoadNew(bytes), S_OK);
}

TEST_F(LoadAttributes, AnEncodingThatHidesThemIsRefused) {
  // U+003D is '=' in UTF-7.
  EXPECT_EQ(LoadNew("<?xml version='1.0' encoding='UTF-7'?><r a+AD0-'1'/>"), E_FAIL);
  std::string mixed = "<?xml version='1.0' encoding='UTF-16LE'?>";
  mixed += Wide("<r/>", false).substr(2);
  EXPECT_EQ(LoadNew(mixed), E_FAIL);
  EXPECT_EQ(LoadNew(Wide("<?xml version='1.0' encoding='ISO-8859-1'?>", false) + "<r/>"), E_FAIL);
}

class LoadNamespaces : public DomTest {};

TEST_F(LoadNamespaces, ThoseInScopeAreBounded) {
  const std::string one = "<a" + Attributes(512, "xmlns:a");
  EXPECT_EQ(LoadNew(one + ">" + one + "/>" + one + "/></a>"), S_OK);
  EXPECT_EQ(LoadNew(one + ">" + one + "><b xmlns='u'/></a></a>"), E_FAIL);
}

class LoadNames : public DomTest {
 protected:
  // Loads into `document_`; the most names that were looked through at a time.
  std::size_t MostNames(std::string_view bytes, HRESULT expected = S_OK) {
    auto* document = new host::dom::Document();
    *document_.put() = document;
    host::dom::LoadWork work;
    EXPECT_EQ(
        host::dom::Load(*document, {reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()},
                        false, host::dom::kMaxTreeBytes, &work),
        expected);
    return work.mostNames;
  }
  void TearDown() override {
    document_.reset();
    DomTest::TearDown();
  }

  // Elements of names that occur once, each with an attribute of such a name.
  static std::string Elements(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
      const std::string n = std::to_string(i);
      text += "<e" + n + " a" + n + "='1'/>";
    }
    return text;
  }

  Document document_;
};

TEST_F(LoadNames, AreLookedThroughAFewAtATimeHoweverManyThereAre) {
  const std::string bytes = "<r>" + Elements(50'000) + "</r>";
  EXPECT_LT(MostNames(bytes), 5000u);
  EXPECT_EQ(Saved(document_), [&] {
    std::string saved = bytes;
    for (char& c : saved) c = c == '\'' ? '"' : c;
    return saved;
  }());
  const std::string wide = "<r" + Attributes(1000) + ">" + Elements(5000) + "</r>";
  EXPECT_LT(MostNames(wide), 6000u);
}

TEST_F(LoadNames, ElementsAndNamespacesStayOpenBeyondATable) {
  const std::string many = Elements(5000);
  const std::string prefix(190, 'p');
  const std::string name(5000, 'n');
  const std::string bytes = "<r xmlns='u' xmlns:q='v'><q:a xml:lang='de'><" + prefix +
                            ":b xmlns:" + prefix + "='w'><" + name + ">" + many + "<q:c q:d='1'/>" +
                            many + "</" + name + "></" + prefix + ":b></q:a></r>";
  EXPECT_LT(MostNames(bytes), 5000u);
  EXPECT_EQ(MostNames("<r><q:a>" + many + "</b:a></r>", E_FAIL) > 0, true);
  EXPECT_EQ(MostNames("<r><q:a>" + many + "</q:b></r>", E_FAIL) > 0, true);
}

TEST_F(LoadNames, ALongPrefixedOneMayNotStayOpenBeyondATable) {
  const std::string name = std::string(150, 'p') + ":" + std::string(50, 'n');
  MostNames("<r><" + name + ">" + Elements(5000) + "</" + name + "></r>", E_FAIL);
  MostNames("<r><" + name + ">" + Elements(500) + "</" + name + ">" + Elements(5000) + "</r>");
}

class LoadMemory : public DomTest {
 protected:
  static HRESULT LoadWithin(std::size_t budget, std::string_view bytes) {
    ComPtr<IXMLDOMDocument> holder;
    auto* document = new host::dom::Document();
    *holder.put() = document;
    return host::dom::Load(*document, {reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()},
                           false, budget);
  }
};

TEST_F(LoadMemory, TheDefaultIsOneGibibyte) {
  EXPECT_EQ(host::dom::kMaxTreeBytes, 1024u * 1024 * 1024);
}

TEST_F(LoadMemory, NodesOfEveryKindAreCharged) {
  for (const std::string piece :
       {"<a/>", "<a>x</a>", "<![CDATA[x]]>", "<!--x-->", "<?p?>", "<a b='x'/>"}) {
    const std::string bytes = "<r>" + Repeated(piece, 10'000) + "</r>";
    EXPECT_EQ(LoadWithin(1 << 20, bytes), S_OK) << piece;
    EXPECT_EQ(LoadWithin(64 << 10, bytes), E_FAIL) << piece;
  }
}

TEST_F(LoadMemory, NoDocumentTakesMoreThanAFewTimesItsBytes) {
  std::string names;
  for (int i = 0; i < 10'000; ++i) names += "<n" + std::to_string(i) + "/>";
  for (const std::string piece :
       {"<a/>", "<a/>1", "<a>1</a>", "<a b=''/>", "<a b='' c=''/>", "<?p?>", "<!---->",
        "1<![CDATA[]]>", "\xC3\xA4<a/>", "&#9;<a/>", "<a xmlns=''/>"}) {
    const std::string bytes = "<r>" + Repeated(piece, 10'000) + "</r>";
    EXPECT_EQ(LoadWithin(5 * bytes.size(), bytes), S_OK) << piece;
  }
  EXPECT_EQ(LoadWithin(5 * names.size(), "<r>" + names + "</r>"), S_OK);
}

TEST_F(LoadMemory, TextsAreCharged) {
  const std::string text(100'000, 'x');
  for (const auto& [before, after] : {std::pair{"<r>", "</r>"},
                                      {"<r><![CDATA[", "]]></r>"},
                                      {"<r><!--", "--></r>"},
                                      {"<r><?p ", "?></r>"},
                                      {"<r a='", "'/>"},
                                      {"<", "/>"},
                                      {"<r ", "='1'/>"}}) {
    EXPECT_EQ(LoadWithin(202'000, before + text + after), S_OK) << before;
    EXPECT_EQ(LoadWithin(200'000, before + text + after), E_FAIL) << before;
  }
}

TEST_F(LoadMemory, ACharacterTakesTwoBytesAUnit) {
  // Three bytes each, then four bytes and two units each.
  EXPECT_EQ(LoadWithin(202'000, "<r>" + Repeated("\xE2\x82\xAC", 100'000) + "</r>"), S_OK);
  EXPECT_EQ(LoadWithin(200'000, "<r>" + Repeated("\xE2\x82\xAC", 100'000) + "</r>"), E_FAIL);
  EXPECT_EQ(LoadWithin(202'000, "<r>" + Repeated("\xF0\x9F\x98\x80", 50'000) + "</r>"), S_OK);
  EXPECT_EQ(LoadWithin(200'000, "<r>" + Repeated("\xF0\x9F\x98\x80", 50'000) + "</r>"), E_FAIL);
}

TEST_F(LoadMemory, BlankTextThatIsDroppedIsGivenBack) {
  const std::string bytes = "<r>" + Repeated("<!--c-->" + std::string(1000, ' '), 100) + "</r>";
  EXPECT_EQ(LoadWithin(100'000, bytes), S_OK);
}

class LoadDocumentType : public DomTest {};

TEST_F(LoadDocumentType, NothingIsExpandedBeforeTheRefusal) {
  std::string entities = "<!ENTITY e0 'lol'>";
  for (int i = 1; i <= 30; ++i) {
    entities += "<!ENTITY e" + std::to_string(i) + " '" +
                Repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  EXPECT_EQ(LoadNew("<!DOCTYPE r [" + entities + "]><r>&e30;</r>"), E_FAIL);
  EXPECT_EQ(LoadNew("<!DOCTYPE r [" + entities + "<!ATTLIST r a CDATA '&e30;'>]><r/>"), E_FAIL);
  // Freeing them would take a frame each.
  EXPECT_EQ(LoadNew("<!DOCTYPE r [<!ATTLIST r a (x" + Repeated("|x", 1'000'000) + ") 'x'>]><r/>"),
            E_FAIL);
}

TEST_F(LoadDocumentType, ItsNameMayStandInText) {
  EXPECT_EQ(LoadNew("<!--<!DOCTYPE r>--><?p <!DOCTYPE r>?><r a='!DOCTYPE'>!DOCTYPE"
                    "<![CDATA[<!DOCTYPE r>]]></r><!--<!DOCTYPE r>-->"),
            S_OK);
}

TEST(KeepsAscii, KnowsTheEncodingsOfALayout) {
  for (const char* name : {"utf-8", "US-ASCII", "iso-8859-15", "Windows-1252", "CP1250"}) {
    EXPECT_TRUE(host::dom::KeepsAscii(name, {1, 0})) << name;
    EXPECT_FALSE(host::dom::KeepsAscii(name, {2, 0})) << name;
  }
  for (const char* name : {"UTF-7", "UTF-16LE", "IBM037", "ISO-2022-JP", "UCS-4LE", ""}) {
    EXPECT_FALSE(host::dom::KeepsAscii(name, {1, 0})) << name;
  }
  EXPECT_TRUE(host::dom::KeepsAscii("UTF-16LE", {2, 0}));
  EXPECT_FALSE(host::dom::KeepsAscii("UTF-16LE", {2, 1}));
  EXPECT_TRUE(host::dom::KeepsAscii("UTF-16BE", {2, 1}));
}

}  // namespace
}  // namespace ce::testing
