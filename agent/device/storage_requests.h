// The requests that tell the desktop where the storage cards are and how much room there is.
//
// Each is buffered and refuses a stream with E_INVALIDARG. A card's number counts from 0; the space
// of a card that cannot be asked is not reported as a failure.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// How room is answered.
struct SpaceBlock {
  ce::DWORD size = sizeof(SpaceBlock);
  ce::DWORD reserved = 0;
  ce::ULONGLONG total = 0;  // bytes
  ce::ULONGLONG free = 0;   // bytes, for the caller to use
};
static_assert(sizeof(SpaceBlock) == 24);

// Output: the room on all cards together.
ce::HRESULT GetTotalSpace(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                          ce::BYTE** output, CorvaneStream* stream);

// Output: how many cards there are, 4 bytes.
ce::HRESULT GetVolumeCount(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                           ce::BYTE** output, CorvaneStream* stream);

// Input: exactly four bytes, a card's number. Output: its room. S_FALSE and none when there is no
// such card.
ce::HRESULT GetCardSpace(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                         ce::BYTE** output, CorvaneStream* stream);

// The same; output: the card's path in UTF-16LE, with its terminator.
ce::HRESULT GetCardDirectory(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                             ce::BYTE** output, CorvaneStream* stream);

// Input: the path of a directory in UTF-16LE, at most 259 characters. Output: the room on its
// volume; on failure the status is the system's positive code, and an empty block comes with a
// count of 0.
ce::HRESULT CVCeGetDiskFreeSpaceEx(ce::DWORD inputCount, const ce::BYTE* input,
                                   ce::DWORD* outputCount, ce::BYTE** output,
                                   CorvaneStream* stream);

}  // namespace corvane
