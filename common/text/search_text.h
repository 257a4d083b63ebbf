// Texts as people search them: without marks above, below and beside letters, whatever their case.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace text {

// "Åsa", "ÅSA" and "asa" have one form, which is for nothing but comparing. Syllables of Hangul
// become their letters, what is no UTF-8 becomes U+FFFD.
std::u16string SearchForm(std::string_view text);

// The words of a query.
class SearchWords {
 public:
  explicit SearchWords(std::string_view query);

  bool empty() const { return words_.empty(); }
  // Whether each of them is somewhere in a text, which is given in its form.
  bool AreIn(std::u16string_view form) const;
  // Whether one of them is.
  bool HasOneIn(std::u16string_view form) const;
  // The words that are not in it.
  SearchWords Without(std::u16string_view form) const;

 private:
  std::vector<std::u16string> words_;
};

}  // namespace text
