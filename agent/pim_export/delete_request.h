// The buffered request that empties a folder, or the folders of text messages.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Input: exactly four bytes, the kind; no output. Stops at the first item that cannot be deleted.
// The call log cannot be emptied (E_NOTIMPL), nor can text messages on a handheld that has no store
// for them; a kind that nobody knows succeeds.
ce::HRESULT DeleteAllPIMRecords(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                                ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
