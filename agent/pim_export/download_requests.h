// The streamed requests that hand out records. Both end with a zero word, the final status and the
// connection's close, whatever happens; an input of the wrong size is E_INVALIDARG there.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Input: exactly four bytes, the kind.
ce::HRESULT DownloadAllPIMRecords(ce::DWORD inputCount, const ce::BYTE* input,
                                  ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream);

// Input: the kind and one or more object identifiers. A record that cannot be had is answered with
// an "Error" record in its place.
ce::HRESULT DownloadSpecificPIMRecords(ce::DWORD inputCount, const ce::BYTE* input,
                                       ce::DWORD* outputCount, ce::BYTE** output,
                                       CorvaneStream* stream);

}  // namespace corvane
