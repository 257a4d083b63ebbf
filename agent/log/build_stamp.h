// When the program was built, as the log's header shows it.
#pragma once

namespace corvane {

extern const char kBuildDate[];  // "Feb 25 2008"
extern const char kBuildTime[];  // "12:52:35"

}  // namespace corvane
