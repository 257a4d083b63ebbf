#include "desktop/wire/xml_records.h"

#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <charconv>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "common/text/text.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

struct XmlDeleter {
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using DocumentPtr = std::unique_ptr<xmlDoc, XmlDeleter>;

std::string Text(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

const xmlChar* Xml(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

// The agent writes the declaration's target in capitals, which XML has as a reserved name.
std::string WithDeclarationInSmallLetters(std::string_view document) {
  std::string copy(document);
  const std::size_t at = document.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  if (document.substr(at, 5) == "<?XML") copy.replace(at, 5, "<?xml");
  return copy;
}

// Without memory the library may go on with a document that lacks a text; but it says so.
class RefusedMemory {
 public:
  RefusedMemory() { xmlSetStructuredErrorFunc(this, Note); }
  ~RefusedMemory() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
  RefusedMemory(const RefusedMemory&) = delete;
  RefusedMemory& operator=(const RefusedMemory&) = delete;

  void ThrowIfAny() const {
    if (any_) throw std::bad_alloc();
  }

 private:
  static void Note(void* self, xmlError* error) {
    if (error->code == XML_ERR_NO_MEMORY) static_cast<RefusedMemory*>(self)->any_ = true;
  }

  bool any_ = false;
};

DocumentPtr Parse(const std::string& document, const RefusedMemory& refused) {
  const std::unique_ptr<xmlParserCtxt, XmlDeleter> context(xmlNewParserCtxt());
  if (context == nullptr) throw std::bad_alloc();
  if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw Error("the document is too large");
  }
  constexpr int kOptions =
      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_BIG_LINES;
  DocumentPtr parsed(xmlCtxtReadMemory(context.get(), document.data(),
                                       static_cast<int>(document.size()), nullptr, nullptr,
                                       kOptions));
  refused.ThrowIfAny();
  if (parsed == nullptr) {
    const xmlError* error = xmlCtxtGetLastError(context.get());
    if (error == nullptr || error->message == nullptr) throw std::bad_alloc();
    std::string message = error->message;
    while (message.ends_with('\n')) message.pop_back();
    throw Error(fmt::format("line {}: {}", error->line, message));
  }
  if (parsed->intSubset != nullptr) throw Error("a document type declaration is not accepted");
  return parsed;
}

bool HasAsciisBytes(const xmlDoc& parsed, std::string_view document) {
  // UTF-16 and UTF-32, with or without a mark, have a zero or a mark's byte up front.
  const std::string_view head = document.substr(0, 4);
  if (head.find('\0') != std::string_view::npos || head.starts_with("\xFF\xFE") ||
      head.starts_with("\xFE\xFF")) {
    return false;
  }
  return parsed.encoding == nullptr || xmlStrcasecmp(parsed.encoding, Xml("UTF-8")) == 0;
}

constexpr std::size_t kNone = std::string_view::npos;

std::size_t After(std::string_view document, std::string_view what, std::size_t from) {
  const std::size_t found = document.find(what, from);
  return found == kNone ? document.size() : found + what.size();
}

// A ">" inside an attribute's value does not end the tag.
std::size_t AfterStartTag(std::string_view document, std::size_t from) {
  std::size_t at = document.find_first_of("\"'>", from);
  while (at != kNone && document[at] != '>') {
    at = document.find(document[at], at + 1);
    if (at != kNone) at = document.find_first_of("\"'>", at + 1);
  }
  return at == kNone ? document.size() : at + 1;
}

// The element children of the root, start tag to end tag, in the document's own bytes. It must be
// known to be well-formed, without a document type, in an encoding that has ASCII's bytes for
// ASCII.
std::vector<std::string_view> ChildSpans(std::string_view document) {
  std::vector<std::string_view> spans;
  std::size_t depth = 0;
  std::size_t begin = 0;
  std::size_t at = 0;
  while ((at = document.find('<', at)) != kNone) {
    const std::string_view rest = document.substr(at);
    if (rest.starts_with("<!--")) {
      at = After(document, "-->", at + 4);
    } else if (rest.starts_with("<![CDATA[")) {
      at = After(document, "]]>", at);
    } else if (rest.starts_with("<?")) {
      at = After(document, "?>", at);
    } else if (rest.starts_with("</")) {
      at = After(document, ">", at);
      if (--depth == 1) spans.push_back(document.substr(begin, at - begin));
    } else {
      const std::size_t end = AfterStartTag(document, at);
      const bool empty = document[end - 2] == '/';
      if (depth == 1) begin = at;
      if (depth == 1 && empty) spans.push_back(document.substr(begin, end - begin));
      if (!empty) ++depth;
      at = end;
    }
  }
  return spans;
}

// The parser bounds the depth.
XmlElement Convert(const xmlNode& node) {
  XmlElement element;
  element.name = Text(node.name);
  for (const xmlNode* child = node.children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      element.children.push_back(Convert(*child));
    } else if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE) {
      element.text += Text(child->content);
    }
  }
  // The parser turns the line ends of the document into line feeds, but not those written "&#13;".
  element.text = text::NormalizeLineBreaks(std::move(element.text));
  return element;
}

