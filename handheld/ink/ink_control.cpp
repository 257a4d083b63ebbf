#include "handheld/ink/ink_control.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "handheld/ink/note_formats.h"

namespace ce::host {
namespace {

constexpr std::size_t kPiece = 4096;

// False when the callback fails, or gives more than a note may have.
bool ReadAll(EDITSTREAM& stream, std::string& bytes) {
  std::array<BYTE, kPiece> piece;
  while (true) {
    LONG moved = 0;
    stream.dwError = stream.pfnCallback(stream.dwCookie, piece.data(), LONG{kPiece}, &moved);
    if (stream.dwError != 0 || moved < 0 || moved > LONG{kPiece}) return false;
    if (moved == 0) return true;
    bytes.append(reinterpret_cast<const char*>(piece.data()), static_cast<std::size_t>(moved));
    if (bytes.size() > kMaxNoteBytes) return false;
  }
}

bool WriteAll(EDITSTREAM& stream, std::string bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const auto offered = static_cast<LONG>(std::min(kPiece, bytes.size() - at));
    LONG moved = 0;
    stream.dwError = stream.pfnCallback(stream.dwCookie, reinterpret_cast<BYTE*>(bytes.data() + at),
                                        offered, &moved);
    if (stream.dwError != 0) return false;
    if (moved < offered) return true;
    at += static_cast<std::size_t>(offered);
  }
  return true;
}

}  // namespace

LRESULT InkControl::Message(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != EM_STREAMIN && message != EM_STREAMOUT) return 0;
  auto* stream = reinterpret_cast<EDITSTREAM*>(lParam);
  const auto format = static_cast<DWORD>(wParam);
  if (!stream || !stream->pfnCallback || format != wParam) return E_FAIL;
  try {
    return message == EM_STREAMIN ? StreamIn(format, *stream) : StreamOut(format, *stream);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

LRESULT InkControl::StreamIn(DWORD format, EDITSTREAM& stream) {
  const NoteFormat* known = FindNoteFormat(format);
  std::string bytes;
  if (!known || !ReadAll(stream, bytes)) return E_FAIL;
  // A file of nothing is a note without text, whatever its format.
  std::optional<std::u16string> text = bytes.empty() ? std::u16string() : known->read(bytes);
  if (!text) return E_FAIL;
  text_ = *std::move(text);
  return S_OK;
}

LRESULT InkControl::StreamOut(DWORD format, EDITSTREAM& stream) const {
  const NoteFormat* known = FindNoteFormat(format);
  if (!known) return E_FAIL;
  std::optional<std::string> bytes = known->write(text_);
  // What could not be read again is not written.
  if (!bytes || bytes->size() > kMaxNoteBytes) return E_FAIL;
  return WriteAll(stream, *std::move(bytes)) ? S_OK : E_FAIL;
}

}  // namespace ce::host
