// UTF-16LE, in which names and paths travel.
#pragma once

#include <string>
#include <string_view>

namespace desktop {

// Bytes that are not UTF-8 become U+FFFD.
std::string ToUtf16Le(std::string_view utf8);
// As UTF-8. What is half a pair becomes U+FFFD; a last byte without its other half does not count.
std::string FromUtf16Le(std::string_view bytes);

// A path of the handheld as requests carry it: "/" counts as "\". Throws Error for one that is
// empty, longer than a handheld's paths (259 characters), or not UTF-8.
std::string DevicePathBytes(std::string_view path);

}  // namespace desktop
