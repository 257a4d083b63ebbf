// The shape of every request handler, the names that they answer to, and what they answer with.
#pragma once

#include <cstring>
#include <span>
#include <string_view>

#include "platform/memory.h"
#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// `input` is borrowed. A buffered request is called with a null stream; it may allocate its output
// with LocalAlloc and leaves it to the caller to free, also when it fails. A streamed request reads
// and writes `stream`, which stays the caller's.
// The status: 0, a negative failure, or a positive Win32 code, which counts as success.
using RequestHandler = ce::HRESULT (*)(ce::DWORD inputCount, const ce::BYTE* input,
                                       ce::DWORD* outputCount, ce::BYTE** output,
                                       CorvaneStream* stream);

struct RequestEntry {
  std::u16string_view name;
  RequestHandler handler;
};

// Searched in order; names match whole and with their case. Defined by the program that links the
// dispatcher.
std::span<const RequestEntry> StreamedRequests();
std::span<const RequestEntry> BufferedRequests();

// A word of the wire, little-endian.
inline ce::DWORD InputWord(const ce::BYTE* input) {
  return input[0] | ce::DWORD{input[1]} << 8 | ce::DWORD{input[2]} << 16 |
         ce::DWORD{input[3]} << 24;
}

inline void ClearOutput(ce::DWORD* outputCount, ce::BYTE** output) {
  *outputCount = 0;
  *output = nullptr;
}

// Zero-filled local memory with room for a `T`; null when memory runs out.
template <typename T>
[[nodiscard]] T* NewOutput() {
  return static_cast<T*>(ce::LocalAlloc(ce::LMEM_ZEROINIT, sizeof(T)));
}

// Answers a copy of the bytes; E_OUTOFMEMORY and no output when there is no memory for it.
[[nodiscard]] inline ce::HRESULT AnswerBytes(const void* bytes, ce::DWORD count,
                                             ce::DWORD* outputCount, ce::BYTE** output) {
  ClearOutput(outputCount, output);
  void* const block = ce::LocalAlloc(ce::LMEM_ZEROINIT, count);
  if (!block) return ce::E_OUTOFMEMORY;
  std::memcpy(block, bytes, count);
  *output = static_cast<ce::BYTE*>(block);
  *outputCount = count;
  return ce::S_OK;
}

template <typename T>
[[nodiscard]] ce::HRESULT Answer(const T& value, ce::DWORD* outputCount, ce::BYTE** output) {
  return AnswerBytes(&value, sizeof(value), outputCount, output);
}

}  // namespace corvane
