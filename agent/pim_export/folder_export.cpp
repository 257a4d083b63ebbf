#include "agent/pim_export/folder_export.h"

#include "agent/log/log.h"
#include "agent/pim_export/folder_items.h"
#include "agent/pim_export/record_document.h"
#include "agent/pim_export/record_kinds.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddItem(const FolderItems& items, INT index, const RecordKind& kind,
                RecordDocument& document) {
  RETURN_IF_FAILED(document.Open());
  ComPtr<IUnknown> item;
  RETURN_IF_FAILED(items.Item(index, &item));
  const HRESULT status = kind.exportItem(document.document(), document.root(), item.get());
  LOG(kind.allTrace, status);
  return status;
}

HRESULT SendItems(const FolderItems& items, const RecordKind& kind, CorvaneStream* stream) {
  constexpr DocumentSizes kSizes{kRecordsPerDocument, kRecordsPerDocument};
  INT index = 0;
  return SendRecords(stream, kSizes, [&](RecordDocument& document, bool* more) -> HRESULT {
    *more = index++ < items.count();
    return *more ? AddItem(items, index, kind, document) : S_OK;
  });
}

}  // namespace

HRESULT ExportFolder(DWORD kind, CorvaneStream* stream) {
  const RecordKind* const recordKind = FindRecordKind(kind);
  FolderItems items;
  HRESULT status = items.Open(recordKind);
  if (Succeeded(status)) status = SendItems(items, *recordKind, stream);
  return EndDownload(stream, status);
}

}  // namespace corvane
