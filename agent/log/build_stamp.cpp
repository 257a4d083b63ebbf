#include "agent/log/build_stamp.h"

namespace corvane {

// Given by the build system: the compiler's own stamp would make every build differ.
const char kBuildDate[] = CORVANE_BUILD_DATE;
const char kBuildTime[] = CORVANE_BUILD_TIME;

}  // namespace corvane
