#include "handheld/dom/loader.h"

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
#include <vector>

#include "handheld/dom/attribute_bound.h"
#include "handheld/dom/byte_source.h"
#include "handheld/dom/encoding.h"
#include "handheld/dom/entity_budget.h"
#include "handheld/dom/tree_builder.h"

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

// Whether the text of an entity keeps to the bound by itself. That of a parameter entity must be
// whole declarations.
bool WithinBound(const xmlEntity& entity) {
  if (!entity.content) return true;
  const bool parameter = entity.etype == XML_INTERNAL_PARAMETER_ENTITY;
  AttributeBound bound({},
                       parameter ? AttributeBound::Part::kSubset : AttributeBound::Part::kContent);
  return bound.Pass(Chars(entity.content)) && (!parameter || bound.complete());
}

class Loader {
 public:
  Loader(Document& document, std::span<const BYTE> bytes, bool preserveWhiteSpace,
         std::size_t maxTreeBytes)
      : source_(bytes),
        bound_(source_.layout(), AttributeBound::Part::kContent),
        builder_(document, preserveWhiteSpace, kMaxDepth, maxTreeBytes) {}

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
  static void AttributeDeclaration(void* context, const xmlChar* element, const xmlChar* name,
                                   int type, int defaultKind, const xmlChar* defaultValue,
                                   xmlEnumerationPtr alternatives);
  static void EntityDeclaration(void* context, const xmlChar* name, int type,
                                const xmlChar* publicId, const xmlChar* systemId, xmlChar* content);
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
  AttributeBound bound_;
  TreeBuilder builder_;
  EntityBudget budget_{kMaxEntityExpansion};
  int attributeDeclarations_ = 0;
  std::vector<int> namespaces_;  // of each open element
  int namespacesInScope_ = 0;
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
  sax.entityDecl = EntityDeclaration;
  sax.attributeDecl = AttributeDeclaration;
  sax.getEntity = GetEntity;
  sax.getParameterEntity = GetParameterEntity;
  // The mark under which the parser knows the handlers of elements and errors.
  sax.initialized = XML_SAX2_MAGIC;
  sax.serror = OnError;
  return sax;
}

int Loader::Read(void* context, char* buffer, int bytes) {
  auto* loader = static_cast<Loader*>(context);
  if (Failed(loader->status_)) return 0;
  const int count = loader->source_.Read(buffer, bytes);
  if (loader->bound_.Pass({buffer, static_cast<std::size_t>(count)})) return count;
  loader->status_ = E_FAIL;
  return 0;
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
    // The bound can count only what it finds, so the parser must find the same.
    const xmlParserInputBuffer* buffer = parser->input ? parser->input->buf : nullptr;
    const char* encoding = buffer && buffer->encoder ? buffer->encoder->name : "UTF-8";
    if (!KeepsAscii(encoding, loader.source_.layout())) throw TreeBuilder::BadDocument{};
    if (loader.source_.declaration().empty()) return;
    loader.builder_.Declaration(loader.source_.declaration(), loader.DeclarationData(*parser));
  });
}

void Loader::StartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar*,
                          int namespaceCount, const xmlChar** namespaces, int attributeCount, int,
                          const xmlChar** attributes) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr parser) {
    loader.namespaces_.push_back(namespaceCount);
    loader.namespacesInScope_ += namespaceCount;
    // The parser goes through all of them to find the one of a prefix.
    if (loader.namespacesInScope_ > kMaxNamespaces) throw TreeBuilder::BadDocument{};
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
  Do(context, [](Loader& loader, xmlParserCtxtPtr) {
    loader.namespacesInScope_ -= loader.namespaces_.back();
    loader.namespaces_.pop_back();
    loader.builder_.EndElement();
  });
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
  if (!context || (error->level != XML_ERR_FATAL && error->code != XML_NS_ERR_XML_NAMESPACE)) {
    return;
  }
  // The parser reads on after an error, in another state than the bound: it gets no more bytes. It
  // cannot be stopped here, where it still points into them.
  Loader& loader = *static_cast<Loader*>(static_cast<xmlParserCtxtPtr>(context)->_private);
  if (Failed(loader.status_)) return;
  loader.status_ = error->code == XML_ERR_NO_MEMORY ? E_OUTOFMEMORY : E_FAIL;
}

void Loader::AttributeDeclaration(void* context, const xmlChar*, const xmlChar*, int, int,
                                  const xmlChar*, xmlEnumerationPtr alternatives) {
  xmlFreeEnumeration(alternatives);
  // Those with a default are compared with the attributes of every element.
  Do(context, [](Loader& loader, xmlParserCtxtPtr) {
    if (++loader.attributeDeclarations_ > kMaxAttributes) throw TreeBuilder::BadDocument{};
  });
}

void Loader::EntityDeclaration(void* context, const xmlChar* name, int type,
                               const xmlChar* publicId, const xmlChar* systemId, xmlChar* content) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) {
    // The library keeps the text as it was written and as it is used.
    const std::size_t size = content ? std::strlen(Chars(content)) : 0;
    loader.builder_.Charge(sizeof(xmlEntity) + 2 * size);
    xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
  });
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
    if (!entity) throw TreeBuilder::BadDocument{};
    if (!EntityBudget::IsReference(*parser, *entity)) return;
    if (!loader.budget_.Charge(parser, *entity) || !WithinBound(*entity)) {
      throw TreeBuilder::BadDocument{};
    }
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

HRESULT Load(Document& document, std::span<const BYTE> bytes, bool preserveWhiteSpace,
             std::size_t maxTreeBytes) noexcept {
  try {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    return Loader(document, bytes, preserveWhiteSpace, maxTreeBytes).Run();
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace ce::host::dom
