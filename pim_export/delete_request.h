// The buffered request that empties a folder.
#pragma once

#include "base/request_handler.h"

namespace corvane {

// Input: exactly four bytes, the kind; no output. Stops at the first item that cannot be deleted.
// The call log and the text messages cannot be emptied (E_NOTIMPL); a kind that nobody knows
// succeeds.
ce::HRESULT DeleteAllPIMRecords(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                                ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
