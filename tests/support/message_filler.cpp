#include "tests/support/message_filler.h"

#include <gtest/gtest.h>

#include "common/text/unicode.h"

namespace corvane::testing {

using ce::S_OK;
using ce::host::MessageStores;
using ce::host::NumberedMessage;
using ce::host::StoredMessage;

StoredMessage TextMessage(std::u16string_view text) {
  StoredMessage message;
  message.messageClass = u"IPM.SMStext";
  message.deliveryTime = kSampleDelivery;
  message.flags = 1;
  message.status = 0;
  message.subject = text;
  message.senderName = u"Ada";
  message.senderAddress = u"+4912345";
  message.size = static_cast<ce::LONG>(text.size());
  message.lastModificationTime = kSampleDelivery;
  return message;
}

MessageFiller::MessageFiller(ce::host::Handheld& handheld) {
  std::string problem;
  EXPECT_EQ(MessageStores::Open(handheld, box_, problem), S_OK) << problem;
}

std::int64_t MessageFiller::SmsStore() {
  std::optional<std::int64_t> store;
  EXPECT_EQ(box_->FindStore(ce::host::kSmsStoreName, store), S_OK);
  EXPECT_TRUE(store.has_value());
  return store.value_or(0);
}

std::int64_t MessageFiller::Folder(std::u16string_view path) {
  std::int64_t folder = 0;
  EXPECT_EQ(box_->EnsureFolder(SmsStore(), path, folder), S_OK);
  return folder;
}

std::int64_t MessageFiller::Add(std::u16string_view path, const StoredMessage& message) {
  std::int64_t id = 0;
  EXPECT_EQ(box_->Insert(Folder(path), message, &id), S_OK);
  return id;
}

void MessageFiller::AddMany(std::u16string_view path, int count) {
  const std::int64_t folder = Folder(path);
  box_->Begin();
  for (int index = 1; index <= count; ++index) {
    const std::u16string text = text::FromUtf8Lossy(std::to_string(index));
    EXPECT_EQ(box_->Insert(folder, TextMessage(text)), S_OK);
  }
  EXPECT_EQ(box_->Commit(), S_OK);
}

std::int64_t MessageFiller::Count(std::u16string_view path) {
  std::int64_t count = -1;
  EXPECT_EQ(box_->Count(Folder(path), count), S_OK);
  return count;
}

std::vector<StoredMessage> MessageFiller::Messages(std::u16string_view path) {
  std::vector<NumberedMessage> read;
  EXPECT_EQ(box_->Read(Folder(path), 0, SIZE_MAX, read), S_OK);
  std::vector<StoredMessage> messages;
  for (NumberedMessage& message : read) messages.push_back(std::move(message.message));
  return messages;
}

void MessageFiller::RemoveSmsStore() {
  EXPECT_EQ(box_->DeleteStore(SmsStore()), S_OK);
}

}  // namespace corvane::testing
