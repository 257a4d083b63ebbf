#include "agent/device/system_requests.h"

#include <cstring>

#include "agent/log/log.h"
#include "platform/modules.h"
#include "platform/status.h"
#include "platform/system.h"

namespace corvane {
namespace {

constexpr VersionBlock kVersion = {sizeof(VersionBlock), 4, 12, "Tue Jun 26 10:41:20 2007"};

// What the desktop knows as the answer of a handheld without the client.
constexpr ce::HRESULT kNoMobileLink = 2;

}  // namespace

ce::HRESULT GetDLLVersion(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                          ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  return Answer(kVersion, outputCount, output);
}

ce::HRESULT CVCeGetSystemDefaultLangID(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                                       ce::DWORD* outputCount, ce::BYTE** output,
                                       CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  return Answer(ce::DWORD{ce::GetSystemDefaultLangID()}, outputCount, output);
}

ce::HRESULT CVCeGetExitCodeProcess(ce::DWORD inputCount, const ce::BYTE* input,
                                   ce::DWORD* outputCount, ce::BYTE** output,
                                   CorvaneStream* stream) {
  LoadLogSettings();
  LOG(u"CVCeGetExitCodeProcess called");
  ce::DWORD process = 0;
  if (inputCount != sizeof(process) || stream) return ce::E_INVALIDARG;
  std::memcpy(&process, input, sizeof(process));
  ClearOutput(outputCount, output);
  auto* const exitCode = NewOutput<ce::DWORD>();
  *output = reinterpret_cast<ce::BYTE*>(exitCode);
  if (!exitCode) return ce::LastErrorStatus();
  if (!ce::GetExitCodeProcess(process, exitCode)) {
    const ce::DWORD error = ce::GetLastError();
    LOG(u"GetExitCodeProcess failed");
    ce::LocalFree(exitCode);
    *output = nullptr;
    return static_cast<ce::HRESULT>(error);
  }
  // The block's address, not what is in it: so these lines have always read.
  const void* const block = *output;
  LOG(u"GetExitCodeProcess worked *ppOutput = %ld (0x%08X)", block, block);
  *outputCount = sizeof(*exitCode);
  return ce::S_OK;
}

ce::HRESULT CVCeStartAvantGoSync(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                                 ce::DWORD* /*outputCount*/, ce::BYTE** /*output*/,
                                 CorvaneStream* stream) {
  LoadLogSettings();
  LOG(u"CVCeStartAvantGoSync called");
  if (stream) return ce::E_INVALIDARG;
  const ce::HMODULE mobileLink = ce::LoadLibraryW(u"mobilelink.cpl");
  if (!mobileLink) {
    LOG(u"Didn't find MobileLink DLL");
    return kNoMobileLink;
  }
  const auto synchronise =
      reinterpret_cast<ce::AgmalCpOptionFn>(ce::GetProcAddressW(mobileLink, u"AGMALCPOption"));
  LOG(u"found MobileLink CPL");
  if (!synchronise) {
    LOG(u"Didn't find AGMALCPOption routine");
    return ce::E_NOTIMPL;
  }
  // Whether or not the log is switched on.
  Log(u"Ready to call AGMALCPOption");
  synchronise(0, 2, 0, 0);
  LOG(u"Back from AGMALCPOption");
  return ce::S_OK;
}

}  // namespace corvane
