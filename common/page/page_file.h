// A page as one file, for any browser, without a network.
#pragma once

#include <functional>
#include <string_view>

#include "common/page/contents.h"

namespace page {

// The file in pieces. Its own policy allows the style and the script that it was written with and
// nothing else: no request, no other script, whatever stands in the contents.
void WritePage(const Contents& contents, const std::function<void(std::string_view)>& sink);

}  // namespace page
