// The agent's result codes in words.
#pragma once

#include <cstdint>
#include <string>

namespace desktop {

// "0x80070057 (invalid argument, or no such item)"; the number alone when it has no known meaning.
std::string StatusText(std::int32_t status);

// The words alone, empty when it has no known meaning.
std::string StatusMeaning(std::int32_t status);

}  // namespace desktop
