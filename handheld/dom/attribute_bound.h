// Bounds what an element may carry before the parser sees it: the parser compares every attribute
// of an element with every other before it reports any.
#pragma once

#include <string_view>

#include "handheld/dom/byte_source.h"

namespace ce::host::dom {

// Attributes and namespace declarations of one element; also the alternatives and parts in one
// declaration of the document type, which the parser compares (and frees recursively) likewise.
inline constexpr int kMaxAttributes = 1024;

// Follows the markup of a document in pieces of any size. It need be right only as long as the
// document is well-formed; it may also refuse what is not.
class AttributeBound {
 public:
  enum class Part {
    kContent,  // a document, or the text of a general entity
    kSubset,   // the text of a parameter entity
  };

  AttributeBound(ByteLayout layout, Part part);

  // Takes the next bytes. False once the bound is exceeded.
  [[nodiscard]] bool Pass(std::string_view bytes);
  // No markup has been begun and not ended.
  bool complete() const { return state_ == State::kContent || state_ == State::kSubset; }

 private:
  enum class State {
    kContent,
    kSubset,
    kOpen,  // after '<'
    kBang,  // after "<!"
    kBangHyphen,
    kDelimited,  // a comment, a CDATA section or an instruction, up to closer_ and '>'
    kTag,
    kEndTag,
    kDoctype,
    kDeclaration,
    kQuoted,
    kRefused,
  };

  void Step(char c);
  void Open(char c);
  void Bang(char c);
  void Delimited(char c);
  void Doctype(char c);
  void Declaration(char c);
  void BeginDelimited(char closer, int closers);
  bool BeginQuoted(char c);
  void CountOne();
  // How many bytes from `at` on leave the state as it is.
  std::size_t Plain(std::string_view bytes, std::size_t at) const;

  const ByteLayout layout_;
  State state_;
  State outside_;                // where comments and instructions stand
  State resumed_ = State::kTag;  // after a quoted value
  bool doctypeSeen_;             // there is one, with one subset
  bool subsetSeen_;
  bool percent_ = false;  // the last character of a declaration
  char quote_ = 0;
  char closer_ = 0;
  int closersNeeded_ = 0;
  int closers_ = 0;  // those right before
  int count_ = 0;
  bool half_ = false;  // a unit of two bytes was cut
  char firstHalf_ = 0;
};

}  // namespace ce::host::dom
