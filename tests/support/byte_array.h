// Bytes as a document is loaded from them.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane::testing {

class ByteArray {
 public:
  explicit ByteArray(std::string_view bytes) {
    ce::VARIANT* const value = variant_.put();
    value->parray = ce::SafeArrayCreateVector(ce::VT_UI1, 0, static_cast<ce::DWORD>(bytes.size()));
    value->vt = ce::VT_ARRAY | ce::VT_UI1;
    void* data = nullptr;
    EXPECT_EQ(ce::SafeArrayAccessData(value->parray, &data), ce::S_OK);
    if (data) bytes.copy(static_cast<char*>(data), bytes.size());
  }

  const ce::VARIANT& get() const { return variant_.get(); }

 private:
  ce::Variant variant_;
};

}  // namespace corvane::testing
