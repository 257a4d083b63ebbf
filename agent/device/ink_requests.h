// The requests that convert notes between the handheld's files and the desktop's formats.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// A path's length runs past the input.
inline constexpr ce::HRESULT kPathTooLong = static_cast<ce::HRESULT>(0x800A017C);

// Input: the format wanted, then the path of a file of the handheld, UTF-16LE. Output: the file's
// content in that format, without a terminator.
ce::HRESULT CVCeConvertFromFile(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                                ce::BYTE** output, CorvaneStream* stream);

// Input: the format of the data, the byte length of the path, the path, the data. Writes the data
// to the file in the format of its extension; without data it makes an empty file. No output.
// A file that cannot be made shows only when there is something to write to it.
ce::HRESULT CVCeConvertToFile(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                              ce::BYTE** output, CorvaneStream* stream);

// Output: 1 when the handheld has the control, else 0.
ce::HRESULT CVCeHasRichInk(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                           ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
