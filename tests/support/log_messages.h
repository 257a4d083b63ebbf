// The log's messages without what stands before each.
#pragma once

#include <string>
#include <vector>

namespace corvane::testing {

// Of a log file's content; the lines with which a file begins and ends are left out.
inline std::vector<std::string> LogMessagesIn(const std::string& content) {
  std::vector<std::string> messages;
  for (std::size_t at = content.find(",thr 0x"); at != std::string::npos;
       at = content.find(",thr 0x", at + 1)) {
    const std::size_t begin = content.find(" : ", at) + 3;
    std::string message = content.substr(begin, content.find("\r\n", begin) - begin);
    if (!message.starts_with("====") && !message.starts_with("Log ")) {
      messages.push_back(std::move(message));
    }
  }
  return messages;
}

}  // namespace corvane::testing
