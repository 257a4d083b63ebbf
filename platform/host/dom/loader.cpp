#include "platform/host/dom/loader.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>

#include "platform/host/dom/byte_source.h"
#include "platform/host/dom/entity_budget.h"
#include "platform/host/dom/tree_builder.h"

namespace ce::host::dom {
namespace {

// The bounds on depth and expansion are ours and exact; the library's own, which HUGE lifts, are
// rules of thumb that change with its version.
constexpr int kOptions =
    XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

void IgnoreError(void*, xmlErrorPtr) {}

// Errors that belong to no parser would be printed. The handler is the thread's.
class QuietErrors {
 public:
  QuietErrors() : handler_(xmlStructuredError), context_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, IgnoreError);
  }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;
  ~QuietErrors() { xmlSetStructuredErrorFunc(context_, handler_); }

 private:
  const xmlStructuredErrorFunc handler_;
  void* const context_;
};

struct FreeParser {
  void operator()(xmlParserCtxtPtr parser) const {
    if (parser->myDoc) xmlFreeDoc(parser->myDoc);
    xmlFreeParserCtxt(parser);
  }
};

const char* Chars(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

class Loader {
 public:
  Loader(Document& document, std::span<const BYTE> bytes, bool preserveWhiteSpace)
      : source_(bytes), builder_(document, preserveWhiteSpace, kMaxDepth) {}

  HRESULT Run();

 private:
  static xmlSAXHandler Handler();
  static int Read(void* context, char* buffer, int bytes);

  // What the parser calls, always with itself as context; the content of an entity has a parser of
  // its own, which inherits the pointer to the loader.
  static void StartDocument(void* context);
  static void StartElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                           int attributeCount, int defaultedCount, const xmlChar** attributes);
  static void EndElement(void* context, const xmlChar* name, const xmlChar* prefix,
                         const xmlChar* uri);
  static void Characters(void* context, const xmlChar* text, int bytes);
  static void Cdata(void* context, const xmlChar* text, int bytes);
  static void Comment(void* context, const xmlChar* text);
  static void Instruction(void* context, const xmlChar* target, const xmlChar* data);
  static void OnError(void* context, xmlErrorPtr error);
  static xmlEntityPtr GetEntity(void* context, const xmlChar* name);
  static xmlEntityPtr GetParameterEntity(void* context, const xmlChar* name);

  // Does `work` for the parser unless the load has failed, and stops the parser when it has.
  template <typename Work>
  static void Do(void* context, Work work) noexcept;
  void Attribute(xmlParserCtxtPtr parser, const char* prefix, const char* name,
                 std::string_view value);
  xmlEntityPtr Charged(xmlParserCtxtPtr parser, xmlEntityPtr entity);
  std::u16string DeclarationData(const xmlParserCtxt& parser) const;
  bool ReadToTheEnd(const xmlParserCtxt& parser) const;

  ByteSource source_;
  TreeBuilder builder_;
  EntityBudget budget_{kMaxEntityExpansion};
  HRESULT status_ = S_OK;
};

HRESULT Loader::Run() {
  const QuietErrors quiet;
  const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
  if (!parser) return E_OUTOFMEMORY;
  *parser->sax = Handler();
  parser->_private = this;
  const xmlDocPtr document =
      xmlCtxtReadIO(parser.get(), Read, nullptr, this, nullptr, nullptr, kOptions);
  if (document) xmlFreeDoc(document);
  if (Failed(status_)) return status_;
  if (parser->errNo == XML_ERR_NO_MEMORY) return E_OUTOFMEMORY;
  return document && parser->wellFormed && ReadToTheEnd(*parser) ? S_OK : E_FAIL;
}

xmlSAXHandler Loader::Handler() {
  xmlSAXHandler sax{};
  sax.startElementNs = StartElement;
  sax.endElementNs = EndElement;
  sax.startDocument = StartDocument;
  sax.characters = Characters;
  sax.ignorableWhitespace = Characters;
  sax.cdataBlock = Cdata;
  sax.comment = Comment;
  sax.processingInstruction = Instruction;
  // The library keeps the internal subset's entities in a document of its own.
  sax.internalSubset = xmlSAX2InternalSubset;
  sax.entityDecl = xmlSAX2EntityDecl;
  sax.getEntity = GetEntity;
  sax.getParameterEntity = GetParameterEntity;
  // The mark under which the parser knows the handlers of elements and errors.
  sax.initialized = XML_SAX2_MAGIC;
  sax.serror = OnError;
  return sax;
}

int Loader::Read(void* context, char* buffer, int bytes) {
  auto* loader = static_cast<Loader*>(context);
  return Failed(loader->status_) ? 0 : loader->source_.Read(buffer, bytes);
}

template <typename Work>
void Loader::Do(void* context, Work work) noexcept {
  const auto parser = static_cast<xmlParserCtxtPtr>(context);
  Loader& loader = *static_cast<Loader*>(parser->_private);
  if (Succeeded(loader.status_)) {
    try {
      work(loader, parser);
    } catch (const TreeBuilder::BadDocument&) {
      loader.status_ = E_FAIL;
    } catch (const std::exception&) {
      loader.status_ = E_OUTOFMEMORY;
    }
  }
  if (Failed(loader.status_)) xmlStopParser(parser);
}

