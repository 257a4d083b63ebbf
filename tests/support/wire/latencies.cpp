#include "tests/support/wire/latencies.h"

#include <algorithm>
#include <cstdio>

namespace corvane::testing {

void Latencies::Tell(const std::string& of) const {
  if (all_.empty()) return;
  std::vector<Duration> sorted = all_;
  std::ranges::sort(sorted);
  const auto milliseconds = [&](std::size_t hundredth) {
    const std::size_t at = std::min(sorted.size() * hundredth / 100, sorted.size() - 1);
    return std::chrono::duration<double, std::milli>(sorted[at]).count();
  };
  std::printf("%s: %zu requests, median %.2f ms, 99 of 100 within %.2f ms, the worst %.2f ms\n",
              of.c_str(), sorted.size(), milliseconds(50), milliseconds(99), milliseconds(100));
}

}  // namespace corvane::testing
