// A window of the class "RichInk": holds a note's text and streams it in and out.
#pragma once

#include <string>

#include "platform/windows.h"

namespace ce::host {

class InkControl {
 public:
  LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  LRESULT StreamIn(DWORD format, EDITSTREAM& stream);
  LRESULT StreamOut(DWORD format, EDITSTREAM& stream) const;

  std::u16string text_;
};

}  // namespace ce::host
