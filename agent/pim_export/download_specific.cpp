#include "agent/log/log.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_export/error_to_xml.h"
#include "agent/pim_export/folder_items.h"
#include "agent/pim_export/record_kinds.h"
#include "agent/time/zone.h"
#include "agent/vocabulary/outlook_session.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddItem(IPOutlookApp* app, const RecordKind* kind, LONG oid, RecordDocument& document) {
  if (!document.isOpen()) {
    const HRESULT opened = document.Open();
    LOG(u"After CreateXMLObjects hr = %ld", opened);
    RETURN_IF_FAILED(opened);
  }
  LOG(u"Calling GetItemFromOid");
  ComPtr<IDispatch> found;
  HRESULT status = app->GetItemFromOid(oid, found.put());
  LOG(u"GetItemFromOid returned %ld", status);
  RETURN_IF_FAILED(status);
  if (!kind) return E_INVALIDARG;
  const ComPtr<IUnknown> item = ItemAs(found.get(), *kind->itemInterface);
  if (!item) return kWrongItemKind;
  status = kind->exportItem(document.document(), document.root(), item.get());
  LOG(kind->specificTrace, status);
  return status;
}

HRESULT AddItemOrError(IPOutlookApp* app, const RecordKind* kind, LONG oid,
                       RecordDocument& document) {
  const HRESULT status = AddItem(app, kind, oid, document);
  // Without a document there is no place for an error record: the failure ends the download.
  if (Succeeded(status) || !document.isOpen()) return status;
  return AddErrorToXML(document.document(), document.root(), oid, status);
}

HRESULT SendItems(IPOutlookApp* app, const BYTE* input, DWORD words, CorvaneStream* stream) {
  const RecordKind* const kind = FindRecordKind(InputWord(input));
  // The first record travels alone: the desktop counts on it.
  constexpr DocumentSizes kSizes{1, kRecordsPerDocument};
  DWORD index = 0;
  return SendRecords(stream, kSizes, [&](RecordDocument& document, bool* more) -> HRESULT {
    *more = ++index < words;
    if (!*more) return S_OK;
    const LONG oid = static_cast<LONG>(InputWord(input + sizeof(DWORD) * index));
    return AddItemOrError(app, kind, oid, document);
  });
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
