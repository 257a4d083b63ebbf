// Messages in threads and calls as a page shows them.
#pragma once

#include "common/page/contents.h"
#include "common/page/json.h"
#include "common/page/people.h"

namespace page {

// A thread is all that went to and fro with a person of the directory, or with an address that
// nobody there has. What went to several people at once is a thread of theirs.
Json ThreadsOf(const Contents& contents, const Directory& directory);
Json CallsOf(const Contents& contents, const Directory& directory);

}  // namespace page
