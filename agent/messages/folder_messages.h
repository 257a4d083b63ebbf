// A folder's messages: to the desktop, or away.
#pragma once

#include "platform/mapi.h"

namespace corvane {

class CorvaneStream;

// Sends every message of the table: the first in a document of its own, then forty to a document. A
// failure ends the folder, and its unfinished document is not sent.
ce::HRESULT AddFolderMessagesToXML(ce::IMsgStore* store, ce::IMAPITable* contents,
                                   const ce::WCHAR* path, CorvaneStream* stream);

// Asks for all rows at once and deletes them one by one; stops at the first failure. A message
// without an entry identifier cannot be named, and stays.
ce::HRESULT DeleteFolderMessages(ce::IMsgStore* store, ce::IMAPIFolder* folder,
                                 ce::IMAPITable* contents);

}  // namespace corvane
