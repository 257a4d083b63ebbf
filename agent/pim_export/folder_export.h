// A folder's items as documents on the wire.
#pragma once

#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// Sends every item of the kind's folder, five to a document, and ends the download. An item that
// cannot be exported ends the walk; its unfinished document is not sent.
ce::HRESULT ExportFolder(ce::DWORD kind, CorvaneStream* stream);

}  // namespace corvane
