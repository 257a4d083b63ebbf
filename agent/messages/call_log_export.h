// The telephone's call log, to the desktop.
#pragma once

#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// Sends every call, newest first: the first in a document of its own, then forty to a document. A
// failure leaves the unfinished document unsent. The download is ended on every path; `stream` may
// be null. E_NOTIMPL on a handheld without a telephone.
ce::HRESULT ExportCallLog(CorvaneStream* stream);

}  // namespace corvane
