// Documents as our tree has them, and as libxml2's own tree does: the same ones are refused, and
// the others have the same elements, attributes, texts, CDATA sections, comments and instructions.
//
// Ours is made of what libxml2's parser reports, piece by piece. It refuses more, and means to: a
// document type, what goes beyond its bounds, a declaration that gives a prefix the namespace of
// "xml", which would get lost, bytes behind a zero byte, and encodings whose markup is not where
// ASCII's would be. An upper-case declaration, which libxml2 refuses, is one to it. CDATA sections
// side by side are one in libxml2's tree alone, so the comparison takes them for one.
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/files/atomic_file.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "handheld/dom/attribute_bound.h"
#include "handheld/dom/byte_source.h"
#include "handheld/dom/loader.h"
#include "tests/handheld/dom/dom_support.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace dom = ce::host::dom;
using Attributes = std::map<std::string, std::string>;

// A tree as text, a line a node. Texts that are side by side are one.
class TreeText {
 public:
  static constexpr const char* kText = "text ";
  static constexpr const char* kCdata = "cdata ";

  void Begin(const std::string& name, const Attributes& attributes) {
    Line("<" + name);
    for (const auto& [attribute, value] : attributes) {
      text_ += ' ' + attribute + '=' + Quoted(value);
    }
    ++depth_;
  }
  void End() {
    Flush();
    --depth_;
  }
  void Text(const char* kind, const std::string& value) {
    if (kind != kind_) Flush();
    kind_ = kind;
    pending_ += value;
  }
  void Leaf(const std::string& name, const std::string& value) { Line(name + ' ' + Quoted(value)); }
  std::string Take() {
    Flush();
    return std::move(text_);
  }

 private:
  static std::string Quoted(const std::string& value) {
    std::string quoted = "\"";
    for (const char c : value) {
      if (c == '\n' || c == '\\' || c == '"') quoted += '\\';
      quoted += c == '\n' ? 'n' : c;
    }
    return quoted + '"';
  }
  void Line(const std::string& line) {
    Flush();
    Put(line);
  }
  void Put(const std::string& line) { text_ += '\n' + std::string(depth_, ' ') + line; }
  void Flush() {
    if (kind_ != nullptr) Put(kind_ + Quoted(pending_));
    kind_ = nullptr;
    pending_.clear();
  }

  std::string text_, pending_;
  const char* kind_ = nullptr;
  std::size_t depth_ = 0;
};

std::string Chars(const xmlChar* text) {
  return text ? reinterpret_cast<const char*>(text) : "";
}

std::string QualifiedName(const xmlNs* space, const xmlChar* name) {
  return space && space->prefix ? Chars(space->prefix) + ':' + Chars(name) : Chars(name);
}

