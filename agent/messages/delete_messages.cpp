#include "agent/messages/delete_messages.h"

#include <algorithm>

#include "agent/messages/mapi_memory.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT DeleteRow(IMAPIFolder* folder, const SRow& row) {
  SPropValue* const end = row.lpProps + row.cValues;
  SPropValue* const found = std::find_if(
      row.lpProps, end, [](const SPropValue& value) { return value.ulPropTag == PR_ENTRYID; });
  if (found == end) return S_OK;
  const ENTRYLIST list{1, &found->Value.bin};
  return folder->DeleteMessages(&list, 0, nullptr, 0);
}

}  // namespace

HRESULT DeleteFolderMessages(IMsgStore*, IMAPIFolder* folder, IMAPITable* contents) {
  DWORD count = 0;
  RETURN_IF_FAILED(contents->GetRowCount(0, &count));
  if (count == 0) return S_OK;
  BulkRows rows;
  RETURN_IF_FAILED(contents->QueryRows(static_cast<LONG>(count), 0, rows.put()));
  if (!rows.get()) return S_OK;
  for (DWORD index = 0; index < rows.get()->cRows; ++index) {
    RETURN_IF_FAILED(DeleteRow(folder, rows.get()->aRow[index]));
  }
  return S_OK;
}

}  // namespace corvane
