#include "tests/agent/log/log_support.h"

#include <algorithm>
#include <regex>

#include "agent/log/log.h"

namespace corvane::testing {

std::vector<LogLine> ParseLog(const std::string& content) {
  static const std::regex form(R"(^(\d\d:\d\d:\d\d)\((\d+)\),thr 0x([0-9A-F]{8}) : ([^\r\n]*)$)");
  std::vector<LogLine> lines;
  std::size_t start = 0;
  while (start < content.size()) {
    const std::size_t end = content.find("\r\n", start);
    EXPECT_NE(end, std::string::npos) << "the last line has no end";
    const std::string text = content.substr(start, end - start);
    std::smatch parts;
    EXPECT_TRUE(std::regex_match(text, parts, form)) << text;
    if (!parts.empty()) {
      lines.push_back({parts[1], std::stoll(parts[2]),
                       static_cast<unsigned>(std::stoul(parts[3], nullptr, 16)), parts[4]});
    }
    if (end == std::string::npos) break;
    start = end + 2;
  }
  return lines;
}

std::vector<std::string> Messages(const std::string& content) {
  std::vector<std::string> messages;
  for (const LogLine& line : ParseLog(content)) messages.push_back(line.message);
  return messages;
}

void LogTest::SetUp() {
  CloseLog();
  ResetLogSettings();
  handheld_.FreezeClock({2008, 2, 1, 25, 12, 52, 35, 67});
  SetLoggingLevel(1);
}

void LogTest::TearDown() {
  CloseLog();
  ResetLogSettings();
  HandheldTest::TearDown();
}

std::vector<std::string> LogTest::Body() const {
  std::vector<std::string> messages = Messages(Content());
  const auto header = std::find_if(messages.rbegin(), messages.rend(), [](const auto& message) {
    return message.starts_with("Log is started on ");
  });
  EXPECT_NE(header, messages.rend()) << "the log has no header";
  return {header.base(), messages.end()};
}

}  // namespace corvane::testing
