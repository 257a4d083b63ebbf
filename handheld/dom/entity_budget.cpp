#include "handheld/dom/entity_budget.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace ce::host::dom {
namespace {

// Entities within entities. The parser recurses this deep.
constexpr int kMaxLevels = 40;
constexpr std::size_t kEndless = static_cast<std::size_t>(-1) / 2;

std::string_view Content(const xmlEntity& entity) {
  return {reinterpret_cast<const char*>(entity.content),
          entity.content ? static_cast<std::size_t>(entity.length) : 0};
}

// The names that follow an '&', those of character references left out.
template <typename Visit>
void ForEachReference(std::string_view content, Visit visit) {
  for (std::size_t at = content.find('&'); at != content.npos; at = content.find('&', at + 1)) {
    const std::size_t end = content.find(';', at);
    if (end == content.npos) return;
    if (content[at + 1] != '#') visit(std::string(content.substr(at + 1, end - at - 1)));
  }
}

}  // namespace

bool EntityBudget::Charge(xmlParserCtxtPtr parser, const xmlEntity& entity) {
  switch (entity.etype) {
    case XML_INTERNAL_PREDEFINED_ENTITY:
      return true;
    case XML_INTERNAL_PARAMETER_ENTITY:
      return Spend(Content(entity).size());
    case XML_INTERNAL_GENERAL_ENTITY:
      // Nested references were charged with the outermost.
      return parser->depth > 0 || Spend(FullSize(parser->myDoc, entity, 0).bytes);
    default:
      return false;
  }
}

bool EntityBudget::Spend(std::size_t bytes) {
  if (bytes > left_) return false;
  left_ -= bytes;
  return true;
}

EntityBudget::Size EntityBudget::FullSize(xmlDocPtr document, const xmlEntity& entity, int level) {
  if (const auto known = sizes_.find(&entity); known != sizes_.end()) return known->second;
  if (level == kMaxLevels) return {kEndless, kMaxLevels};
  Size size{Content(entity).size(), 1};
  ForEachReference(Content(entity), [&](const std::string& name) {
    if (size.bytes >= kEndless) return;
    const xmlEntity* inner =
        xmlGetDocEntity(document, reinterpret_cast<const xmlChar*>(name.c_str()));
    if (!inner || inner->etype == XML_INTERNAL_PREDEFINED_ENTITY) return;
    const Size innerSize = FullSize(document, *inner, level + 1);
    size.bytes = std::min(kEndless, size.bytes + innerSize.bytes);
    size.levels = std::max(size.levels, innerSize.levels + 1);
  });
  if (size.levels > kMaxLevels) size.bytes = kEndless;
  sizes_.emplace(&entity, size);
  return size;
}

}  // namespace ce::host::dom
