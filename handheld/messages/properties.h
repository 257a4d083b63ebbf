// Properties as the store has them: queries whose columns are properties.
#pragma once

#include <cstdint>
#include <span>

#include "handheld/messages/mapi_buffer.h"
#include "handheld/store/store.h"
#include "platform/mapi.h"

namespace ce::host {

// Column 0 is the row's number, column i + 1 the property tags[i]; NULL is a property that the row
// lacks.
struct PropertyQuery {
  const char* sql;
  std::span<const DWORD> tags;
  std::size_t usual = tags.size();  // so many of them, the first ones, are a table's columns
};

// The properties that the row has, in the query's order; their number.
DWORD PresentProperties(const Statement& row, std::span<const DWORD> tags, MapiBuffer& buffer,
                        SPropValue* values);

// One value for each of `wanted`; what the row lacks is a PT_ERROR with MAPI_E_NOT_FOUND. True when
// there was none of these.
bool WantedProperties(const Statement& row, std::span<const DWORD> tags,
                      std::span<const DWORD> wanted, MapiBuffer& buffer, SPropValue* values);

// IMAPIProp::GetProps of a row with these tags.
HRESULT ReadProperties(const Statement& row, std::span<const DWORD> tags,
                       const SPropTagArray& wanted, DWORD* count, SPropValue** values);
// The same of the row that `query` finds for `id` (?1); MAPI_E_NOT_FOUND without one.
[[nodiscard]] HRESULT ReadProperties(Store& store, const PropertyQuery& query, std::int64_t id,
                                     const SPropTagArray& tags, DWORD* count, SPropValue** values);

}  // namespace ce::host
