// The request that names the fields of a kind of records.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Input: the kind of records. Output: a document whose root has one empty element for every field
// that this handheld writes. E_INVALIDARG for another size, a stream, and kinds that live in no
// folder. The output stays empty, with success, when memory runs out for it.
ce::HRESULT GetDatabaseKeys(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                            ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
