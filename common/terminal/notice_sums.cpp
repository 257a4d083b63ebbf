#include "common/terminal/notice_sums.h"

#include <fmt/format.h>

namespace terminal {

void NoticeSums::Add(const std::string& file, std::size_t line, std::string_view text, Noun noun,
                     std::size_t owner) {
  if (const std::size_t colon = text.find(": "); colon != text.npos) {
    properties_.Add(fmt::format("{}: {}", file, text.substr(0, colon)), noun,
                    text.substr(colon + 2), owner);
    return;
  }
  const auto [place, isNew] =
      remarks_.try_emplace(fmt::format("{}: {}", file, text), Remark{file, line, 0});
  ++place->second.count;
}

std::vector<std::string> NoticeSums::Lines() const {
  std::vector<std::string> lines;
  for (const auto& [text, remark] : remarks_) {
    lines.push_back(remark.count == 1
                        ? fmt::format("{}:{}{}", remark.file, remark.line,
                                      std::string_view(text).substr(remark.file.size()))
                        : fmt::format("{}: {} times", text, Grouped(remark.count)));
  }
  for (std::string& line : properties_.Lines()) lines.push_back(std::move(line));
  if (!properties_.empty()) lines.emplace_back("-v names each of them with its line");
  return lines;
}

}  // namespace terminal
