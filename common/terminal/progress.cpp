#include "common/terminal/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace terminal {
namespace {

constexpr std::uint64_t kBarWidth = 30;
constexpr std::chrono::milliseconds kBetweenDrawings{100};

}  // namespace

std::string ProgressLine(std::string_view label, std::uint64_t done,
                         std::optional<std::uint64_t> total) {
  if (!total || *total == 0) return fmt::format("{} {}", label, done);
  const auto filled = static_cast<std::size_t>(std::min(done, *total) * kBarWidth / *total);
  return fmt::format("{} [{:<{}}] {} of {}", label, std::string(filled, '#'), kBarWidth, done,
                     *total);
}

Progress::Progress(std::ostream& terminal, bool shown, std::string label,
                   std::optional<std::uint64_t> total)
    : terminal_(terminal), shown_(shown), label_(std::move(label)), total_(total) {}

Progress::~Progress() {
  Hide();
}

void Progress::Update(std::uint64_t done, std::chrono::steady_clock::time_point now) {
  if (!shown_) return;
  if (last_ && now - *last_ < kBetweenDrawings) return;
  last_ = now;
  drawn_ = true;
  terminal_ << "\r\x1B[K" << ProgressLine(label_, done, total_) << std::flush;
}

void Progress::Hide() {
  if (!drawn_) return;
  terminal_ << "\r\x1B[K" << std::flush;
  drawn_ = false;
}

}  // namespace terminal
