#include "agent/log/log.h"
#include "agent/messages/call_log_export.h"
#include "agent/messages/text_message_export.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_export/folder_items.h"
#include "agent/pim_export/record_kinds.h"
#include "agent/time/zone.h"
#include "agent/xml/record_document.h"
#include "platform/com.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

class ComApartment {
 public:
  ComApartment() : status_(CoInitializeEx(nullptr, 0)) {}
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  ~ComApartment() {
    if (Succeeded(status_)) CoUninitialize();
  }
  HRESULT status() const { return status_; }

 private:
  const HRESULT status_;
};

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

// An item that cannot be exported ends the walk; its unfinished document is not sent.
HRESULT ExportFolder(DWORD kind, CorvaneStream* stream) {
  const RecordKind* const recordKind = FindRecordKind(kind);
  FolderItems items;
  HRESULT status = items.Open(recordKind);
  if (Succeeded(status)) status = SendItems(items, *recordKind, stream);
  return EndDownload(stream, status);
}

HRESULT ExportKind(DWORD kind, CorvaneStream* stream) {
  const ComApartment apartment;
  if (Failed(apartment.status())) return EndDownload(stream, apartment.status());
  switch (kind) {
    case kPIMDataAppointment:
    case kPIMDataContact:
    case kPIMDataTask:
    case kPIMDataContact2:
      return ExportFolder(kind, stream);
    case kPIMDataCallLog:
      return ExportCallLog(stream);
    case kPIMDataTextMessage:
      return ExportTextMessages(stream);
    default:
      return EndDownload(stream, E_INVALIDARG);
  }
}

}  // namespace

HRESULT DownloadAllPIMRecords(DWORD inputCount, const BYTE* input, DWORD*, BYTE**,
                              CorvaneStream* stream) {
  LoadLogSettings();
  ResetTimeZoneCache();
  LOG(u"DownloadAllPIMRecords");
  const bool valid = inputCount == sizeof(DWORD) && input && stream;
  const HRESULT status =
      valid ? ExportKind(InputWord(input), stream) : EndDownload(stream, E_INVALIDARG);
  LOG(u"Exit DownloadAllPIMRecords hr = 0x%08X", status);
  return status;
}

}  // namespace corvane
