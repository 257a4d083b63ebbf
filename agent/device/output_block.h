// The output of a buffered request.
#pragma once

#include <cstring>

#include "platform/memory.h"
#include "platform/types.h"

namespace corvane {

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
