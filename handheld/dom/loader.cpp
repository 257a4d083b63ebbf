#include "handheld/dom/loader.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <vector>

#include "handheld/dom/attribute_bound.h"
#include "handheld/dom/byte_source.h"
#include "handheld/dom/parser_names.h"
#include "handheld/dom/tree_builder.h"

namespace ce::host::dom {
namespace {

// The bounds are ours and exact; the library's own, which HUGE lifts, are rules of thumb that
// change with its version. Without NOENT "&amp;" in an attribute would become a reference.
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
  void operator()(xmlParserCtxtPtr parser) const { xmlFreeParserCtxt(parser); }
};

const char* Chars(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

class Loader {
 public:
  Loader(Tape& tape, const ByteSource& source, bool preserveWhiteSpace, std::size_t maxTreeBytes)
      : source_(source), builder_(tape, preserveWhiteSpace, kMaxDepth, maxTreeBytes) {}

  HRESULT Run();
  LoadWork work() const { return {names_.most()}; }

 private:
  struct OpenElement {
    int namespaces;
    bool hasLongName;
  };

  static xmlSAXHandler Handler();
  static int Read(void* context, char* buffer, int bytes);

  // What the parser calls, always with itself as context.
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

  // Does `work` for the parser unless the load has failed, and stops the parser when it has.
  template <typename Work>
  static void Do(void* context, Work work) noexcept;
  void BoundNames(xmlParserCtxt& parser);
  std::u16string DeclarationData(const xmlParserCtxt& parser) const;
  bool ReadToTheEnd(const xmlParserCtxt& parser) const;

  ByteSource source_;
  TreeBuilder builder_;
  ParserNames names_;
  std::vector<OpenElement> open_;
  int namespacesInScope_ = 0;
  HRESULT status_ = S_OK;
};

HRESULT Loader::Run() {
  const QuietErrors quiet;
  const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
  if (!parser) return E_OUTOFMEMORY;
  *parser->sax = Handler();
  parser->_private = this;
  // No handler makes a document of the library's own.
  xmlCtxtReadIO(parser.get(), Read, nullptr, this, nullptr, nullptr, kOptions);
  if (Failed(status_)) return status_;
  if (parser->errNo == XML_ERR_NO_MEMORY) return E_OUTOFMEMORY;
  if (!parser->wellFormed || !ReadToTheEnd(*parser)) return E_FAIL;
  builder_.End();
  return S_OK;
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
  Do(context, [](Loader& loader, xmlParserCtxtPtr parser) {
    // The parser must find the markup where it was looked for.
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
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) {
    const bool hasLongName =
        prefix && std::strlen(Chars(prefix)) + std::strlen(Chars(name)) >= kLongName;
    loader.open_.push_back({namespaceCount, hasLongName});
    loader.namespacesInScope_ += namespaceCount;
    // The parser goes through all of them to find the one of a prefix.
    if (loader.namespacesInScope_ > kMaxNamespaces) throw TreeBuilder::BadDocument{};
    loader.builder_.StartElement(Chars(prefix), Chars(name));
    for (int i = 0; i < namespaceCount; ++i) {
      const char* declared = Chars(namespaces[2 * i]);
      const char* uri = Chars(namespaces[2 * i + 1]);
      loader.builder_.Attribute(declared ? "xmlns" : nullptr, declared ? declared : "xmlns",
                                uri ? uri : "");
    }
    for (int i = 0; i < attributeCount; ++i) {
      // Name, prefix, namespace, first and last of the value.
      const xmlChar** attribute = attributes + 5 * i;
      loader.builder_.Attribute(
          Chars(attribute[1]), Chars(attribute[0]),
          {Chars(attribute[3]), static_cast<std::size_t>(attribute[4] - attribute[3])});
    }
  });
}

void Loader::EndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Do(context, [](Loader& loader, xmlParserCtxtPtr parser) {
    loader.namespacesInScope_ -= loader.open_.back().namespaces;
    loader.open_.pop_back();
    loader.builder_.EndElement();
    loader.BoundNames(*parser);
  });
}

void Loader::BoundNames(xmlParserCtxt& parser) {
  const xmlDict* const names = parser.dict;
  if (!names_.Bound(parser)) throw std::bad_alloc();
  if (parser.dict == names) return;
  // The end tag of an element whose prefix and name do not fit into what the parser has read ahead
  // is told by where its prefix was kept.
  const bool longNames = std::any_of(open_.begin(), open_.end(),
                                     [](const OpenElement& each) { return each.hasLongName; });
  if (longNames) throw TreeBuilder::BadDocument{};
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
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) { loader.builder_.Comment(Chars(text)); });
}

void Loader::Instruction(void* context, const xmlChar* target, const xmlChar* data) {
  Do(context, [&](Loader& loader, xmlParserCtxtPtr) {
    loader.builder_.Instruction(Chars(target), Chars(data));
  });
}

void Loader::OnError(void* context, xmlErrorPtr error) {
  // Other faults in the use of namespaces do no harm, but such a declaration would get lost.
  if (!context || (error->level != XML_ERR_FATAL && error->code != XML_NS_ERR_XML_NAMESPACE)) {
    return;
  }
  // The parser reads on after an error, where nobody has looked at the markup: it gets no more
  // bytes. It cannot be stopped here, where it still points into them.
  Loader& loader = *static_cast<Loader*>(static_cast<xmlParserCtxtPtr>(context)->_private);
  if (Failed(loader.status_)) return;
  loader.status_ = error->code == XML_ERR_NO_MEMORY ? E_OUTOFMEMORY : E_FAIL;
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
             std::size_t maxTreeBytes, LoadWork* work) noexcept {
  try {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    const ByteSource source(bytes);
    if (!MarkupIsBounded(bytes, source.layout())) return E_FAIL;
    auto tape = std::make_unique<Tape>();
    HRESULT status = E_FAIL;
    {
      Loader loader(*tape, source, preserveWhiteSpace, maxTreeBytes);
      status = loader.Run();
      if (work) *work = loader.work();
    }
    if (Succeeded(status)) document.Play(std::move(tape));
    return status;
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace ce::host::dom
