// A contents table whose rows a test makes up: values in any order, rows that come in any number.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/messages/mapi_buffer.h"
#include "platform/mapi.h"

namespace corvane::testing {

// Makes one value; what it points to comes from the buffer.
using ValueMaker = std::function<void(ce::host::MapiBuffer& buffer, ce::SPropValue& value)>;
using FakeRow = std::vector<ValueMaker>;

inline ValueMaker LongValue(ce::DWORD tag, ce::LONG number) {
  return [=](ce::host::MapiBuffer&, ce::SPropValue& value) {
    value.ulPropTag = tag;
    value.Value.l = number;
  };
}

// The text is ASCII.
inline ValueMaker TextValue(ce::DWORD tag, std::string text) {
  return [=](ce::host::MapiBuffer& buffer, ce::SPropValue& value) {
    value.ulPropTag = tag;
    value.Value.lpszW = buffer.Text(text);
  };
}

inline ValueMaker BytesValue(ce::DWORD tag, std::vector<ce::BYTE> bytes) {
  return [=](ce::host::MapiBuffer& buffer, ce::SPropValue& value) {
    value.ulPropTag = tag;
    value.Value.bin = buffer.Binary(bytes.data(), bytes.size());
  };
}

inline ValueMaker TimeValue(ce::DWORD tag, std::int64_t ticks) {
  return [=](ce::host::MapiBuffer&, ce::SPropValue& value) {
    value.ulPropTag = tag;
    value.Value.ft = {static_cast<ce::DWORD>(ticks), static_cast<ce::DWORD>(ticks >> 32)};
  };
}

// Each QueryRows answers the next of the row sets, and an empty one behind the last.
class FakeTable final : public ce::host::UnknownObject<ce::IMAPITable> {
 public:
  explicit FakeTable(std::deque<std::vector<FakeRow>> sets) : sets_(std::move(sets)) {}

  ce::HRESULT SetColumns(const ce::SPropTagArray*, ce::DWORD) override { return ce::E_NOTIMPL; }
  ce::HRESULT GetRowCount(ce::DWORD, ce::DWORD* count) override {
    *count = sets_.empty() ? 0 : static_cast<ce::DWORD>(sets_.front().size());
    return ce::S_OK;
  }
  ce::HRESULT QueryRows(ce::LONG, ce::DWORD, ce::SRowSet** rows) override {
    std::vector<FakeRow> set;
    if (!sets_.empty()) {
      set = std::move(sets_.front());
      sets_.pop_front();
    }
    ce::host::MapiBuffer buffer;
    *rows = buffer.Allocate<ce::SRowSet>();
    (*rows)->cRows = static_cast<ce::DWORD>(set.size());
    (*rows)->aRow = buffer.Allocate<ce::SRow>(set.size());
    for (std::size_t r = 0; r < set.size(); ++r) {
      ce::SRow& row = (*rows)->aRow[r];
      row.cValues = static_cast<ce::DWORD>(set[r].size());
      row.lpProps = buffer.Allocate<ce::SPropValue>(set[r].size());
      for (std::size_t v = 0; v < set[r].size(); ++v) set[r][v](buffer, row.lpProps[v]);
    }
    buffer.HandOut();
    return ce::S_OK;
  }

 private:
  ~FakeTable() override = default;

  std::deque<std::vector<FakeRow>> sets_;
};

}  // namespace corvane::testing
