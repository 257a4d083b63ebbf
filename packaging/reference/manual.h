// Manual pages.
#pragma once

#include <string>
#include <vector>

#include "packaging/reference/program.h"

namespace reference {

struct Page {
  std::string name;  // "corvane-device-import.1"
  std::string text;
};

// One for the program and one for each of its commands, with the commands below that one inside.
// `prose` stands in the program's page in front of the last section.
std::vector<Page> ManualPages(const Program& program, const std::string& prose);

}  // namespace reference
