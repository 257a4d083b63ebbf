// What the tests of text messages have in common.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/messages/text_message_export.h"
#include "handheld/messages/mapi_buffer.h"
#include "platform/com_ptr.h"
#include "tests/support/message_filler.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {

inline std::string Hex(const std::vector<ce::BYTE>& bytes) {
  std::string text;
  for (const ce::BYTE byte : bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return text;
}

// A handheld with its messages.
class MessagesTest : public PimTest {
 protected:
  MessagesTest() : filler_(std::make_unique<MessageFiller>(*handheld_)) {}

  void TearDown() override {
    filler_.reset();
    EXPECT_EQ(ce::host::LiveMapiBuffers(), 0) << "memory of MAPI was not freed";
    PimTest::TearDown();
  }

  static DownloadAnswer Export() { return RunExport(ExportTextMessages); }
  static std::string ExportedRecords() { return OnlyRecords(Export()); }
  // Messages in each document.
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    return testing::Sizes(answer, {"<SMS ", "<SMS>"});
  }
  std::string OidOf(std::u16string_view path, std::size_t index = 0) {
    const auto messages = filler_->Messages(path);
    return index < messages.size() ? Hex(messages[index].entryId.value_or(ce::host::EntryIdBytes{}))
                                   : std::string();
  }

  std::unique_ptr<MessageFiller> filler_;
};

// An open session on the store "SMS".
class SmsSession {
 public:
  SmsSession() {
    EXPECT_EQ(ce::MAPIInitialize(nullptr), ce::S_OK);
    EXPECT_EQ(ce::MAPILogonEx(0, nullptr, nullptr, 0, session_.put()), ce::S_OK);
    EXPECT_EQ(FindSmsStore(session_.get(), store_.put()), ce::S_OK);
  }
  ~SmsSession() {
    store_.reset();
    EXPECT_EQ(session_->Logoff(0, 0, 0), ce::S_OK);
    session_.reset();
    ce::MAPIUninitialize();
  }
  SmsSession(const SmsSession&) = delete;
  SmsSession& operator=(const SmsSession&) = delete;

  ce::IMAPISession* session() const { return session_.get(); }
  ce::IMsgStore* store() const { return store_.get(); }

 private:
  ce::ComPtr<ce::IMAPISession> session_;
  ce::ComPtr<ce::IMsgStore> store_;
};

}  // namespace corvane::testing
