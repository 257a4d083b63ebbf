// The document's calls with owners for what they hand out; what they answer, as text.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tests/wine/answers/machine.h"

namespace answers {

struct Releaser {
  template <typename T>
  void operator()(T* object) const {
    object->Release();
  }
};
template <typename T>
using Owned = std::unique_ptr<T, Releaser>;

// What `call` gives to its out-parameter.
template <typename T, typename Call>
Owned<T> Given(Call call) {
  T* out = nullptr;
  call(&out);
  return Owned<T>(out);
}

// A string for the length of a call.
class Text {
 public:
  explicit Text(const Wide& text)
      : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(text_); }

  operator BSTR() const { return text_; }

 private:
  BSTR text_;
};

// "failed", or the code when that is none of a failure.
std::string Status(HRESULT status);
bool Load(IXMLDOMDocument& document, std::string_view bytes);
// A node and what is below it, with the values of attributes named a, b, c, xmlns, p:a or xml:lang.
std::string Outline(IXMLDOMNode& node);

}  // namespace answers