void Loader::StartDocument(void* context) {
  xmlSAX2StartDocument(context);
  Do(context, [](Loader& loader, xmlParserCtxtPtr parser) {
    if (loader.source_.declaration().empty()) return;
    loader.builder_.Declaration(loader.source_.declaration(), loader.DeclarationData(*parser));
  });
}

void Loader::StartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar*,
                          int namespaceCount, const xmlChar** namespaces, int attributeCount, int,
                          const xmlChar** attributes) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr parser) {
    loader.builder_.StartElement(Chars(prefix), Chars(name));
    for (int i = 0; i < namespaceCount; ++i) {
      const char* declared = Chars(namespaces[2 * i]);
      const char* uri = Chars(namespaces[2 * i + 1]);
      loader.Attribute(parser, declared ? "xmlns" : nullptr, declared ? declared : "xmlns",
                       uri ? uri : "");
    }
    for (int i = 0; i < attributeCount; ++i) {
      // Name, prefix, namespace, first and last of the value.
      const xmlChar** attribute = attributes + 5 * i;
      loader.Attribute(
          parser, Chars(attribute[1]), Chars(attribute[0]),
          {Chars(attribute[3]), static_cast<std::size_t>(attribute[4] - attribute[3])});
    }
  });
}

void Loader::Attribute(xmlParserCtxtPtr parser, const char* prefix, const char* name,
                       std::string_view value) {
  // Where the document type has defaults, a few bytes may stand for many attributes.
  constexpr std::size_t kAround = std::string_view(" =\"\"").size();
  if (parser->attsDefault && !budget_.Spend(std::strlen(name) + value.size() + kAround)) {
    throw TreeBuilder::BadDocument{};
  }
  builder_.Attribute(prefix, name, value);
}

void Loader::EndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Do(context, [](Loader& loader, xmlParserCtxtPtr) { loader.builder_.EndElement(); });
}

void Loader::Characters(void* context, const xmlChar* text, int bytes) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) {
    loader.builder_.Characters({Chars(text), static_cast<std::size_t>(bytes)});
  });
}

void Loader::Cdata(void* context, const xmlChar* text, int bytes) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) {
    loader.builder_.CdataSection({Chars(text), static_cast<std::size_t>(bytes)});
  });
}

void Loader::Comment(void* context, const xmlChar* text) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr parser) {
    // Those of the document type go with it.
    if (parser->inSubset == 0) loader.builder_.Comment(Chars(text));
  });
}

void Loader::Instruction(void* context, const xmlChar* target, const xmlChar* data) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr parser) {
    if (parser->inSubset == 0) loader.builder_.Instruction(Chars(target), Chars(data));
  });
}

void Loader::OnError(void* context, xmlErrorPtr error) {
  // Other faults in the use of namespaces do no harm, but such a declaration would get lost.
  if (!context || error->code != XML_NS_ERR_XML_NAMESPACE) return;
  Do(context, [](Loader& loader, xmlParserCtxtPtr) { loader.status_ = E_FAIL; });
}

xmlEntityPtr Loader::GetEntity(void* context, const xmlChar* name) {
  const auto parser = static_cast<xmlParserCtxtPtr>(context);
  return static_cast<Loader*>(parser->_private)->Charged(parser, xmlSAX2GetEntity(context, name));
}

xmlEntityPtr Loader::GetParameterEntity(void* context, const xmlChar* name) {
  const auto parser = static_cast<xmlParserCtxtPtr>(context);
  return static_cast<Loader*>(parser->_private)
      ->Charged(parser, xmlSAX2GetParameterEntity(context, name));
}

xmlEntityPtr Loader::Charged(xmlParserCtxtPtr parser, xmlEntityPtr entity) {
  // The parser itself forgives an unknown name when something outside could have declared it.
  Do(parser, [&](Loader& loader, xmlParserCtxtPtr) {
    if (!entity || !loader.budget_.Charge(parser, *entity)) loader.status_ = E_FAIL;
  });
  return Failed(status_) ? nullptr : entity;
}

std::u16string Loader::DeclarationData(const xmlParserCtxt& parser) const {
  std::u16string data = u"version=\"";
  // The parser has checked it: digits and a point.
  for (const char* c = Chars(parser.version); c && *c; ++c) data += static_cast<char16_t>(*c);
  data += u"\"";
  if (parser.encoding || (parser.input && parser.input->encoding)) data += u" encoding=\"UTF-8\"";
  if (parser.standalone == 1) data += u" standalone=\"yes\"";
  if (parser.standalone == 0) data += u" standalone=\"no\"";
  return data;
}

bool Loader::ReadToTheEnd(const xmlParserCtxt& parser) const {
  // The parser takes a zero byte for the end, and bytes that do not convert, too.
  const xmlParserInput* input = parser.input;
  if (!source_.atEnd() || !input || input->cur != input->end) return false;
  const xmlParserInputBuffer* buffer = input->buf;
  if (!buffer) return true;
  return buffer->error == 0 && (!buffer->encoder || !buffer->raw || xmlBufUse(buffer->raw) == 0);
}

}  // namespace

HRESULT Load(Document& document, std::span<const BYTE> bytes, bool preserveWhiteSpace) noexcept {
  try {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    return Loader(document, bytes, preserveWhiteSpace).Run();
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace ce::host::dom
