// A folder of text messages, with all that is below it.
#pragma once

#include <array>

#include "platform/mapi.h"

namespace corvane {

class CorvaneStream;

// The names of a folder and of those above it, each behind a "/". What goes beyond 1,023 characters
// is cut off.
class FolderPath {
 public:
  FolderPath(const ce::WCHAR* parent, const ce::WCHAR* name);
  const ce::WCHAR* text() const { return text_.data(); }

 private:
  void Append(const ce::WCHAR* text);

  std::array<ce::WCHAR, 1024> text_{};
  std::size_t length_ = 0;
};

// E_NOINTERFACE when the entry is no folder.
[[nodiscard]] ce::HRESULT OpenFolder(ce::IMsgStore* store, const ce::SBinary& entryId,
                                     ce::IMAPIFolder** folder);

// The folder's own messages, then its subfolders, depth first. With a stream the messages go to it;
// with null they are deleted.
ce::HRESULT ProcessSMSFolder(ce::IMsgStore* store, const ce::WCHAR* path, ce::DWORD entryIdBytes,
                             const ce::BYTE* entryId, CorvaneStream* stream);

}  // namespace corvane
