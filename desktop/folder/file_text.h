// The text of a file whose character set is to stay as it is.
#pragma once

#include <string>
#include <string_view>

namespace desktop {

class FileText {
 public:
  explicit FileText(std::string_view bytes);

  // UTF-8 of a UTF-16 file; else the bytes as they are, whatever their character set. Without a
  // byte-order mark.
  const std::string& text() const { return text_; }
  // Whether bytes that are no UTF-16 would be lost by writing.
  bool damaged() const { return damaged_; }
  // Text of this kind as the file has it.
  std::string BytesOf(std::string_view text) const;

 private:
  enum class Form { kBytes, kMarkedUtf8, kUtf16Le, kUtf16Be };

  Form form_ = Form::kBytes;
  std::string text_;
  bool damaged_ = false;
};

}  // namespace desktop