// libxml2's tree, and what is to be said of it.
class TheirTree {
 public:
  explicit TheirTree(const std::string& bytes) {
    xmlSetStructuredErrorFunc(this, [](void* self, xmlErrorPtr error) {
      auto& tree = *static_cast<TheirTree*>(self);
      tree.losesNamespace_ = tree.losesNamespace_ || error->code == XML_NS_ERR_XML_NAMESPACE;
    });
    document_.reset(xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                  XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE));
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (document_) Measure(document_->children, 0, 0);
  }

  bool isThere() const { return document_ != nullptr; }
  bool hasType() const { return xmlGetIntSubset(document_.get()) != nullptr; }
  bool losesNamespace() const { return losesNamespace_; }
  bool isBeyondBounds() const { return isBeyondBounds_; }
  std::string encoding() const { return Chars(document_->encoding); }
  const std::set<std::string>& attributeNames() const { return attributeNames_; }

  std::string Text(bool preserveWhiteSpace) const {
    TreeText text;
    Show(document_->children, preserveWhiteSpace, text);
    return text.Take();
  }

 private:
  struct Free {
    void operator()(xmlDocPtr document) const { xmlFreeDoc(document); }
  };

  static Attributes AttributesOf(const xmlNode* element) {
    Attributes attributes;
    for (const xmlNs* space = element->nsDef; space; space = space->next) {
      attributes[space->prefix ? "xmlns:" + Chars(space->prefix) : "xmlns"] = Chars(space->href);
    }
    for (xmlAttr* each = element->properties; each; each = each->next) {
      xmlChar* const value = xmlNodeGetContent(reinterpret_cast<xmlNode*>(each));
      attributes[QualifiedName(each->ns, each->name)] = Chars(value);
      xmlFree(value);
    }
    return attributes;
  }

  void Measure(const xmlNode* node, int depth, int namespaces) {
    for (; node; node = node->next) {
      if (node->type != XML_ELEMENT_NODE) continue;
      int own = 0;
      for (const xmlNs* space = node->nsDef; space; space = space->next) ++own;
      const Attributes attributes = AttributesOf(node);
      for (const auto& [name, value] : attributes) attributeNames_.insert(name);
      isBeyondBounds_ = isBeyondBounds_ || depth == dom::kMaxDepth ||
                        namespaces + own > dom::kMaxNamespaces ||
                        attributes.size() > static_cast<std::size_t>(dom::kMaxAttributes);
      Measure(node->children, depth + 1, namespaces + own);
    }
  }

  static void Show(const xmlNode* node, bool preserveWhiteSpace, TreeText& text) {
    for (; node; node = node->next) {
      switch (node->type) {
        case XML_ELEMENT_NODE:
          text.Begin(QualifiedName(node->ns, node->name), AttributesOf(node));
          Show(node->children, preserveWhiteSpace, text);
          text.End();
          break;
        case XML_TEXT_NODE:
          if (!preserveWhiteSpace && xmlIsBlankNode(node)) break;
          text.Text(TreeText::kText, Chars(node->content));
          break;
        case XML_CDATA_SECTION_NODE:
          text.Text(TreeText::kCdata, Chars(node->content));
          break;
        case XML_COMMENT_NODE:
          text.Leaf("#comment", Chars(node->content));
          break;
        default:  // instructions; there are no others without a document type
          text.Leaf('?' + Chars(node->name), Chars(node->content));
          break;
      }
    }
  }

  std::unique_ptr<xmlDoc, Free> document_;
  bool losesNamespace_ = false;
  bool isBeyondBounds_ = false;
  std::set<std::string> attributeNames_;
};

std::string Utf8(const std::u16string& text) {
  return text::ToUtf8Lossy(text);
}

// Of these names; the interface does not list them.
Attributes OurAttributesOf(ce::IXMLDOMNode* element, const std::set<std::string>& names) {
  Attributes attributes;
  const auto map = ce::testing::AttributesOf(element);
  for (const std::string& name : names) {
    ce::testing::Node attribute;
    map->getNamedItem(ce::Bstr(text::FromUtf8Lossy(name)).get(), attribute.put());
    if (attribute) attributes[name] = Utf8(ce::testing::ValueOf(attribute.get()));
  }
  return attributes;
}

void ShowOurs(ce::IXMLDOMNode* parent, const std::set<std::string>& names, TreeText& text) {
  for (auto node = ce::testing::FirstChild(parent); node;
       node = ce::testing::NextSibling(node.get())) {
    const std::string name = Utf8(ce::testing::NameOf(node.get()));
    ce::Variant value;
    node->get_nodeValue(value.put());
    if (value.get().vt == ce::VT_NULL) {
      text.Begin(name, OurAttributesOf(node.get(), names));
      ShowOurs(node.get(), names, text);
      text.End();
      continue;
    }
    const std::string content = Utf8(std::u16string(value.text()));
    if (name == "#text") {
      text.Text(TreeText::kText, content);
    } else if (name == "#cdata-section") {
      text.Text(TreeText::kCdata, content);
    } else if (name == "#comment") {
      text.Leaf(name, content);
    } else if (text::ToUpperAscii(name) != "XML") {  // the declaration is no node of libxml2's
      text.Leaf('?' + name, content);
    }
  }
}

// As libxml2 takes it.
std::string WithLowerCaseDeclaration(std::string bytes) {
  std::vector<std::size_t> places;
  std::string start;
  for (std::size_t i = 0; i < bytes.size() && i < 16; ++i) {
    const auto unit = static_cast<unsigned char>(bytes[i]);
    if (unit == 0 || unit > 0x7F) continue;
    places.push_back(i);
    start += bytes[i];
  }
  const bool isOne = text::StartsWithNoCase(start, "<?xml") && start.size() > 5 &&
                     std::string_view(" \t\r\n").find(start[5]) != std::string_view::npos;
  if (!isOne) return bytes;
  for (std::size_t i = 2; i < 5; ++i) bytes[places[i]] = "<?xml"[i];
  return bytes;
}

