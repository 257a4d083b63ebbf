// The streamed request that writes records into the handheld.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// No input. Reads documents, each behind its byte count, until a count of 0 or the connection's
// end, applies every record in them and answers each with its identifier and result. Closes the
// connection. What cannot be read ends the request; what was answered stays.
ce::HRESULT UploadPIMRecords(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                             ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
