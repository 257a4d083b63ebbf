// Tables of things with a name: the message stores, the subfolders of a folder.
#pragma once

#include "agent/messages/mapi_memory.h"
#include "platform/mapi.h"
#include "platform/status.h"

namespace corvane {

struct NamedRow {
  const ce::WCHAR* name = nullptr;
  ce::SBinary entryId{};
};

// Reads the next row into `row`, which owns what `named` refers to. False in `more` at the end.
[[nodiscard]] ce::HRESULT ReadNamedRow(ce::IMAPITable* table, SingleRow* row, NamedRow* named,
                                       bool* more);

// Calls `visit` with each row, until it fails.
template <typename Visit>
[[nodiscard]] ce::HRESULT ForEachNamedRow(ce::IMAPITable* table, Visit visit) {
  for (;;) {
    SingleRow row;
    NamedRow named;
    bool more = false;
    RETURN_IF_FAILED(ReadNamedRow(table, &row, &named, &more));
    if (!more) return ce::S_OK;
    RETURN_IF_FAILED(visit(named));
  }
}

}  // namespace corvane
