// A chunk as the XML parser's tree.
#pragma once

#include <libxml/parser.h>

#include <memory>
#include <stdexcept>
#include <string_view>

namespace floors {

struct FreeParser {
  void operator()(xmlParserCtxtPtr parser) const { xmlFreeParserCtxt(parser); }
};
struct FreeDocument {
  void operator()(xmlDocPtr document) const { xmlFreeDoc(document); }
};

class TreeParser {
 public:
  // Valid until the next one.
  const xmlNode* Parse(std::string_view xml) {
    document_.reset(
        xmlCtxtReadMemory(parser_.get(), xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                          XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR));
    if (!document_) throw std::runtime_error("a chunk is not well-formed");
    return xmlDocGetRootElement(document_.get());
  }

 private:
  const std::unique_ptr<xmlParserCtxt, FreeParser> parser_{xmlNewParserCtxt()};
  std::unique_ptr<xmlDoc, FreeDocument> document_;
};

inline std::string_view NameOf(const xmlNode* element) {
  return reinterpret_cast<const char*>(element->name);
}

// Of an element with one text.
inline std::string_view TextOf(const xmlNode* element) {
  const xmlNode* text = element ? element->children : nullptr;
  return text && text->content ? reinterpret_cast<const char*>(text->content) : "";
}

// The first child element of the name; null for none.
inline const xmlNode* Child(const xmlNode* parent, std::string_view name) {
  for (const xmlNode* child = parent->children; child; child = child->next) {
    if (NameOf(child) == name) return child;
  }
  return nullptr;
}

}  // namespace floors
