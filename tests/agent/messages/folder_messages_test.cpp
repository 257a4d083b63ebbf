#include "agent/messages/folder_messages.h"

#include "tests/agent/messages/fake_rows.h"
#include "tests/agent/messages/messages_support.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::StoredMessage;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class FolderMessages : public MessagesTest {
 protected:
  std::vector<std::size_t> SizesOf(int messages) {
    EXPECT_EQ(filler_->box().Clear(filler_->Folder(u"/Inbox")), S_OK);
    filler_->AddMany(u"/Inbox", messages);
    return Sizes(Export());
  }
  // The folder that these row sets make up.
  static DownloadAnswer ExportRows(std::deque<std::vector<FakeRow>> sets) {
    const SmsSession session;
    ComPtr<IMAPITable> table;
    table.attach(new FakeTable(std::move(sets)));
    DesktopEnd desktop;
    CorvaneStream stream;
    stream.Attach(desktop.socket());
    const HRESULT status = AddFolderMessagesToXML(session.store(), table.get(), u"/Inbox", &stream);
    stream.Release();
    return ReadDownload({status, desktop.Received()});
  }
  FakeRow RowOf(const std::string& text) {
    filler_->Add(u"/Inbox", TextMessage(Wide(text)));
    const auto messages = filler_->Messages(u"/Inbox");
    return {BytesValue(PR_ENTRYID, *messages.back().entryId), TextValue(PR_SUBJECT_W, text)};
  }
};

TEST_F(FolderMessages, SendsTheFirstAloneAndFortyToADocumentBehindIt) {
  EXPECT_THAT(SizesOf(0), ElementsAre());
  EXPECT_THAT(SizesOf(1), ElementsAre(1));
  EXPECT_THAT(SizesOf(2), ElementsAre(1, 1));
  EXPECT_THAT(SizesOf(41), ElementsAre(1, 40));
  EXPECT_THAT(SizesOf(42), ElementsAre(1, 40, 1));
  EXPECT_THAT(SizesOf(81), ElementsAre(1, 40, 40));
  EXPECT_THAT(SizesOf(82), ElementsAre(1, 40, 40, 1));
}

TEST_F(FolderMessages, CountsMultimediaMessagesLikeOthers) {
  StoredMessage multimedia = TextMessage(u"x");
  multimedia.messageClass = u"IPM.MMS";
  filler_->Add(u"/Inbox", multimedia);
  filler_->AddMany(u"/Inbox", 41);
  EXPECT_THAT(Sizes(Export()), ElementsAre(1, 40, 1));
}

TEST_F(FolderMessages, SendsMessagesInTheOrderOfTheStore) {
  filler_->AddMany(u"/Inbox", 3);
  std::string all;
  for (const std::string& document : Export().documents) all += document;
  EXPECT_LT(all.find("<NOTES>1<"), all.find("<NOTES>2<"));
  EXPECT_LT(all.find("<NOTES>2<"), all.find("<NOTES>3<"));
}

TEST_F(FolderMessages, GivesAMessageWithoutATextThatOfTheOneBefore) {
  filler_->Add(u"/Inbox", TextMessage(u"first"));
  StoredMessage without = TextMessage(u"");
  without.subject.reset();
  filler_->Add(u"/Inbox", without);
  filler_->Add(u"/Inbox", without);
  const DownloadAnswer answer = Export();
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_EQ(Occurrences(answer.documents[1], "<NOTES>first</NOTES>"), 2u);
}

TEST_F(FolderMessages, GivesAMessageWithAnEmptyTextNone) {
  filler_->Add(u"/Inbox", TextMessage(u"first"));
  filler_->Add(u"/Inbox", TextMessage(u""));
  const DownloadAnswer answer = Export();
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[1], Not(HasSubstr("NOTES")));
}

TEST_F(FolderMessages, StartsEveryFolderWithoutAText) {
  filler_->Add(u"/Inbox", TextMessage(u"first"));
  StoredMessage without = TextMessage(u"");
  without.subject.reset();
  filler_->Add(u"/Work", without);
  const DownloadAnswer answer = Export();
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[1], Not(HasSubstr("NOTES")));
}

TEST_F(FolderMessages, KeepsTheTextOfAMultimediaMessageForTheNext) {
  FakeRow multimedia = RowOf("picture");
  multimedia.push_back(TextValue(PR_MESSAGE_CLASS_W, "IPM.MMS"));
  FakeRow without = RowOf("own");
  without.pop_back();
  const DownloadAnswer answer = ExportRows({{multimedia}, {without}});
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_THAT(answer.documents[0], Not(HasSubstr("NOTES")));
  EXPECT_THAT(answer.documents[1], HasSubstr("<NOTES>picture</NOTES>"));
}

TEST_F(FolderMessages, StopsAtARowSetOfMoreThanOneRow) {
  const FakeRow row = RowOf("x");
  const DownloadAnswer answer = ExportRows({{row}, {row}, {row, row}, {row}});
  EXPECT_EQ(answer.returned, S_OK);
  EXPECT_THAT(Sizes(answer), ElementsAre(1, 1));
}

TEST_F(FolderMessages, GoesOnBehindARowWithoutAnEntryIdentifier) {
  const FakeRow row = RowOf("x");
  const FakeRow without{LongValue(PR_MESSAGE_FLAGS, 1), TextValue(PR_SUBJECT_W, "lost")};
  const DownloadAnswer answer = ExportRows({{without}, {row}});
  EXPECT_EQ(answer.returned, S_OK);
  ASSERT_EQ(answer.documents.size(), 2u);
  EXPECT_EQ(Records(answer.documents[0]), "<SMS><Folder>/Inbox</Folder><Flags>1</Flags></SMS>");
  EXPECT_THAT(answer.documents[1], HasSubstr("<NOTES>x</NOTES>"));
}

TEST_F(FolderMessages, EndsAtAMessageThatCannotBeOpenedWithoutItsDocument) {
  const FakeRow row = RowOf("x");
  const FakeRow gone{BytesValue(PR_ENTRYID, {1, 2, 3})};
  const DownloadAnswer answer = ExportRows({{row}, {row}, {gone}, {row}});
  EXPECT_EQ(answer.returned, MAPI_E_NOT_FOUND);
  EXPECT_THAT(Sizes(answer), ElementsAre(1));
}

}  // namespace
}  // namespace corvane::testing
