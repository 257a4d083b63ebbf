// The notices of files, summed up for people.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/terminal/tally.h"

namespace terminal {

class NoticeSums {
 public:
  // "PROPERTY: reason", or what names no property, of a line of the file. Notices are counted by
  // their owners, of which 0 is none (see Tally), and called by the noun.
  void Add(const std::string& file, std::size_t line, std::string_view text, Noun noun,
           std::size_t owner = 0);
  // "FILE: PROPERTY: 12 contacts (reason)"; what came once and names no property is whole, with its
  // line. A last one says how to learn more, where there is more.
  [[nodiscard]] std::vector<std::string> Lines() const;

 private:
  struct Remark {
    std::string file;
    std::size_t line;  // of the first one
    std::size_t count;
  };
  Tally properties_;
  std::map<std::string, Remark> remarks_;  // by file and text
};

}  // namespace terminal
