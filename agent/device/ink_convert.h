// Conversion of notes between the ink-note format and texts, by the device's RichInk control.
//
// Statuses are the control's, a negative failure, or a positive system error: the last error of the
// call that failed. Anything but 0 leaves no output, except that a window which cannot be destroyed
// after a conversion takes nothing back.
#pragma once

#include <string_view>

#include "platform/types.h"

namespace corvane {

inline constexpr ce::HRESULT kUnknownExtension = static_cast<ce::HRESULT>(0x800A0141);
// A file gave or took fewer bytes than asked.
inline constexpr ce::HRESULT kShortTransfer = static_cast<ce::HRESULT>(0x800A0039);
// What a path of the device may have.
inline constexpr std::size_t kMaxPath = 259;

// Whether the control's library is loaded. Tried once in the life of the process; the library is
// kept until it ends.
bool LoadRichInk();
// Frees the library and forgets that it was tried.
void ResetRichInk();

// The format that the text behind the last '.' stands for, letter case and all; 0 for any other.
ce::DWORD GetFormatFromExtension(std::u16string_view path);

// On success `*buffer` is a local block, with room for 32 bytes more than the `*count` that were
// written to it, and the caller's. Null and 0 otherwise.
[[nodiscard]] ce::HRESULT ConvertWithRichInk(const ce::BYTE* data, ce::DWORD size,
                                             ce::DWORD inputFormat, ce::BYTE** buffer,
                                             ce::DWORD* count, ce::DWORD outputFormat);

// The same for a file of the handheld, whose format follows from its name.
[[nodiscard]] ce::HRESULT ConvertFileToBuffer(const char16_t* path, ce::DWORD outputFormat,
                                              ce::DWORD* count, ce::BYTE** buffer);

}  // namespace corvane
