#include "agent/pim_export/delete_request.h"

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/messages/text_message_export.h"
#include "agent/pim_export/folder_items.h"
#include "agent/pim_export/record_kinds.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT DeleteFolder(const RecordKind& kind) {
  FolderItems items;
  RETURN_IF_FAILED(items.Open(&kind));
  // Downwards: the indices that are left stay valid while items disappear.
  for (INT index = items.count(); index >= 1; --index) {
    ComPtr<IUnknown> item;
    RETURN_IF_FAILED(items.Item(index, &item));
    RETURN_IF_FAILED(kind.deleteItem(item.get()));
  }
  return S_OK;
}

HRESULT DeleteKind(DWORD kind) {
  if (const RecordKind* const recordKind = FindRecordKind(kind)) return DeleteFolder(*recordKind);
  if (kind == kPIMDataTextMessage) return ExportTextMessages(nullptr);
  return kind == kPIMDataCallLog ? E_NOTIMPL : S_OK;
}

}  // namespace

HRESULT DeleteAllPIMRecords(DWORD inputCount, const BYTE* input, DWORD*, BYTE**,
                            CorvaneStream* stream) {
  LoadLogSettings();
  LOG(u"DeleteAllPIMRecords");
  const bool valid = inputCount == sizeof(DWORD) && input && !stream;
  const HRESULT status = valid ? DeleteKind(InputWord(input)) : E_INVALIDARG;
  if (stream) stream->Release();
  LOG(u"Exit DeleteAllPIMRecords");
  return status;
}

}  // namespace corvane
