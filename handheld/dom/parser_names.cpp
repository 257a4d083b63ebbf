#include "handheld/dom/parser_names.h"

#include <algorithm>
#include <utility>

namespace ce::host::dom {

bool ParserNames::Bound(xmlParserCtxt& parser) {
  const auto names = static_cast<std::size_t>(std::max(xmlDictSize(parser.dict), 0));
  most_ = std::max(most_, names);
  if (names < kMost) return true;
  former_.reserve(former_.size() + 1);
  xmlDictPtr fresh = xmlDictCreate();
  if (!fresh) return false;
  former_.emplace_back(std::exchange(parser.dict, fresh));
  // The parser knows a name by its place in the table.
  bool kept = true;
  const auto keep = [&](const xmlChar*& name) {
    if (!name) return;
    name = xmlDictLookup(fresh, name, -1);
    kept = kept && name;
  };
  keep(parser.str_xml);
  keep(parser.str_xmlns);
  keep(parser.str_xml_ns);
  std::for_each_n(parser.nameTab, parser.nameNr, keep);
  std::for_each_n(parser.nsTab, parser.nsNr, keep);
  parser.name = parser.nameNr > 0 ? parser.nameTab[parser.nameNr - 1] : nullptr;
  return kept;
}

}  // namespace ce::host::dom
