#include "handheld/messages/table.h"

#include "tests/handheld/messages/mapi_support.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;

class MapiTable : public MapiTest {
 protected:
  static std::vector<DWORD> TagsOf(const SRow& row) {
    std::vector<DWORD> tags;
    for (DWORD i = 0; i < row.cValues; ++i) tags.push_back(row.lpProps[i].ulPropTag);
    return tags;
  }
  // The number of statements that the read of one row takes.
  static std::uint64_t StepsOfARow(IMAPITable* table) {
    const auto plan = FaultPlan::FailNthCall("sqlite3_step:list", FaultPlan::kNever, 0);
    SRowSet* rows = nullptr;
    EXPECT_EQ(table->QueryRows(1, 0, &rows), S_OK);
    EXPECT_EQ(rows->cRows, 1u);
    FreeProws(rows);
    return plan.calls();
  }
};

TEST_F(MapiTable, GivesAMessagesDefaultColumnsInTheirOrder) {
  filler_->Add(u"/Inbox", TextMessage(u"text"));
  SRowSet* rows = nullptr;
  ASSERT_EQ(Contents(u"/Inbox")->QueryRows(1, 0, &rows), S_OK);
  ASSERT_EQ(rows->cRows, 1u);
  const SRow& row = rows->aRow[0];
  EXPECT_THAT(TagsOf(row),
              ElementsAre(PR_ENTRYID, PR_MESSAGE_CLASS_W, PR_MESSAGE_DELIVERY_TIME,
                          PR_MESSAGE_FLAGS, PR_MSG_STATUS, PR_SUBJECT_W, PR_SENDER_NAME_W,
                          PR_MESSAGE_SIZE, PR_LAST_MODIFICATION_TIME));
  EXPECT_EQ(BytesOf(row.lpProps[0]), *filler_->Messages(u"/Inbox")[0].entryId);
  EXPECT_EQ(row.lpProps[1].Value.lpszW, std::u16string(u"IPM.SMStext"));
  EXPECT_EQ(row.lpProps[2].Value.ft.dwLowDateTime, static_cast<DWORD>(kSampleDelivery));
  EXPECT_EQ(row.lpProps[2].Value.ft.dwHighDateTime, static_cast<DWORD>(kSampleDelivery >> 32));
  EXPECT_EQ(row.lpProps[3].Value.l, 1);
  EXPECT_EQ(row.lpProps[5].Value.lpszW, std::u16string(u"text"));
  EXPECT_EQ(row.lpProps[7].Value.l, 4);
  FreeProws(rows);
}

TEST_F(MapiTable, LeavesOutWhatAMessageLacks) {
  StoredMessage message;
  message.entryId.reset();
  message.flags = 0;
  message.subject = u"";
  filler_->Add(u"/Inbox", message);
  SRowSet* rows = nullptr;
  ASSERT_EQ(Contents(u"/Inbox")->QueryRows(1, 0, &rows), S_OK);
  EXPECT_THAT(TagsOf(rows->aRow[0]), ElementsAre(PR_MESSAGE_FLAGS, PR_SUBJECT_W));
  FreeProws(rows);
}

TEST_F(MapiTable, GivesTheNamedColumnsWithErrorsForWhatARowLacks) {
  filler_->Add(u"/Inbox", StoredMessage{});
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  const std::vector<DWORD> wanted = {PR_SUBJECT_W, PR_ENTRYID, PR_EMAIL_ADDRESS_W};
  const SPropTagArray tags = Tags(wanted);
  ASSERT_EQ(table->SetColumns(&tags, 0), S_OK);
  SRowSet* rows = nullptr;
  ASSERT_EQ(table->QueryRows(5, 0, &rows), S_OK);
  ASSERT_EQ(rows->cRows, 1u);
  EXPECT_THAT(TagsOf(rows->aRow[0]), ElementsAre(0x0037000A, PR_ENTRYID, 0x3003000A));
  EXPECT_EQ(rows->aRow[0].lpProps[0].Value.err, MAPI_E_NOT_FOUND);
  FreeProws(rows);
}

TEST_F(MapiTable, KeepsItsPositionWhenItsColumnsAreSet) {
  filler_->AddMany(u"/Inbox", 3);
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  SRowSet* rows = nullptr;
  ASSERT_EQ(table->QueryRows(1, 0, &rows), S_OK);
  FreeProws(rows);
  EXPECT_THAT(Texts(table.get()), ElementsAre(u"2", u"3"));
}

