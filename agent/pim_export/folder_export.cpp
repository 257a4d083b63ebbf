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
                RecordDocument* batch) {
  if (!batch->isOpen()) RETURN_IF_FAILED(batch->Open());
  ComPtr<IUnknown> item;
  RETURN_IF_FAILED(items.Item(index, &item));
  const HRESULT status = kind.exportItem(batch->document(), batch->root(), item.get());
  LOG(kind.allTrace, status);
  return status;
}

HRESULT SendItems(const FolderItems& items, const RecordKind& kind, CorvaneStream* stream) {
  RecordDocument batch;
  for (INT index = 1; index <= items.count(); ++index) {
    RETURN_IF_FAILED(AddItem(items, index, kind, &batch));
    if (index % kRecordsPerDocument == 0) RETURN_IF_FAILED(batch.Send(stream));
  }
  return batch.Send(stream);
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
