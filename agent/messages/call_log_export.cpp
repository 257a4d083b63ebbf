#include "agent/messages/call_log_export.h"

#include "agent/log/log.h"
#include "agent/messages/call_to_xml.h"
#include "agent/messages/phone_library.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr DWORD kCallsPerDocument = 40;

HRESULT SendCalls(const CallLog& log, CorvaneStream* stream) {
  RecordDocument batch;
  HRESULT status = S_OK;
  for (DWORD counter = 0;; ++counter) {
    CallEntry entry;
    const HRESULT read = log.Read(entry.get());
    RETURN_IF_FAILED(read);
    if (read == S_FALSE) return batch.isOpen() ? batch.Send(stream) : status;
    if (!batch.isOpen()) RETURN_IF_FAILED(batch.Open());
    RETURN_IF_FAILED(AddCallToXML(batch.document(), batch.root(), *entry.get()));
    // Before it is increased, so the first call travels alone: the desktop counts on it.
    if (counter % kCallsPerDocument == 0) {
      status = batch.Send(stream);
      RETURN_IF_FAILED(status);
    }
  }
}

}  // namespace

HRESULT ExportCallLog(CorvaneStream* stream) {
  LOG(u"DownloadALLCallLog");
  PhoneLibrary phone;
  CallLog log(phone);
  HRESULT status = phone.Load();
  if (Succeeded(status)) status = log.Open();
  if (Succeeded(status)) status = SendCalls(log, stream);
  return EndDownload(stream, status);
}

}  // namespace corvane