std::string Attribute(const xmlNode& node, const char* name) {
  const std::unique_ptr<xmlChar, XmlDeleter> value(xmlGetNoNsProp(&node, Xml(name)));
  return Text(value.get());
}

std::string Serialised(xmlDoc& document, xmlNode& node) {
  const std::unique_ptr<xmlBuffer, XmlDeleter> buffer(xmlBufferCreate());
  if (buffer == nullptr || xmlNodeDump(buffer.get(), &document, &node, 0, 0) < 0) {
    throw std::bad_alloc();
  }
  return Text(xmlBufferContent(buffer.get()));
}

Record ReadRecord(xmlDoc& document, xmlNode& node, const std::string_view* span) {
  Record record;
  record.element = Convert(node);
  record.oidText = Attribute(node, "Oid");
  record.oid = ParseOid(record.oidText);
  record.deletes = std::strtol(Attribute(node, "Delete").c_str(), nullptr, 10) != 0;
  record.line = static_cast<std::size_t>(xmlGetLineNo(&node));
  if (record.oidText == "0") {
    xmlUnsetProp(&node, Xml("Oid"));
    record.oidText.clear();
    span = nullptr;
  }
  record.bytes = span == nullptr ? Serialised(document, node) : std::string(*span);
  return record;
}

}  // namespace

std::optional<Oid> ParseOid(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  if (value == 0 || value < INT32_MIN || value > std::int64_t{UINT32_MAX}) return std::nullopt;
  return static_cast<Oid>(value);
}

std::string OidAttribute(Oid oid) {
  return std::to_string(static_cast<std::int32_t>(oid));
}

const XmlElement* XmlElement::Child(std::string_view childName) const {
  for (const XmlElement& child : children) {
    if (child.name == childName) return &child;
  }
  return nullptr;
}

std::string_view XmlElement::ChildText(std::string_view childName) const {
  const XmlElement* child = Child(childName);
  return child == nullptr ? std::string_view() : std::string_view(child->text);
}

std::vector<Record> ParseRecords(std::string_view document) {
  const std::string readable = WithDeclarationInSmallLetters(document);
  const RefusedMemory refused;
  const DocumentPtr parsed = Parse(readable, refused);
  std::vector<std::string_view> spans;
  if (HasAsciisBytes(*parsed, document)) spans = ChildSpans(document);

  std::vector<Record> records;
  const xmlNode* root = xmlDocGetRootElement(parsed.get());
  for (xmlNode* node = root->children; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    const std::size_t index = records.size();
    records.push_back(ReadRecord(*parsed, *node, index < spans.size() ? &spans[index] : nullptr));
  }
  refused.ThrowIfAny();
  return records;
}

std::int32_t ErrorValue(const Record& error) {
  const std::string_view text = error.element.ChildText("Value");
  std::int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

std::string WithOid(std::string_view record, Oid oid) {
  const std::size_t nameEnd = record.find_first_of(" \t\r\n/>");
  return fmt::format("{} Oid=\"{}\"{}", record.substr(0, nameEnd), OidAttribute(oid),
                     record.substr(nameEnd));
}

}  // namespace desktop
