// A folder's messages as documents on the wire.
#pragma once

#include "platform/mapi.h"

namespace corvane {

class CorvaneStream;

// Sends every message of the table: the first in a document of its own, then forty to a document. A
// failure ends the folder, and its unfinished document is not sent.
ce::HRESULT AddFolderMessagesToXML(ce::IMsgStore* store, ce::IMAPITable* contents,
                                   const ce::WCHAR* path, CorvaneStream* stream);

}  // namespace corvane
