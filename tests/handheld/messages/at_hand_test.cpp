// Messages that are opened while their folder is read row by row.
#include "tests/handheld/messages/mapi_support.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;

class MessageAtHand : public MapiTest {
 protected:
  // The next row's identifier; none behind the last row.
  static EntryIdBytes NextId(IMAPITable* table) {
    SRowSet* rows = nullptr;
    EXPECT_EQ(table->QueryRows(1, 0, &rows), S_OK);
    const EntryIdBytes id =
        rows && rows->cRows == 1 ? BytesOf(rows->aRow[0].lpProps[0]) : EntryIdBytes{};
    FreeProws(rows);
    return id;
  }
  // Text and sender.
  static std::u16string Content(IMessage* message) {
    static constexpr DWORD kTags[] = {PR_SUBJECT_W, PR_SENDER_EMAIL_ADDRESS_W, PR_DISPLAY_NAME_W};
    static constexpr SPropTagArray kWanted{3, kTags};
    DWORD count = 0;
    SPropValue* values = nullptr;
    EXPECT_EQ(message->GetProps(&kWanted, 0, &count, &values), MAPI_W_ERRORS_RETURNED);
    std::u16string content;
    if (count == 3) {
      content = std::u16string(values[0].Value.lpszW) + u"/" + values[1].Value.lpszW;
      EXPECT_EQ(values[2].Value.err, MAPI_E_NOT_FOUND);
    }
    MAPIFreeBuffer(values);
    return content;
  }
  // With one folder of three messages, whose senders are numbered as they are.
  ComPtr<IMAPITable> Inbox() {
    for (const char16_t* text : {u"1", u"2", u"3"}) {
      StoredMessage message = TextMessage(text);
      message.senderAddress = std::u16string(u"+") + text;
      filler_->Add(u"/Inbox", message);
    }
    return Contents(u"/Inbox");
  }
};

TEST_F(MessageAtHand, HasAllThatItHasOtherwise) {
  const ComPtr<IMAPITable> table = Inbox();
  std::vector<std::u16string> contents;
  for (EntryIdBytes id = NextId(table.get()); !id.empty(); id = NextId(table.get())) {
    contents.push_back(Content(Open<IMessage>(id).get()));
  }
  EXPECT_THAT(contents, ElementsAre(u"1/+1", u"2/+2", u"3/+3"));
}

TEST_F(MessageAtHand, OthersAreFoundAsWell) {
  const ComPtr<IMAPITable> table = Inbox();
  const EntryIdBytes first = NextId(table.get());
  const auto held = Open<IMessage>(first);
  const EntryIdBytes second = NextId(table.get());
  EXPECT_EQ(Content(held.get()), u"1/+1");
  EXPECT_EQ(Content(Open<IMessage>(first).get()), u"1/+1");
  EXPECT_EQ(Content(Open<IMessage>(second).get()), u"2/+2");
}

TEST_F(MessageAtHand, IsReadWhenItsTableHasGone) {
  ComPtr<IMAPITable> table = Inbox();
  const EntryIdBytes id = NextId(table.get());
  const auto message = Open<IMessage>(id);
  table.reset();
  EXPECT_EQ(Content(message.get()), u"1/+1");
  EXPECT_EQ(Content(Open<IMessage>(id).get()), u"1/+1");
}

TEST_F(MessageAtHand, IsReadWhenTheSnapshotHasGone) {
  const ComPtr<IMAPITable> table = Inbox();
  const EntryIdBytes first = NextId(table.get());
  EntryIdBytes second = NextId(table.get());
  const auto message = Open<IMessage>(first);
  SBinary entry{static_cast<DWORD>(second.size()), second.data()};
  const ENTRYLIST list{1, &entry};
  EXPECT_EQ(Folder(u"/Inbox")->DeleteMessages(&list, 0, nullptr, 0), S_OK);
  EXPECT_EQ(Content(message.get()), u"1/+1");
  ComPtr<IUnknown> opened;
  EXPECT_EQ(store()->OpenEntry(entry.cb, entry.lpb, nullptr, 0, nullptr, opened.put()),
            MAPI_E_NOT_FOUND);
  EXPECT_EQ(Content(Open<IMessage>(NextId(table.get())).get()), u"3/+3");
}

TEST_F(MessageAtHand, IsOpenedThroughItsOwnStoreAlone) {
  std::int64_t made = 0;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", made), S_OK);
  const ComPtr<IMAPITable> table = Inbox();
  const EntryId otherId = MakeEntryId(MAPI_STORE, made, made);
  ComPtr<IMsgStore> other;
  ASSERT_EQ(session()->OpenMsgStore(0, static_cast<DWORD>(otherId.size()), otherId.data(), nullptr,
                                    0, other.put()),
            S_OK);
  const EntryIdBytes id = NextId(table.get());
  ComPtr<IUnknown> opened;
  EXPECT_EQ(
      other->OpenEntry(static_cast<DWORD>(id.size()), id.data(), nullptr, 0, nullptr, opened.put()),
      MAPI_E_NOT_FOUND);
  EXPECT_EQ(Content(Open<IMessage>(id).get()), u"1/+1");
}

}  // namespace
}  // namespace ce::host::testing
