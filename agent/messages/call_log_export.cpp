#include "agent/messages/call_log_export.h"

#include "agent/log/log.h"
#include "agent/messages/call_to_xml.h"
#include "agent/messages/phone_library.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// The first call travels alone: the desktop counts on it.
constexpr DocumentSizes kCallSizes{1, 40};

HRESULT SendCalls(const CallLog& log, CorvaneStream* stream) {
  return SendRecords(stream, kCallSizes, [&](RecordDocument& document, bool* more) -> HRESULT {
    CallEntry entry;
    const HRESULT read = log.Read(entry.get());
    *more = read != S_FALSE;
    if (Failed(read) || !*more) return read;
    RETURN_IF_FAILED(document.Open());
    return AddCallToXML(document.document(), document.root(), *entry.get());
  });
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
