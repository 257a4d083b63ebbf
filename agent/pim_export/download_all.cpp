#include "agent/log/log.h"
#include "agent/messages/call_log_export.h"
#include "agent/messages/text_message_export.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_export/folder_export.h"
#include "agent/pim_export/record_document.h"
#include "agent/pim_export/record_kinds.h"
#include "agent/time/zone.h"
#include "platform/com.h"

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
