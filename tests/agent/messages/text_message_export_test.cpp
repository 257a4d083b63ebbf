#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/agent/messages/messages_support.h"
#include "tests/support/golden.h"
#include "tests/support/store_sql.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredMessage;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class TextMessageExport : public MessagesTest {
 protected:
  // The "Folder" of every message, in the order sent.
  static std::vector<std::string> Folders(const DownloadAnswer& answer) {
    std::vector<std::string> folders;
    for (const std::string& document : answer.documents) {
      for (std::size_t at = document.find("<Folder>"); at != std::string::npos;
           at = document.find("<Folder>", at + 1)) {
        folders.push_back(document.substr(at + 8, document.find('<', at + 8) - at - 8));
      }
    }
    return folders;
  }
};

TEST_F(TextMessageExport, WritesAReceivedAndASentMessage) {
  StoredMessage received = TextMessage(u"Caf\u00E9 at <five> & \"six\"?\r\n\U0001F600");
  received.recipients = {{u"Me", u"+49222"}};
  filler_->Add(u"/Inbox", received);
  StoredMessage sent = TextMessage(u"Yes");
  sent.flags = 0x25;
  sent.recipients = {{u"Ada", u"+49111"}, {u"Bob", u"+49333"}};
  filler_->Add(u"/Sent Items", sent);
  const DownloadAnswer answer = Export();
  EXPECT_EQ(answer.status, S_OK);
  std::string all;
  for (const std::string& document : answer.documents) all += document + "\n";
  EXPECT_TRUE(EqualsGolden("text_messages.xml", all));
}

TEST_F(TextMessageExport, SendsOnlyTheTrailerWhenThereAreNoMessages) {
  ExpectOnlyTrailer(Export(), S_OK);
}

TEST_F(TextMessageExport, EndsTheReplyWithNotImplementedWithoutAStoreNamedSms) {
  filler_->RemoveSmsStore();
  std::int64_t other = 0;
  for (const auto* name : {u"ActiveSync", u"sms", u"SMS2"}) {
    ASSERT_EQ(filler_->box().CreateStore(name, other), S_OK);
  }
  SwitchLogOn();
  ExpectOnlyTrailer(Export(), E_NOTIMPL);
  EXPECT_THAT(LogMessages(),
              ElementsAre("Store name ActiveSync", "Store name sms", "Store name SMS2",
                          "Didn't find SMS Store", "Exit ProcessSMSFolder"));
}

TEST_F(TextMessageExport, TakesTheStoreNamedSmsAmongOthers) {
  std::int64_t other = 0;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", other), S_OK);
  std::int64_t inbox = 0;
  ASSERT_EQ(filler_->box().EnsureFolder(other, u"/Inbox", inbox), S_OK);
  ASSERT_EQ(filler_->box().Insert(inbox, TextMessage(u"mail")), S_OK);
  filler_->Add(u"/Inbox", TextMessage(u"text"));
  const std::string records = ExportedRecords();
  EXPECT_THAT(records, HasSubstr("<NOTES>text</NOTES>"));
  EXPECT_THAT(records, Not(HasSubstr("mail")));
}

TEST_F(TextMessageExport, LooksAtNoStoreBehindSms) {
  std::int64_t other = 0;
  ASSERT_EQ(filler_->box().CreateStore(u"ActiveSync", other), S_OK);
  SwitchLogOn();
  Export();
  EXPECT_THAT(LogMessages(), Not(Contains("Store name ActiveSync")));
}

TEST_F(TextMessageExport, NamesFoldersByTheirPathDepthFirst) {
  for (const auto* path :
       {u"/Inbox/Old/2007", u"/Inbox", u"/Sent Items", u"/Inbox/New", u"/Inbox/Old", u"/Work"}) {
    filler_->Add(path, TextMessage(u"x"));
  }
  EXPECT_THAT(Folders(Export()), ElementsAre("/Inbox", "/Inbox/Old", "/Inbox/Old/2007",
                                             "/Inbox/New", "/Sent Items", "/Work"));
}