TEST_F(MapiTable, GivesIdentifiersAloneWhereSeveralRowsAreAskedFor) {
  filler_->AddMany(u"/Inbox", 5);
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  SRowSet* rows = nullptr;
  ASSERT_EQ(table->QueryRows(3, 0, &rows), S_OK);
  ASSERT_EQ(rows->cRows, 3u);
  const auto messages = filler_->Messages(u"/Inbox");
  for (DWORD i = 0; i < 3; ++i) {
    EXPECT_THAT(TagsOf(rows->aRow[i]), ElementsAre(PR_ENTRYID));
    EXPECT_EQ(BytesOf(rows->aRow[i].lpProps[0]), *messages[i].entryId);
  }
  EXPECT_EQ(MAPIFreeBuffer(rows), 0u) << "a row set is one buffer";
  EXPECT_THAT(Texts(table.get()), ElementsAre(u"4", u"5"));
}

TEST_F(MapiTable, AnswersARowSetWithoutRowsAtItsEnd) {
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  for (int i = 0; i < 2; ++i) {
    SRowSet* rows = nullptr;
    ASSERT_EQ(table->QueryRows(1, 0, &rows), S_OK);
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows->cRows, 0u);
    FreeProws(rows);
  }
}

TEST_F(MapiTable, RefusesACountThatAsksForNothing) {
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  for (const LONG count : {0, -1}) {
    SRowSet* rows = nullptr;
    EXPECT_EQ(table->QueryRows(count, 0, &rows), E_INVALIDARG);
    EXPECT_EQ(rows, nullptr);
  }
  EXPECT_EQ(table->SetColumns(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(table->QueryRows(1, 0, nullptr), E_POINTER);
}

TEST_F(MapiTable, StaysWhereItWasWhenAReadFails) {
  filler_->AddMany(u"/Inbox", 2);
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  for (const char* call : {"IMAPITable::QueryRows", "sqlite3_step:list", "MAPIAllocateBuffer"}) {
    const auto plan = FaultPlan::FailCalls(call, ERROR_READ_FAULT);
    SRowSet* rows = nullptr;
    EXPECT_TRUE(Failed(table->QueryRows(1, 0, &rows))) << call;
    EXPECT_EQ(rows, nullptr);
  }
  EXPECT_THAT(Texts(table.get()), ElementsAre(u"1", u"2"));
}

TEST_F(MapiTable, ReadsARowInOneStepWhereverItStands) {
  filler_->AddMany(u"/Inbox", 2000);
  const ComPtr<IMAPITable> table = Contents(u"/Inbox");
  EXPECT_EQ(StepsOfARow(table.get()), 1u);
  SRowSet* rows = nullptr;
  ASSERT_EQ(table->QueryRows(1998, 0, &rows), S_OK);
  EXPECT_EQ(rows->cRows, 1998u);
  FreeProws(rows);
  EXPECT_EQ(StepsOfARow(table.get()), 1u);
}

TEST_F(MapiTable, FindsItsRowsThroughAnIndex) {
  // Of the tables that grow with the store; a sort or a scan would make each row cost as many.
  std::unique_ptr<Store> store;
  std::string problem;
  ASSERT_EQ(Store::Open(*handheld_, store, problem), S_OK);
  for (const TableKind* kind : {&kHierarchyTable, &kContentsTable, &kRecipientTable}) {
    const std::string sql = std::string("EXPLAIN QUERY PLAN ") + kind->rows.sql;
    Statement plan;
    ASSERT_EQ(store->Prepare(sql.c_str(), plan), S_OK);
    bool row = false;
    ASSERT_EQ(plan.Step("test", row), S_OK);
    ASSERT_TRUE(row);
    EXPECT_TRUE(plan.Text(3).starts_with("SEARCH")) << plan.Text(3);
    ASSERT_EQ(plan.Step("test", row), S_OK);
    EXPECT_FALSE(row) << plan.Text(3);
  }
}

TEST_F(MapiTable, CountsItsRows) {
  filler_->AddMany(u"/Inbox", 3);
  filler_->AddMany(u"/Inbox/Old", 1);
  DWORD count = 0;
  EXPECT_EQ(Contents(u"/Inbox")->GetRowCount(0, &count), S_OK);
  EXPECT_EQ(count, 3u);
  ComPtr<IMAPITable> folders;
  ASSERT_EQ(Folder(u"/Inbox")->GetHierarchyTable(0, folders.put()), S_OK);
  EXPECT_EQ(folders->GetRowCount(0, &count), S_OK);
  EXPECT_EQ(count, 1u);
}

TEST_F(MapiTable, GivesSubfoldersInTheOrderOfTheirMaking) {
  for (const auto* path : {u"/Inbox/b", u"/Inbox/a", u"/Inbox/b/c"}) filler_->Folder(path);
  ComPtr<IMAPITable> folders;
  ASSERT_EQ(Folder(u"/Inbox")->GetHierarchyTable(0, folders.put()), S_OK);
  SRowSet* rows = nullptr;
  ASSERT_EQ(folders->QueryRows(10, 0, &rows), S_OK);
  ASSERT_EQ(rows->cRows, 2u);
  EXPECT_EQ(rows->aRow[0].lpProps[0].Value.lpszW, std::u16string(u"b"));
  EXPECT_EQ(rows->aRow[1].lpProps[0].Value.lpszW, std::u16string(u"a"));
  EXPECT_THAT(TagsOf(rows->aRow[0]), ElementsAre(PR_DISPLAY_NAME_W, PR_ENTRYID));
  FreeProws(rows);
}

TEST_F(MapiTable, GivesRecipientsInTheirOrder) {
  StoredMessage message = TextMessage(u"x");
  message.recipients = {{u"Ada", u"+491"}, {std::nullopt, u"+492"}, {u"Cy", std::nullopt}};
  filler_->Add(u"/Inbox", message);
  filler_->Add(u"/Inbox", TextMessage(u"none"));
  const auto messages = filler_->Messages(u"/Inbox");
  ComPtr<IMAPITable> table;
  ASSERT_EQ(Open<IMessage>(*messages[0].entryId)->GetRecipientTable(0, table.put()), S_OK);
  SRowSet* rows = nullptr;
  ASSERT_EQ(table->QueryRows(10, 0, &rows), S_OK);
  ASSERT_EQ(rows->cRows, 3u);
  EXPECT_THAT(TagsOf(rows->aRow[0]),
              ElementsAre(PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_RECIPIENT_TYPE));
  EXPECT_EQ(rows->aRow[0].lpProps[2].Value.l, MAPI_TO);
  EXPECT_THAT(TagsOf(rows->aRow[1]), ElementsAre(PR_EMAIL_ADDRESS_W, PR_RECIPIENT_TYPE));
  EXPECT_EQ(rows->aRow[1].lpProps[0].Value.lpszW, std::u16string(u"+492"));
  EXPECT_THAT(TagsOf(rows->aRow[2]), ElementsAre(PR_DISPLAY_NAME_W, PR_RECIPIENT_TYPE));
  FreeProws(rows);
  EXPECT_EQ(Open<IMessage>(*messages[1].entryId)->GetRecipientTable(0, table.put()),
            MAPI_E_NO_RECIPIENTS);
  EXPECT_FALSE(table);
}

TEST_F(MapiTable, GivesTextsUnitForUnitAndTimesBitForBit) {
  StoredMessage message = TextMessage(std::u16string(u"a\xD800z\U0001F600"));
  message.deliveryTime = static_cast<std::int64_t>(0xFEDCBA9876543210);
  filler_->Add(u"/Inbox", message);
  SRowSet* rows = nullptr;
  ASSERT_EQ(Contents(u"/Inbox")->QueryRows(1, 0, &rows), S_OK);
  EXPECT_EQ(rows->aRow[0].lpProps[5].Value.lpszW, *message.subject);
  EXPECT_EQ(rows->aRow[0].lpProps[2].Value.ft.dwLowDateTime, 0x76543210u);
  EXPECT_EQ(rows->aRow[0].lpProps[2].Value.ft.dwHighDateTime, 0xFEDCBA98u);
  FreeProws(rows);
}

TEST(MapiBuffer, KeepsWhatWasAllocatedWhereItIsAndAlignsIt) {
  MapiBuffer buffer;
  auto* const first = buffer.Allocate<SRowSet>();
  first->cRows = 7;
  for (int i = 0; i < 100; ++i) {
    auto* const block = buffer.Allocate<SPropValue>(100);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(SPropValue), 0u);
    EXPECT_EQ(block[99].ulPropTag, 0u);
    block[99].ulPropTag = 1;
  }
  EXPECT_EQ(first->cRows, 7u);
  EXPECT_THROW(buffer.Allocate<SPropValue>(SIZE_MAX / 2), std::bad_alloc);
  buffer.HandOut();
  EXPECT_EQ(LiveMapiBuffers(), 1);
  EXPECT_EQ(MAPIFreeBuffer(first), 0u);
  EXPECT_EQ(LiveMapiBuffers(), 0);
  EXPECT_EQ(MAPIFreeBuffer(nullptr), 0u);
  FreeProws(nullptr);
}

}  // namespace
}  // namespace ce::host::testing
