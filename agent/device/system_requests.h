// What the agent and the handheld say of themselves. Each is a buffered request and refuses a
// stream with E_INVALIDARG.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Output of GetDLLVersion.
struct VersionBlock {
  ce::DWORD size;
  ce::DWORD major;
  ce::DWORD minor;
  char buildDate[40];  // padded with zeros
};
static_assert(sizeof(VersionBlock) == 52);

// Always the same block.
ce::HRESULT GetDLLVersion(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                          ce::BYTE** output, CorvaneStream* stream);

// Output: the LANGID in 4 bytes.
ce::HRESULT CVCeGetSystemDefaultLangID(ce::DWORD inputCount, const ce::BYTE* input,
                                       ce::DWORD* outputCount, ce::BYTE** output,
                                       CorvaneStream* stream);

// Not listed for the desktop. Input: exactly four bytes, a process handle. Output: the process's
// exit code; a positive code of the system, and no output, when it cannot be told.
ce::HRESULT CVCeGetExitCodeProcess(ce::DWORD inputCount, const ce::BYTE* input,
                                   ce::DWORD* outputCount, ce::BYTE** output,
                                   CorvaneStream* stream);

// Not listed for the desktop. Has the AvantGo client synchronise, and returns when it has; leaves
// the output as it is. 2 on a handheld without the client, whose module stays loaded.
ce::HRESULT CVCeStartAvantGoSync(ce::DWORD inputCount, const ce::BYTE* input,
                                 ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
