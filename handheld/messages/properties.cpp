#include "handheld/messages/properties.h"

#include <algorithm>

namespace ce::host {
namespace {

void Fill(const Statement& row, int column, DWORD tag, MapiBuffer& buffer, SPropValue& value) {
  value.ulPropTag = tag;
  switch (PROP_TYPE(tag)) {
    case PT_LONG:
      value.Value.l = static_cast<LONG>(row.Integer(column));
      break;
    case PT_SYSTIME: {
      const auto ticks = static_cast<std::uint64_t>(row.Integer(column));
      value.Value.ft = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
      break;
    }
    case PT_UNICODE:
      value.Value.lpszW = buffer.Text(row.Text(column));
      break;
    default: {
      const auto [bytes, size] = row.Blob(column);
      value.Value.bin = buffer.Binary(bytes, size);
    }
  }
}

}  // namespace

DWORD PresentProperties(const Statement& row, std::span<const DWORD> tags, MapiBuffer& buffer,
                        SPropValue* values) {
  DWORD present = 0;
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const int column = static_cast<int>(i) + 1;
    if (!row.IsNull(column)) Fill(row, column, tags[i], buffer, values[present++]);
  }
  return present;
}

bool WantedProperties(const Statement& row, std::span<const DWORD> tags,
                      std::span<const DWORD> wanted, MapiBuffer& buffer, SPropValue* values) {
  bool complete = true;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const auto found = std::find(tags.begin(), tags.end(), wanted[i]);
    const int column = static_cast<int>(found - tags.begin()) + 1;
    if (found != tags.end() && !row.IsNull(column)) {
      Fill(row, column, wanted[i], buffer, values[i]);
    } else {
      values[i].ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(wanted[i]));
      values[i].Value.err = MAPI_E_NOT_FOUND;
      complete = false;
    }
  }
  return complete;
}

HRESULT ReadProperties(const Statement& row, std::span<const DWORD> tags,
                       const SPropTagArray& wanted, DWORD* count, SPropValue** values) {
  MapiBuffer buffer;
  auto* const read = buffer.Allocate<SPropValue>(wanted.cValues);
  const bool complete =
      WantedProperties(row, tags, {wanted.aulPropTag, wanted.cValues}, buffer, read);
  buffer.HandOut();
  *count = wanted.cValues;
  *values = read;
  return complete ? S_OK : MAPI_W_ERRORS_RETURNED;
}

HRESULT ReadProperties(Store& store, const PropertyQuery& query, std::int64_t id,
                       const SPropTagArray& tags, DWORD* count, SPropValue** values) {
  Statement select;
  bool row = false;
  RETURN_IF_FAILED(store.Find(query.sql, "sqlite3_step:read", select, row, id));
  if (!row) return MAPI_E_NOT_FOUND;
  return ReadProperties(select, query.tags, tags, count, values);
}

}  // namespace ce::host
