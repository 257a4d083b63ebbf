// The handheld's text messages: to the desktop, or away.
#pragma once

#include "platform/mapi.h"

namespace corvane {

class CorvaneStream;

// Walks the folders of the store "SMS", those for drafts and deleted messages excepted where they
// stand at the top. With a stream every message goes to it, and the download is ended on every
// path; with null every message is deleted. E_NOTIMPL when the handheld has no such store.
ce::HRESULT ExportTextMessages(CorvaneStream* stream);

// The store named "SMS"; success and null when there is none.
ce::HRESULT FindSmsStore(ce::IMAPISession* session, ce::IMsgStore** store);

}  // namespace corvane
