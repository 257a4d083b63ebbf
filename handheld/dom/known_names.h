// Names that documents are built with again and again.
#pragma once

#include <string_view>

namespace ce::host::dom {

// A name in memory that lives as long as what has it.
struct Name {
  std::u16string_view text;
  std::string_view utf8 = {};  // the same, as it is written; empty when that is not at hand
};

// The name as it is kept for the life of the process, in one place for all documents: it is a name
// of XML, which is looked into once. Empty for one that is not kept, be it a name or not: only so
// many are, and no long ones. Never waits for another thread.
Name KnownName(std::u16string_view name);

}  // namespace ce::host::dom
