#include "agent/log/log.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_export/error_to_xml.h"
#include "agent/pim_export/folder_items.h"
#include "agent/pim_export/record_document.h"
#include "agent/pim_export/record_kinds.h"
#include "agent/time/zone.h"
#include "agent/vocabulary/outlook_session.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddItem(IPOutlookApp* app, const RecordKind* kind, LONG oid, RecordDocument* batch) {
  if (!batch->isOpen()) {
    const HRESULT opened = batch->Open();
    LOG(u"After CreateXMLObjects hr = %ld", opened);
    RETURN_IF_FAILED(opened);
  }
  LOG(u"Calling GetItemFromOid");
  ComPtr<IDispatch> found;
  HRESULT status = app->GetItemFromOid(oid, found.put());
  LOG(u"GetItemFromOid returned %ld", status);
  RETURN_IF_FAILED(status);
  if (!kind) return E_INVALIDARG;
  const ComPtr<IUnknown> item = ItemOfKind(found.get(), *kind);
  if (!item) return kWrongItemKind;
  status = kind->exportItem(batch->document(), batch->root(), item.get());
  LOG(kind->specificTrace, status);
  return status;
}

HRESULT AddItemOrError(IPOutlookApp* app, const RecordKind* kind, LONG oid, RecordDocument* batch) {
  const HRESULT status = AddItem(app, kind, oid, batch);
  // Without a document there is no place for an error record: the failure ends the download.
  if (Succeeded(status) || !batch->isOpen()) return status;
  return AddErrorToXML(batch->document(), batch->root(), oid, status);
}

HRESULT SendItems(IPOutlookApp* app, const BYTE* input, DWORD words, CorvaneStream* stream) {
  const RecordKind* const kind = FindRecordKind(InputWord(input));
  RecordDocument batch;
  for (DWORD index = 0; index + 1 < words; ++index) {
    const LONG oid = static_cast<LONG>(InputWord(input + sizeof(DWORD) * (index + 1)));
    RETURN_IF_FAILED(AddItemOrError(app, kind, oid, &batch));
    // Counted from 0, so the first record travels alone: the desktop counts on it.
    if (index % kRecordsPerDocument == 0) RETURN_IF_FAILED(batch.Send(stream));
  }
  return batch.Send(stream);
}

}  // namespace

HRESULT DownloadSpecificPIMRecords(DWORD inputCount, const BYTE* input, DWORD*, BYTE**,
                                   CorvaneStream* stream) {
  LoadLogSettings();
  ResetTimeZoneCache();
  LOG(u"DownloadSpecificPIMRecords cbInput = %d", inputCount);
  if (inputCount < 2 * sizeof(DWORD) || !input || !stream) return EndDownload(stream, E_INVALIDARG);

  OutlookSession session;
  HRESULT status = session.Create();
  if (Succeeded(status)) status = session.Logon();
  LOG(u"After Logon hr = %ld", status);
  if (Succeeded(status)) {
    status = SendItems(session.app(), input, inputCount / sizeof(DWORD), stream);
  }
  return EndDownload(stream, status);
}

}  // namespace corvane