TEST_F(TextMessageExport, SendsEachFoldersMessagesInDocumentsOfTheirOwn) {
  filler_->AddMany(u"/Inbox", 3);
  filler_->AddMany(u"/Inbox/Old", 2);
  EXPECT_THAT(Sizes(Export()), ElementsAre(1, 2, 1, 1));
}

TEST_F(TextMessageExport, SendsNoDocumentForAFolderWithoutMessages) {
  filler_->Folder(u"/Empty");
  filler_->Add(u"/Work", TextMessage(u"x"));
  EXPECT_THAT(Folders(Export()), ElementsAre("/Work"));
}

TEST_F(TextMessageExport, LeavesOutTheMessagesOfTheTopFolderItself) {
  filler_->Add(u"/", TextMessage(u"x"));
  ExpectOnlyTrailer(Export(), S_OK);
}

TEST_F(TextMessageExport, SkipsDraftsAndDeletedItemsWithAllThatIsBelow) {
  for (const auto* path : {u"/Drafts", u"/Drafts/Old", u"/Deleted Items", u"/Deleted Items/Old"}) {
    filler_->Add(path, TextMessage(u"x"));
  }
  ExpectOnlyTrailer(Export(), S_OK);
}

TEST_F(TextMessageExport, SkipsTheseFoldersAtTheTopOnly) {
  host::SpecialFolders special;
  ASSERT_EQ(filler_->box().GetSpecialFolders(filler_->SmsStore(), special), S_OK);
  host::EntryIdBytes trash;
  host::EntryIdBytes unsent;
  ASSERT_EQ(filler_->box().FolderEntryId(filler_->Folder(u"/Inbox/Trash"), trash), S_OK);
  ASSERT_EQ(filler_->box().FolderEntryId(filler_->Folder(u"/Inbox/Unsent"), unsent), S_OK);
  special.wastebasket = trash;
  special.drafts = unsent;
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  for (const auto* path : {u"/Inbox/Trash", u"/Inbox/Unsent", u"/Drafts", u"/Deleted Items"}) {
    filler_->Add(path, TextMessage(u"x"));
  }
  EXPECT_THAT(Folders(Export()),
              ElementsAre("/Inbox/Trash", "/Inbox/Unsent", "/Drafts", "/Deleted Items"));
}

TEST_F(TextMessageExport, SkipsNothingInAStoreThatNamesNeitherFolder) {
  host::SpecialFolders special;
  ASSERT_EQ(filler_->box().GetSpecialFolders(filler_->SmsStore(), special), S_OK);
  special.drafts.reset();
  special.wastebasket.reset();
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  filler_->Add(u"/Drafts", TextMessage(u"x"));
  filler_->Add(u"/Deleted Items", TextMessage(u"x"));
  EXPECT_THAT(Folders(Export()), ElementsAre("/Drafts", "/Deleted Items"));
}

TEST_F(TextMessageExport, ComparesTheFoldersToSkipByLengthAndBytes) {
  host::SpecialFolders special;
  ASSERT_EQ(filler_->box().GetSpecialFolders(filler_->SmsStore(), special), S_OK);
  special.wastebasket->pop_back();
  special.drafts->push_back(0);
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  filler_->Add(u"/Drafts", TextMessage(u"x"));
  filler_->Add(u"/Deleted Items", TextMessage(u"x"));
  EXPECT_THAT(Folders(Export()), ElementsAre("/Drafts", "/Deleted Items"));
}

TEST_F(TextMessageExport, FailsOnAStoreWithoutATree) {
  host::SpecialFolders special;
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  ExpectOnlyTrailer(Export(), MAPI_E_INVALID_ENTRYID);
}

