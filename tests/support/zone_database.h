// A zone database of a test's own.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

#include "tests/support/temporary_directory.h"

namespace corvane::testing {

// An environment variable for the length of a test.
class Environment {
 public:
  Environment(const char* name, const std::string& value) : name_(name) {
    if (const char* old = ::getenv(name)) old_ = old;
    ::setenv(name, value.c_str(), 1);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    if (old_) {
      ::setenv(name_, old_->c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

inline std::string ZoneFileHeader(char version, int transitions) {
  std::string header = "TZif";
  header += version;
  header += std::string(15, '\0');
  for (const int count : {0, 0, 0, transitions, 1, 4}) {
    header += std::string(3, '\0') + static_cast<char>(count);
  }
  return header;
}

// A zone of one type, UTC, with one change to it in 1970, and the rule.
inline std::string ZoneFile(const std::string& rule, char version = '2') {
  const std::string type = std::string(6, '\0') + std::string("CET\0", 4);
  return ZoneFileHeader(version, 1) + std::string(5, '\0') + type + ZoneFileHeader(version, 1) +
         std::string(9, '\0') + type + "\n" + rule + "\n";
}

// An empty one at first.
struct OwnZoneDatabase {
  TemporaryDirectory directory;
  Environment setting{"TZDIR", directory.path().string()};
};

}  // namespace corvane::testing
