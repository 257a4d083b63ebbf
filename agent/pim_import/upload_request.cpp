#include "agent/pim_import/upload_request.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/pim_import/appointment_from_xml.h"
#include "agent/pim_import/contact_from_xml.h"
#include "agent/pim_import/record_group.h"
#include "agent/pim_import/task_from_xml.h"
#include "agent/pim_import/upload_chunk.h"
#include "agent/pim_import/upload_document.h"
#include "agent/time/zone.h"
#include "agent/vocabulary/calendar_words.h"
#include "agent/vocabulary/contact_fields.h"
#include "agent/vocabulary/outlook_session.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

template <LONG tagForm>
HRESULT ReadContact(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream) {
  return ParseXMLContact(record, app, stream, tagForm);
}

struct RecordRoute {
  std::u16string_view element;
  RecordReader read;
};

constexpr RecordRoute kRoutes[] = {
    {kContactElement, ReadContact<1>},
    {kContact2Element, ReadContact<2>},
    {kCalendarElement, ParseXMLAppointment},
    {kTaskElement, ParseXMLTask},
};

// The reader's own failure is in its reply and ends nothing.
void RouteRecord(std::u16string_view name, IXMLDOMNode* record, RecordGroup* group) {
  const auto* route = std::ranges::find(kRoutes, name, &RecordRoute::element);
  if (route != std::end(kRoutes)) group->Apply(record, route->read);
}

HRESULT ApplyRecords(UploadDocument* document, RecordGroup* group) {
  ComPtr<IXMLDOMNode> record;
  HRESULT status = document->FirstRecord(&record);
  while (Succeeded(status) && record) {
    Bstr name;
    RETURN_IF_FAILED(record->get_nodeName(name.put()));
    RouteRecord(name.view(), record.get(), group);
    ComPtr<IXMLDOMNode> next;
    status = record->get_nextSibling(next.put());
    record = std::move(next);
  }
  return status;
}

// False ends the request.
bool ApplyChunk(DWORD count, UploadDocument* document, IPOutlookTransactions* app,
                CorvaneStream* stream, HRESULT* status) {
  {
    UploadChunk chunk;
    LOG(u"There are %ld bytes available", count);
    if (!chunk.Receive(stream, count, status)) return false;
    if (LoggingIsOn()) LogBinary(chunk.data(), chunk.size());
    *status = document->Load(chunk.array());
  }
  if (Succeeded(*status)) {
    RecordGroup group(app, stream);
    *status = ApplyRecords(document, &group);
    group.Finish();
  }
  // The desktop may take its time until the next one.
  document->Clear();
  return Succeeded(*status);
}

HRESULT Logon(OutlookSession* session, bool* loggedOn) {
  HRESULT status = session->Logon();
  *loggedOn = Succeeded(status);
  if (*loggedOn) {
    LOG(u"pPoomApp->Logon worked!");
    return status;
  }
  const DWORD error = GetLastError();
  LOG(u"pPoomApp->Logon failed %ld", status);
  LOG(u"GetLastError returned %ld", error);
  return static_cast<HRESULT>(error);
}

HRESULT ApplyUpload(CorvaneStream* stream) {
  UploadDocument document;
  RETURN_IF_FAILED(document.Create());
  OutlookSession session;
  RETURN_IF_FAILED(session.Create());
  bool loggedOn = false;
  HRESULT status = Logon(&session, &loggedOn);
  // The last error that stands for a failed log-on is no failure by its sign.
  if (!loggedOn) return status;

  for (;;) {
    DWORD count = 0;
    status = ReadChunkCount(stream, &count);
    if (count == 0) return status;
    if (!ApplyChunk(count, &document, session.app(), stream, &status)) return status;
  }
}

}  // namespace

HRESULT UploadPIMRecords(DWORD, const BYTE*, DWORD*, BYTE**, CorvaneStream* stream) {
  LoadLogSettings();
  ResetTimeZoneCache();
  LOG(u"Starting UploadPIMRecords");
  const HRESULT status = stream ? ApplyUpload(stream) : E_INVALIDARG;
  LOG(u"returning with hr = %ld", status);
  if (stream) stream->Release();
  return status;
}

}  // namespace corvane