TEST_F(TextMessageExport, FailsWhenTheTreeIsNoFolder) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  host::SpecialFolders special;
  special.subtree = filler_->Messages(u"/Inbox")[0].entryId;
  ASSERT_EQ(filler_->box().SetSpecialFolders(filler_->SmsStore(), special), S_OK);
  ExpectOnlyTrailer(Export(), E_NOINTERFACE);
}

TEST_F(TextMessageExport, EndsWithAFailureWhereFoldersLieInACircleOrWithoutEnd) {
  filler_->Add(u"/Inbox", TextMessage(u"hello"));
  for (const char* sql :
       {"WITH RECURSIVE n (id) AS (SELECT 100 UNION ALL SELECT id + 1 FROM n WHERE id < 20099)"
        " INSERT INTO message_folders"
        " SELECT id, 1, CASE id WHEN 100 THEN 3 ELSE id - 1 END, CAST(id AS BLOB), 'x' FROM n",
        "UPDATE message_folders SET parent = 3 WHERE id = 2"}) {
    ASSERT_TRUE(RunSql(*handheld_, sql)) << sql;
    const DownloadAnswer answer = Export();
    EXPECT_TRUE(answer.complete);
    EXPECT_EQ(answer.status, static_cast<HRESULT>(0x80070570)) << sql;
  }
}

TEST_F(TextMessageExport, CutsAPathThatIsTooLong) {
  std::u16string path;
  for (int level = 0; level < 40; ++level) path += u'/' + std::u16string(49, u'a');
  filler_->Add(path, TextMessage(u"x"));
  EXPECT_THAT(Folders(Export()), ElementsAre(Narrow(path.substr(0, 1023))));
}

TEST_F(TextMessageExport, GoesOnToLookForTheStoreAfterAFailedInitialisation) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  SwitchLogOn();
  const auto plan = FaultPlan::FailCalls("MAPIInitialize", ERROR_NOT_ENOUGH_MEMORY);
  ExpectOnlyTrailer(Export(), E_NOTIMPL);
  EXPECT_THAT(LogMessages(), ElementsAre("Didn't find SMS Store", "Exit ProcessSMSFolder"));
}

TEST_F(TextMessageExport, GoesOnToLookForTheStoreAfterAFailedLogon) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  SwitchLogOn();
  const auto plan = FaultPlan::FailCalls("MAPILogonEx", ERROR_ACCESS_DENIED);
  ExpectOnlyTrailer(Export(), E_NOTIMPL);
  EXPECT_THAT(LogMessages(), ElementsAre("Didn't find SMS Store", "Exit ProcessSMSFolder"));
}

TEST_F(TextMessageExport, TreatsAStoreThatCannotBeReadAsNone) {
  for (const char* call : {"IMAPISession::GetMsgStoresTable", "IMAPITable::SetColumns",
                           "IMAPITable::QueryRows", "IMAPISession::OpenMsgStore"}) {
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_READ_FAULT);
    ExpectOnlyTrailer(Export(), E_NOTIMPL);
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(TextMessageExport, WritesTheTrailerWithWhateverFailureEndsTheWalk) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  for (const char* call : {"IMsgStore::GetProps", "IMsgStore::OpenEntry",
                           "IMAPIFolder::GetHierarchyTable", "IMAPIFolder::GetContentsTable"}) {
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_READ_FAULT);
    ExpectOnlyTrailer(Export(), static_cast<HRESULT>(0x8007001E));
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(TextMessageExport, KeepsWhatWasSentBeforeAFailure) {
  filler_->AddMany(u"/Inbox", 3);
  filler_->AddMany(u"/Work", 3);
  // Of the fifth message; the second of /Work, whose document is not sent.
  const auto plan = FaultPlan::FailNthCall("IMessage::GetRecipientTable", 5, ERROR_READ_FAULT);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, static_cast<HRESULT>(0x8007001E));
  EXPECT_THAT(Sizes(answer), ElementsAre(1, 2, 1));
}

