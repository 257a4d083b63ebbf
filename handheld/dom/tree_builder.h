// Turns what a parser reports into nodes.
#pragma once

#include <string>
#include <string_view>

#include "handheld/dom/document.h"
#include "handheld/dom/known_names.h"

namespace ce::host::dom {

// All text is UTF-8. Every call may throw std::bad_alloc, and BadDocument for what the tree cannot
// take or what goes beyond its budget.
class TreeBuilder {
 public:
  struct BadDocument {};

  TreeBuilder(Document& document, bool preserveWhiteSpace, int maxDepth, std::size_t maxBytes)
      : document_(document),
        preserveWhiteSpace_(preserveWhiteSpace),
        maxDepth_(maxDepth),
        bytesLeft_(maxBytes),
        current_(&document) {}

  // The declaration; the target as it was written.
  void Declaration(std::u16string_view target, std::u16string_view data);
  // Prefixes may be null. Attributes belong to the element started last.
  void StartElement(const char* prefix, const char* name);
  void Attribute(const char* prefix, const char* name, std::string_view value);
  void EndElement();
  // A piece of text: it becomes a node with its neighbours, once something else follows.
  void Characters(std::string_view text);
  void CdataSection(std::string_view text);
  void Comment(const char* text);
  void Instruction(const char* target, const char* data);

 private:
  // Takes memory from the budget. Called before a node is made, and before its text.
  void Charge(std::size_t bytes);
  void ChargeNode(std::size_t size, std::string_view text);
  void FlushText();
  // The text, and that of a qualified name, in the document's memory.
  std::u16string_view Keep(std::string_view text);
  Name KeepName(const char* prefix, const char* name);
  void Append(Node* node) { current_->AdoptChild(node); }

  Document& document_;
  const bool preserveWhiteSpace_;
  const int maxDepth_;
  std::size_t bytesLeft_;
  Node* current_;
  int depth_ = 0;
  std::u16string text_;     // of the node that is to come
  std::u16string decoded_;  // what Keep is at work on
};

}  // namespace ce::host::dom