bool IsReadAsAscii(const std::string& bytes, const std::string& encoding) {
  const std::span document(reinterpret_cast<const ce::BYTE*>(bytes.data()), bytes.size());
  const dom::ByteLayout layout = dom::ByteSource(document).layout();
  if (layout.width == 2) return encoding.empty() || text::StartsWithNoCase(encoding, "UTF-16");
  return encoding.empty() || dom::KeepsAscii(encoding, layout);
}

// Empty where both agree, else what the difference is.
std::string Difference(const std::string& bytes) {
  const TheirTree theirs(WithLowerCaseDeclaration(bytes));
  for (const bool preserve : {false, true}) {
    const ce::testing::Document ours = ce::testing::MakeDocument();
    ours->put_preserveWhiteSpace(preserve ? ce::VARIANT_TRUE : ce::VARIANT_FALSE);
    const bool loads = ce::Succeeded(ce::testing::LoadInto(ours, bytes));
    if (!theirs.isThere()) {
      if (loads) return "only ours takes it";
      continue;
    }
    const bool mustNot = theirs.hasType() || theirs.losesNamespace() || theirs.isBeyondBounds();
    if (loads && mustNot) return "it is to be refused";
    const bool mayNot =
        mustNot || bytes.find('\0') != bytes.npos || !IsReadAsAscii(bytes, theirs.encoding());
    if (!loads && !mayNot) return "only libxml2 takes it";
    if (!loads) continue;
    TreeText text;
    ShowOurs(ours.get(), theirs.attributeNames(), text);
    const std::string shown = text.Take();
    const std::string expected = theirs.Text(preserve);
    if (shown != expected) return "ours:" + shown + "\nlibxml2's:" + expected;
  }
  return {};
}

std::string AnyOf(std::initializer_list<std::string> texts) {
  return *rc::gen::elementOf(std::vector<std::string>(texts));
}

std::string AnyText() {
  std::string text;
  for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
    text += AnyOf({"a",
                   " ",
                   "\n",
                   "\r\n",
                   "\r",
                   "\t",
                   "\u00E9",
                   "\u5C71",
                   "\U0001F600",
                   "&amp;",
                   "&lt;",
                   "&gt;",
                   "&quot;",
                   "&apos;",
                   "&#10;",
                   "&#xD;",
                   "&#x1F600;",
                   "&#9;",
                   ">",
                   "\u0085",
                   "\u2028",
                   "]]",
                   std::string(400, 'w')});
  }
  return text;
}

std::string AnyAttributes() {
  std::string text;
  std::set<std::string> names;
  for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
    const std::string name =
        AnyOf({"x", "y", "p:x", "xml:space", "xmlns", "xmlns:p", "xmlns:q", "\u00E9", "q:x"});
    // Twice the same is not well-formed; now and then.
    if (!names.insert(name).second && *rc::gen::inRange(0, 8) != 0) continue;
    const std::string quote = AnyOf({"'", "\""});
    text += AnyOf({" ", "\n", "  "}) + name + AnyOf({"=", " = "}) + quote;
    text += name.starts_with("xmlns") ? AnyOf({"u", "v", "urn:a&amp;b"}) : AnyText();
    text += quote;
  }
  return text;
}

std::string AnyNode(int depth);

std::string AnyElement(int depth) {
  const std::string name = AnyOf({"a", "b", "p:c", "q:a", "\u5C71", "A.b-c_d"});
  std::string text = "<" + name + AnyAttributes();
  if (*rc::gen::inRange(0, 4) == 0) return text + AnyOf({"/>", " />"});
  text += ">";
  for (int i = *rc::gen::inRange(0, 5); i > 0; --i) text += AnyNode(depth + 1);
  return text + "</" + name + AnyOf({"", " "}) + ">";
}

