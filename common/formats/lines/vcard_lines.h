// The content lines of a vCard or iCalendar file: physical lines joined by the rules of the card's
// version (an iCalendar file's are those of 3.0) and of the value's encoding.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace formats {

enum class VCardDialect { k21, k30, k40 };

struct ContentLine {
  std::size_t line = 0;  // 1-based physical line where it begins
  VCardDialect dialect = VCardDialect::k30;
  std::string text;  // without the line's end; bytes of whatever character set
};

// "BEGIN:VCARD" and "END:VCARD" in any case, blanks allowed.
bool IsVCardBegin(std::string_view line);
bool IsVCardEnd(std::string_view line);

// Of the text that begins with one: CR LF, LF or CR; or CR CR LF, which is a CR LF that was written
// as text.
std::size_t LineEndLength(std::string_view text);

// Walks a file once, by its physical lines.
// - A line that begins with a blank or tab continues the one before; 2.1 keeps the blank, for it
//   folds where text has one.
// - Quoted-printable continues after "=" at the end of a line, whatever the next line is; the first
//   blank of each such line is the indentation of a careless writer where they all have one.
// - Base64 continues up to an empty line or one that can be a property.
class ContentLineReader {
 public:
  // `text` must outlive the reader.
  explicit ContentLineReader(std::string_view text) : text_(text) {}
  // The next line that is not empty; false at the end.
  bool Next(ContentLine& out);

 private:
  // The physical line at the position, and what lies behind it.
  std::string_view Peek(std::size_t* next) const;
  std::string_view Take();
  VCardDialect FindDialect() const;
  void JoinContinuations(std::string_view last, std::string& out);

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 0;  // physical lines taken
  VCardDialect dialect_ = VCardDialect::k30;
};

}  // namespace formats
