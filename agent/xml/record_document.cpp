#include "agent/xml/record_document.h"

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/xml/document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

HRESULT RecordDocument::Open() {
  if (isOpen()) return S_OK;
  RETURN_IF_FAILED(CreateXMLObjects(document_.put(), root_.put()));
  // Memory that ran out shows as a positive code.
  return isOpen() ? S_OK : E_OUTOFMEMORY;
}

HRESULT RecordDocument::Send(CorvaneStream* stream) {
  if (!isOpen()) return S_OK;
  LOG(u"Calling StreamXMLToDesktop");
  const HRESULT status = StreamXMLToDesktop(document_.get(), stream);
  root_.reset();
  document_.reset();
  return status;
}

bool IsHeard(const CorvaneStream* stream) {
  return !stream || !stream->Ended() || LoggingIsOn();
}

HRESULT EndDownload(CorvaneStream* stream, HRESULT status) {
  if (stream) {
    static_cast<void>(WriteWordAhead(stream, 0));
    static_cast<void>(WriteWord(stream, static_cast<DWORD>(status)));
    stream->Release();
  }
  return status;
}

}  // namespace corvane
