// What the tests of message stores have in common.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/messages/mapi_buffer.h"
#include "platform/com_ptr.h"
#include "platform/mapi.h"
#include "tests/support/message_filler.h"
#include "tests/support/test_handheld.h"

namespace ce::host::testing {

using corvane::testing::HandheldTest;
using corvane::testing::kSampleDelivery;
using corvane::testing::MessageFiller;
using corvane::testing::TextMessage;

inline SPropTagArray Tags(const std::vector<DWORD>& tags) {
  return {static_cast<DWORD>(tags.size()), tags.data()};
}

// A handheld, an open session on its messages, and the store "SMS".
class MapiTest : public HandheldTest {
 protected:
  void SetUp() override {
    filler_ = std::make_unique<MessageFiller>(*handheld_);
    ASSERT_EQ(MAPIInitialize(nullptr), S_OK);
  }
  void TearDown() override {
    Logoff();
    MAPIUninitialize();
    filler_.reset();
    EXPECT_EQ(LiveMapiBuffers(), 0);
    HandheldTest::TearDown();
  }

  // The session is opened at its first use, the store at its own.
  IMAPISession* session() {
    if (!session_) {
      EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, session_.put()), S_OK);
    }
    return session_.get();
  }
  IMsgStore* store() {
    static constexpr DWORD kTags[] = {PR_ENTRYID};
    static constexpr SPropTagArray kColumns{1, kTags};
    if (!store_) {
      ComPtr<IMAPITable> stores;
      EXPECT_EQ(session()->GetMsgStoresTable(0, stores.put()), S_OK);
      EXPECT_EQ(stores->SetColumns(&kColumns, 0), S_OK);
      SRowSet* rows = nullptr;
      EXPECT_EQ(stores->QueryRows(1, 0, &rows), S_OK);
      const SBinary id = rows->aRow[0].lpProps[0].Value.bin;
      EXPECT_EQ(session()->OpenMsgStore(0, id.cb, id.lpb, nullptr, 0, store_.put()), S_OK);
      FreeProws(rows);
    }
    return store_.get();
  }
  void Logoff() {
    store_.reset();
    if (session_) {
      EXPECT_EQ(session_->Logoff(0, 0, 0), S_OK);
    }
    session_.reset();
  }

  template <typename T>
  ComPtr<T> Open(const EntryIdBytes& entryId) {
    ComPtr<IUnknown> entry;
    EXPECT_EQ(store()->OpenEntry(static_cast<DWORD>(entryId.size()), entryId.data(), nullptr, 0,
                                 nullptr, entry.put()),
              S_OK);
    return entry.query<T>();
  }
  ComPtr<IMAPIFolder> Folder(std::u16string_view path) {
    EntryIdBytes id;
    EXPECT_EQ(filler_->box().FolderEntryId(filler_->Folder(path), id), S_OK);
    return Open<IMAPIFolder>(id);
  }
  ComPtr<IMAPITable> Contents(std::u16string_view path) {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(Folder(path)->GetContentsTable(0, table.put()), S_OK);
    return table;
  }
  // The messages' texts from the table's position on.
  static std::vector<std::u16string> Texts(IMAPITable* table) {
    static constexpr DWORD kTags[] = {PR_SUBJECT_W};
    static constexpr SPropTagArray kColumns{1, kTags};
    EXPECT_EQ(table->SetColumns(&kColumns, 0), S_OK);
    std::vector<std::u16string> texts;
    for (;;) {
      SRowSet* rows = nullptr;
      EXPECT_EQ(table->QueryRows(1, 0, &rows), S_OK);
      const DWORD count = rows ? rows->cRows : 0;
      if (count == 1) texts.emplace_back(rows->aRow[0].lpProps[0].Value.lpszW);
      FreeProws(rows);
      if (count != 1) return texts;
    }
  }
  static EntryIdBytes BytesOf(const SPropValue& value) {
    return {value.Value.bin.lpb, value.Value.bin.lpb + value.Value.bin.cb};
  }

  std::unique_ptr<MessageFiller> filler_;
  ComPtr<IMAPISession> session_;
  ComPtr<IMsgStore> store_;
};

}  // namespace ce::host::testing
