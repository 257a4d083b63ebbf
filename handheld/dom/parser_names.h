// The names that the XML parser has met, each of which it keeps once.
#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace ce::host::dom {

// The parser's table of names is made for the few that documents have: with many, each name costs a
// look at a part of all the others. So a table that has become large is replaced by a new one, with
// what is in use of it. Must outlive the parser.
class ParserNames {
 public:
  // Names in a table that is replaced; the tag that reaches them can add some.
  static constexpr std::size_t kMost = 4096;

  // Call it at the end of an element. False when memory runs out; the parser cannot go on then.
  [[nodiscard]] bool Bound(xmlParserCtxt& parser);

  // The most names that were in one table.
  std::size_t most() const { return most_; }

 private:
  struct FreeTable {
    void operator()(xmlDictPtr table) const { xmlDictFree(table); }
  };

  // What the parser and its callers still point into.
  std::vector<std::unique_ptr<xmlDict, FreeTable>> former_;
  std::size_t most_ = 0;
};

}  // namespace ce::host::dom
