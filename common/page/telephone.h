// Messages in threads and calls as a page shows them.
#pragma once

#include "common/page/contents.h"
#include "common/page/directory.h"
#include "common/page/json.h"

namespace page {

Json ThreadsOf(const Contents& contents, const Directory& directory);
Json CallsOf(const Contents& contents, const Directory& directory);

}  // namespace page
