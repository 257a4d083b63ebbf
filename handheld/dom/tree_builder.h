// Puts what a parser reports on a tape.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "handheld/dom/tape.h"

namespace ce::host::dom {

// All text is UTF-8. Every call may throw std::bad_alloc, and BadDocument for what the tree cannot
// take or what goes beyond its budget.
class TreeBuilder {
 public:
  struct BadDocument {};

  TreeBuilder(Tape& tape, bool preserveWhiteSpace, int maxDepth, std::size_t maxBytes)
      : tape_(tape),
        preserveWhiteSpace_(preserveWhiteSpace),
        maxDepth_(maxDepth),
        maxBytes_(maxBytes) {}

  // The declaration; the target as it was written.
  void Declaration(std::u16string_view target, std::u16string_view data);
  // Prefixes may be null. Names lie where they are as long as the parser does. Attributes belong to
  // the element started last.
  void StartElement(const char* prefix, const char* name);
  void Attribute(const char* prefix, const char* name, std::string_view value);
  void EndElement();
  // A piece of text: it becomes a node with its neighbours, once something else follows.
  void Characters(std::string_view text);
  void CdataSection(std::string_view text);
  void Comment(const char* text);
  void Instruction(const char* target, const char* data);
  // The whole document.
  void End() { tape_.End(Tape::kDocument); }

 private:
  // The place of a name that was met.
  struct KnownPlace {
    const char* prefix = nullptr;
    const char* name = nullptr;
    Tape::Place place = 0;
  };

  // Refuses what the budget has no room for.
  void Charge(std::size_t bytes) const;
  Tape::Cell Add(NodeKind kind, Tape::Place text, Tape::Place second = 0);
  void FlushText();
  // Each puts text on the tape behind what is there.
  void Append(std::string_view text);
  void Append(std::u16string_view text);
  // Where the text, with its end, and a qualified name are.
  Tape::Place Keep(std::string_view text);
  Tape::Place Keep(std::u16string_view text);
  Tape::Place KeepName(const char* prefix, const char* name);

  Tape& tape_;
  const bool preserveWhiteSpace_;
  const int maxDepth_;
  const std::size_t maxBytes_;
  std::vector<Tape::Cell> open_;
  bool inText_ = false;
  Tape::Place text_ = 0;  // where that of the node that is to come begins
  std::array<KnownPlace, 256> names_{};
};

}  // namespace ce::host::dom
