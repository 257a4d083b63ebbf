// Lines that differ in a number alone, summed up for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace terminal {

// 50000 as "50,000".
std::string Grouped(std::uint64_t number);

// What is counted: "contact", "contacts".
struct Noun {
  std::string_view one;
  std::string_view several;
};

// "1 contact", "50,000 contacts".
std::string Counted(std::uint64_t count, Noun noun);

// "PHOTO: 12 contacts (a contact holds no pictures)".
class Tally {
 public:
  // Counts one more of `what`. Its reason is told as long as it is the same for all of them. Of
  // what has an owner, one after the other, an owner counts once; 0 is none.
  void Add(const std::string& what, Noun noun, std::string_view reason = {}, std::size_t owner = 0);
  [[nodiscard]] bool empty() const { return rows_.empty(); }
  // In the order of the first of each.
  [[nodiscard]] std::vector<std::string> Lines() const;

 private:
  struct Row {
    std::string what;
    std::string one;
    std::string several;
    std::string reason;
    std::size_t count = 0;
    std::size_t lastOwner = 0;
  };
  std::map<std::string, std::size_t> places_;
  std::vector<Row> rows_;
};

}  // namespace terminal
