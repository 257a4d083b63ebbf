// The languages that handhelds speak.
#pragma once

#include <cstdint>
#include <string_view>

namespace desktop {

// "en-US" for 0x0409; empty for a number that stands for no known language.
std::string_view LanguageTag(std::uint32_t id);

}  // namespace desktop
