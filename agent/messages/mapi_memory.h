// Owners for what MAPI hands out, and values that are only taken for what they are.
#pragma once

#include <utility>

#include "platform/mapi.h"

namespace corvane {

template <typename T, auto kFree>
class MapiMemory {
 public:
  MapiMemory() = default;
  MapiMemory(const MapiMemory&) = delete;
  MapiMemory& operator=(const MapiMemory&) = delete;
  ~MapiMemory() { reset(); }

  T* get() const { return memory_; }
  T** put() {
    reset();
    return &memory_;
  }

 private:
  void reset() {
    if (T* const old = std::exchange(memory_, nullptr)) kFree(old);
  }

  T* memory_ = nullptr;
};

using PropertyValues = MapiMemory<ce::SPropValue, ce::MAPIFreeBuffer>;
using BulkRows = MapiMemory<ce::SRowSet, ce::MAPIFreeBuffer>;

// The row set of a walk in single steps.
class SingleRow {
 public:
  ce::SRowSet** put() { return rows_.put(); }
  // Null unless exactly one row came.
  const ce::SRow* get() const {
    return rows_.get() && rows_.get()->cRows == 1 ? rows_.get()->aRow : nullptr;
  }

 private:
  MapiMemory<ce::SRowSet, ce::FreeProws> rows_;
};

// Null for a value that is no text: an object answers an error in place of what it lacks.
inline const ce::WCHAR* TextOf(const ce::SPropValue& value) {
  return ce::PROP_TYPE(value.ulPropTag) == ce::PT_UNICODE ? value.Value.lpszW : nullptr;
}

// No bytes for a value that is not binary.
inline ce::SBinary BytesOf(const ce::SPropValue& value) {
  if (ce::PROP_TYPE(value.ulPropTag) != ce::PT_BINARY) return {0, nullptr};
  return value.Value.bin;
}

}  // namespace corvane
