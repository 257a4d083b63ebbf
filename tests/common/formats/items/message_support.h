// Reading messages and calls in a test.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/call.h"
#include "common/formats/items/item_sink.h"
#include "common/formats/items/message.h"
#include "common/formats/items/notice.h"

namespace formats {

// How GoogleTest and RapidCheck show them.
void PrintTo(const TextMessage& message, std::ostream* out);
void PrintTo(const Call& call, std::ostream* out);
void showValue(const TextMessage& message, std::ostream& out);
void showValue(const Call& call, std::ostream& out);

namespace testing {

struct Items {
  std::vector<TextMessage> messages;
  std::vector<Call> calls;
  std::vector<std::size_t> lines;  // of both, in their order
  std::vector<std::string> notices;
};

Items ReadBackupText(std::string_view xml);
// Read from a stream that gives `piece` bytes at a time.
Items ReadBackupInPieces(std::string_view xml, std::size_t piece);
Items ReadJsonText(std::string_view lines);

std::string WriteBackup(const std::vector<TextMessage>& messages);
std::string WriteBackup(const std::vector<Call>& calls);

MessageTime TimeOf(std::string_view iso);

}  // namespace testing
}  // namespace formats