std::string AnyAside() {
  return AnyOf({"<!--c-->", "<!-- a\r\n-b<&> -->", "<!---->", "<?p?>", "<?p  d ?>",
                "<?q a?b<&\r\n?>", "<?xml-style x?>"});
}

std::string AnyNode(int depth) {
  switch (*rc::gen::inRange(0, depth > 4 ? 4 : 7)) {
    case 0:
      return AnyAside();
    case 1:
      return "<![CDATA[" + AnyOf({"", "a", " ", "<a>&amp;]]", "\r\n\u5C71"}) + "]]>";
    case 2:
    case 3:
      return AnyText();
    default:
      return AnyElement(depth);
  }
}

// Something put in, taken out or put in another's place: what is refused for the most part.
std::string Damaged(std::string bytes) {
  const auto at = *rc::gen::inRange<std::size_t>(0, bytes.size());
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      return bytes.erase(at, *rc::gen::inRange<std::size_t>(1, 4));
    case 1:
      return bytes.insert(
          at, AnyOf({"<", ">", "&", "]]>", "\xFF", "\x01", "--", "<!DOCTYPE a>", "'", "&x;", "&#0;",
                     "&#xD800;", "</a>", "<a>", "\xC3", "=", ":"}));
    default:
      bytes[at] = *rc::gen::arbitrary<char>();
      return bytes;
  }
}

std::string AnyDocument() {
  std::string text =
      AnyOf({"", "<?xml version='1.0'?>", "<?XML version=\"1.0\" encoding=\"UTF-8\"?>",
             "<?xml version='1.0' encoding='utf-8' standalone='yes'?>\r\n", "\uFEFF"});
  if (*rc::gen::inRange(0, 4) == 0) text += AnyAside() + AnyOf({"", "\n"});
  text += AnyElement(0);
  if (*rc::gen::inRange(0, 4) == 0) text += AnyOf({"", "\n"}) + AnyAside();
  switch (*rc::gen::inRange(0, 8)) {
    case 0:
    case 1:
      return Damaged(std::move(text));
    case 2: {  // 16 bits, of either order
      if (text.find("encoding") != text.npos) return text;
      if (!text.starts_with("\uFEFF")) text = "\uFEFF" + text;
      return ce::testing::Utf16(text::FromUtf8Lossy(text), *rc::gen::arbitrary<bool>());
    }
    case 3:  // what is not ASCII is taken for other letters
      if (text.starts_with("<?") || text.starts_with("\uFEFF")) return text;
      return AnyOf({"<?xml version='1.0' encoding='ISO-8859-1'?>",
                    "<?xml version='1.0' encoding='windows-1252'?>"}) +
             text;
    default:
      return text;
  }
}

RC_GTEST_PROP(Xml, IsReadAsLibxml2ReadsIt, ()) {
  const std::string bytes = AnyDocument();
  RC_LOG() << bytes << "\n";
  RC_CLASSIFY(ce::Succeeded(ce::testing::LoadInto(ce::testing::MakeDocument(), bytes)), "taken");
  const std::string difference = Difference(bytes);
  RC_LOG() << difference;
  RC_ASSERT(difference.empty());
}

TEST(Xml, ThatFuzzingKeptIsReadAsLibxml2ReadsIt) {
  int looked = 0;
  for (const char* corpus : {"upload", "xml_load", "records"}) {
    const std::string folder = SourcePath(std::string("fuzz/corpus/") + corpus);
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      EXPECT_EQ(Difference(files::ReadWholeFile(entry.path())), "") << entry.path();
      ++looked;
    }
  }
  EXPECT_GT(looked, 30);
}

TEST(Xml, BeyondTheBoundsIsRefused) {
  const auto nested = [](int depth) {
    return ce::testing::Repeated("<a>", depth) + ce::testing::Repeated("</a>", depth);
  };
  for (const std::string& bytes :
       {nested(dom::kMaxDepth), nested(dom::kMaxDepth + 1), std::string("<!DOCTYPE a><a/>"),
        std::string("<a xmlns:p='http://www.w3.org/XML/1998/namespace'/>")}) {
    EXPECT_EQ(Difference(bytes), "") << bytes.substr(0, 60);
  }
}

}  // namespace
}  // namespace corvane::testing