TEST_F(TextMessageExport, AttemptsTheTrailerAlsoOnABrokenConnection) {
  filler_->AddMany(u"/Inbox", 2);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  const DownloadAnswer answer = Export();
  EXPECT_TRUE(answer.documents.empty());
  EXPECT_EQ(plan.calls(), 4u) << "a document and the trailer, two writes each";
  EXPECT_GE(answer.returned, 0) << "a broken connection is no failure by its sign";
}

TEST_F(TextMessageExport, LooksAtNoFurtherFoldersMessagesOnABrokenConnection) {
  filler_->AddMany(u"/Inbox", 2);
  filler_->AddMany(u"/Outbox", 2);
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  Export();
  EXPECT_EQ(plan.calls(), 4u);
}

TEST_F(TextMessageExport, GoesOnForTheLogOnABrokenConnection) {
  filler_->AddMany(u"/Inbox", 2);
  filler_->AddMany(u"/Outbox", 1);
  SwitchLogOn();
  const auto plan = FaultPlan::FailCalls("send", WSAECONNRESET);
  Export();
  EXPECT_EQ(plan.calls(), 8u) << "three documents and the trailer, two writes each";
}

TEST_F(TextMessageExport, LogsItsSteps) {
  StoredMessage message = TextMessage(u"Hello");
  message.recipients = {{u"Me", u"+49222"}};
  filler_->Add(u"/Inbox", message);
  filler_->Folder(u"/Inbox/Old");
  SwitchLogOn();
  Export();
  EXPECT_THAT(
      LogMessages(),
      ElementsAre("Store name SMS", "ProcessSMSFolder /Inbox", "Message Class IPM.SMStext",
                  "Message Status 0", "Subject Hello", "Subject moved", "OpenEntry returned 0",
                  "Received Message", "Sender: +4912345", "GotrecipientTable", "Recipient: +49222",
                  "Done with Message", "Calling StreamXMLToDesktop", "ProcessSMSFolder /Inbox/Old",
                  "ProcessSMSFolder /Outbox", "ProcessSMSFolder /Sent Items",
                  "Exit ProcessSMSFolder"));
}

TEST_F(TextMessageExport, LogsOffBeforeItsLastLine) {
  SwitchLogOn();
  const auto plan = FaultPlan::CountOnly();
  Export();
  const std::vector<std::string> calls = plan.names();
  const auto logoff = std::ranges::find(calls, "IMAPISession::Logoff");
  ASSERT_NE(logoff, calls.end());
  EXPECT_EQ(std::ranges::count(logoff, calls.end(), "WriteFile"), 1) << "the last line";
  EXPECT_EQ(std::ranges::count(calls, "IMAPISession::Logoff"), 1);
  ComPtr<IMAPISession> session;
  EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, session.put()), MAPI_E_NOT_INITIALIZED);
}

TEST_F(TextMessageExport, SetsTheColumnsBeforeEveryRowOfATableOfNames) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  const auto plan = FaultPlan::CountOnly();
  Export();
  std::string calls;
  for (const std::string& call : plan.names()) {
    if (call == "IMAPITable::SetColumns") calls += 'c';
    if (call == "IMAPITable::QueryRows") calls += 'q';
  }
  // One store; five folders at the top and the end of them; no folder below the three that are
  // walked. The rows of messages have the columns of the store.
  EXPECT_EQ(std::ranges::count(calls, 'c'), 1 + 6 + 3) << calls;
  EXPECT_EQ(Occurrences(calls, "cq"), 1u + 6u + 3u) << calls;
}

TEST_F(TextMessageExport, WritesNoLineWhileTheLogIsOff) {
  filler_->Add(u"/Inbox", TextMessage(u"x"));
  Export();
  EXPECT_THAT(LogMessages(), ElementsAre());
}

TEST_F(TextMessageExport, FindsNoStoreInNoSession) {
  ComPtr<IMsgStore> store;
  EXPECT_EQ(FindSmsStore(nullptr, store.put()), E_POINTER);
  EXPECT_FALSE(store);
}

}  // namespace
}  // namespace corvane::testing
