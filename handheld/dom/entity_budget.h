// Bounds what the entities of a document's internal subset may grow to.
#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <unordered_map>

namespace ce::host::dom {

class EntityBudget {
 public:
  explicit EntityBudget(std::size_t bytes) : left_(bytes) {}

  // The parser looks an entity up once when it is declared, too; that is no reference.
  [[nodiscard]] static bool IsReference(const xmlParserCtxt& parser, const xmlEntity& entity) {
    return parser.inSubset == 0 || entity.orig;
  }
  // Called for every reference, before it is expanded. False when it may not be: the entity lies
  // outside the document, or its text, with that of the entities named in it, goes beyond what is
  // left. The cost of a call does not depend on how often entities name each other.
  [[nodiscard]] bool Charge(xmlParserCtxtPtr parser, const xmlEntity& entity);
  // Takes what does not come of entities from the same budget. False when it is not there.
  [[nodiscard]] bool Spend(std::size_t bytes);

 private:
  struct Size {
    std::size_t bytes;
    int levels;
  };

  // Nothing sensible (more than the budget) for an entity that names itself.
  Size FullSize(xmlDocPtr document, const xmlEntity& entity, int level);

  std::size_t left_;
  std::unordered_map<const xmlEntity*, Size> sizes_;
};

}  // namespace ce::host::dom
