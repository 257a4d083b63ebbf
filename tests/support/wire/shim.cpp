#include "tests/support/wire/shim.h"

#include <algorithm>
#include <cstdlib>

#include "tests/support/paths.h"
#include "tests/support/sanitizers.h"

namespace corvane::testing {

std::string NameOf(const Fault& fault) {
  return fault.calls + " " + fault.how +
         (fault.error != 0 ? " with " + std::to_string(fault.error) : std::string());
}

std::vector<std::pair<std::string, std::string>> ShimEnvironment(const Fault& fault,
                                                                 std::uint64_t n,
                                                                 const std::string& directory,
                                                                 const std::string& told) {
  return {{"LD_PRELOAD", ProgramPath("libcall_shim.so")},
          {"SHIM_CALLS", fault.calls},
          {"SHIM_HOW", fault.how},
          {"SHIM_ERROR", std::to_string(fault.error)},
          {"SHIM_AT", std::to_string(n)},
          {"SHIM_BELOW", directory},
          {"SHIM_TOLD", told}};
}

std::vector<std::uint64_t> PointsAmong(std::uint64_t calls, std::uint64_t few) {
  const std::uint64_t most = std::getenv("CORVANE_SWEEP_ALL") ? 300
                             : kSanitizer                     ? 1 + few / 4
                                                              : few;
  const std::uint64_t count = std::min(calls, most);
  std::vector<std::uint64_t> points;
  for (std::uint64_t i = 0; i < count; ++i) points.push_back(1 + (2 * i + 1) * calls / (2 * count));
  return points;
}

}  // namespace corvane::testing
