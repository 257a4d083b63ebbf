#include "agent/messages/phone_library.h"

#include "platform/status.h"

namespace corvane {
namespace {

template <typename Function>
bool Find(ce::HMODULE module, const ce::WCHAR* name, Function* function) {
  *function = reinterpret_cast<Function>(ce::GetProcAddressW(module, name));
  return *function != nullptr;
}

}  // namespace

PhoneLibrary::~PhoneLibrary() {
  if (module_) ce::FreeLibrary(module_);
}

ce::HRESULT PhoneLibrary::Load() {
  module_ = ce::LoadLibraryW(u"Phone.dll");
  const bool whole = module_ && Find(module_, u"PhoneOpenCallLog", &open) &&
                     Find(module_, u"PhoneCloseCallLog", &close) &&
                     Find(module_, u"PhoneSeekCallLog", &seek) &&
                     Find(module_, u"PhoneGetCallLogEntry", &read);
  return whole ? ce::S_OK : ce::E_NOTIMPL;
}

CallLog::~CallLog() {
  if (log_ != 0) static_cast<void>(phone_.close(log_));
}

ce::HRESULT CallLog::Open() {
  RETURN_IF_FAILED(phone_.open(&log_));
  ce::DWORD record = 0;
  return phone_.seek(log_, ce::CALLLOGSEEK_BEGINNING, 0, &record);
}

ce::HRESULT CallLog::Read(ce::CALLLOGENTRY* entry) const {
  return phone_.read(log_, entry);
}

}  // namespace corvane
