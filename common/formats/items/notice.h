// What a reader of people's files has to say about them.
#pragma once

#include <cstddef>
#include <string>

namespace formats {

// One thing that was read but could not be kept, or that was odd.
struct Notice {
  std::size_t line = 0;  // 1-based line of the input where it begins
  std::string text;      // what and why: "PHOTO: a contact holds no pictures"
};

}  // namespace formats
