// A folder's messages, deleted.
#pragma once

#include "platform/mapi.h"

namespace corvane {

// Asks for all rows at once and deletes them one by one; stops at the first failure. A message
// without an entry identifier cannot be named, and stays.
ce::HRESULT DeleteFolderMessages(ce::IMsgStore* store, ce::IMAPIFolder* folder,
                                 ce::IMAPITable* contents);

}  // namespace corvane
