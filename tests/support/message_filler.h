// The message stores of a handheld, for a test to fill and to look at.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/directory/handheld.h"
#include "handheld/store/message_stores.h"

namespace corvane::testing {

// 2008-02-15 13:45:01 as file time.
inline constexpr std::int64_t kSampleDelivery = 128475567010000000;

// A received text message as a telephone stores it; its recipients are for the test to add.
ce::host::StoredMessage TextMessage(std::u16string_view text);

// Fails the test when the store does not answer. Paths are of folders in the store "SMS", which are
// made when they do not exist.
class MessageFiller {
 public:
  explicit MessageFiller(ce::host::Handheld& handheld);

  ce::host::MessageStores& box() { return *box_; }
  std::int64_t SmsStore();
  std::int64_t Folder(std::u16string_view path);
  std::int64_t Add(std::u16string_view path, const ce::host::StoredMessage& message);
  // Messages with the texts "1", "2" and so on, stored in one go.
  void AddMany(std::u16string_view path, int count);
  std::int64_t Count(std::u16string_view path);
  // Every message of the folder.
  std::vector<ce::host::StoredMessage> Messages(std::u16string_view path);
  void RemoveSmsStore();

 private:
  std::unique_ptr<ce::host::MessageStores> box_;
};

}  // namespace corvane::testing
