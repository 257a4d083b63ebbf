#include "tests/support/paths.h"

namespace corvane::testing {

std::string SourcePath(std::string_view relative) {
  return std::string(CORVANE_SOURCE_DIR "/").append(relative);
}

std::string ProgramPath(std::string_view name) {
  return std::string(CORVANE_BIN_DIR "/").append(name);
}

}  // namespace corvane::testing
