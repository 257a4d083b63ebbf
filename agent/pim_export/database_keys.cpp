#include "agent/pim_export/database_keys.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <span>

#include "agent/core/memory_stream.h"
#include "agent/log/log.h"
#include "agent/pim_export/record_kinds.h"
#include "agent/vocabulary/calendar_words.h"
#include "agent/vocabulary/contact_fields.h"
#include "agent/xml/document.h"
#include "agent/xml/record_document.h"
#include "platform/memory.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT AddNames(const RecordDocument& keys, std::span<const WCHAR* const> names) {
  for (const WCHAR* name : names) {
    RETURN_IF_FAILED(AddEmptyElement(keys.document(), keys.root(), name));
  }
  return S_OK;
}

HRESULT AddAppointmentKeys(const RecordDocument& keys) {
  return AddNames(keys, kAppointmentElements);
}

HRESULT AddContactKeys(const RecordDocument& keys) {
  const bool yomi = GetSystemDefaultLangID() == kLangJapanese;
  for (const ContactField* field : ContactKeyFields()) {
    if (field->kind == ContactFieldKind::kYomiText && !yomi) continue;
    RETURN_IF_FAILED(AddEmptyElement(keys.document(), keys.root(), field->element));
  }
  return S_OK;
}

HRESULT AddTaskKeys(const RecordDocument& keys) {
  return AddNames(keys, kTaskElements);
}

struct KeyList {
  DWORD kind;
  const WCHAR* trace;
  HRESULT (*add)(const RecordDocument& keys);
};

constexpr KeyList kKeyLists[] = {
    {kPIMDataAppointment, u"Appointment", AddAppointmentKeys},
    {kPIMDataContact, u"Contact", AddContactKeys},
    {kPIMDataTask, u"Task", AddTaskKeys},
    {kPIMDataContact2, u"Contact", AddContactKeys},
};

HRESULT AddKeys(DWORD kind, const RecordDocument& keys) {
  const auto* list = std::ranges::find(kKeyLists, kind, &KeyList::kind);
  if (list == std::end(kKeyLists)) {
    LOG(u"Invalid Arg, %d", kind);
    return E_INVALIDARG;
  }
  LOG(list->trace);
  return list->add(keys);
}

HRESULT SaveToBlock(IXMLDOMDocument* document, DWORD* bytes, BYTE** block) {
  MemoryStream text;
  const HRESULT status = SaveDocument(document, &text);
  if (Failed(status) || !text.Buffer() || text.Size() == 0) return status;
  LocalPtr<BYTE> copy(LocalAlloc(LMEM_ZEROINIT, text.Size()));
  if (!copy) return status;
  std::memcpy(copy.get(), text.Buffer(), text.Size());
  *bytes = text.Size();
  *block = copy.detach();
  return status;
}

HRESULT ListKeys(DWORD kind, DWORD* outputCount, BYTE** output) {
  RecordDocument keys;
  RETURN_IF_FAILED(keys.Open());
  RETURN_IF_FAILED(ConfineDocument(keys.document()));
  RETURN_IF_FAILED(AddKeys(kind, keys));
  return SaveToBlock(keys.document(), outputCount, output);
}

}  // namespace

HRESULT GetDatabaseKeys(DWORD inputCount, const BYTE* input, DWORD* outputCount, BYTE** output,
                        CorvaneStream* stream) {
  LoadLogSettings();
  LOG(u"Starting GetDatabaseKeys");
  const bool valid = inputCount == sizeof(DWORD) && input && outputCount && output && !stream;
  const HRESULT status = valid ? ListKeys(InputWord(input), outputCount, output) : E_INVALIDARG;
  LOG(u"returning with hr = 0x%08X", status);
  return status;
}

}  // namespace corvane
