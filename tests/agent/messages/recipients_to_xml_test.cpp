#include <gmock/gmock.h>

#include "tests/agent/messages/messages_support.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::StoredMessage;
using host::StoredRecipient;
using ::testing::HasSubstr;
using ::testing::Not;

class RecipientsToXml : public MessagesTest {
 protected:
  std::string RecordsWith(const std::vector<StoredRecipient>& recipients) {
    StoredMessage message = TextMessage(u"x");
    message.recipients = recipients;
    filler_->Add(u"/Inbox", message);
    return ExportedRecords();
  }
};

TEST_F(RecipientsToXml, WritesEveryAddressInItsOwnElement) {
  EXPECT_THAT(RecordsWith({{u"Ada", u"+491"}, {std::nullopt, u"+492"}}),
              HasSubstr("<NOTES>x</NOTES><Recipients><Recipient><Number>+491</Number></Recipient>"
                        "<Recipient><Number>+492</Number></Recipient></Recipients></SMS>"));
}

TEST_F(RecipientsToXml, WritesNothingForAMessageWithoutRecipients) {
  EXPECT_THAT(RecordsWith({}), HasSubstr("<NOTES>x</NOTES></SMS>"));
}

TEST_F(RecipientsToXml, AddsNothingForARecipientWithoutAnAddress) {
  EXPECT_THAT(RecordsWith({{u"Ada", std::nullopt}}), Not(HasSubstr("Recipient")));
}

TEST_F(RecipientsToXml, PassesOverARecipientWithoutAnAddressBetweenOthers) {
  EXPECT_THAT(
      RecordsWith(
          {{u"A", u"+491"}, {u"B", std::nullopt}, {std::nullopt, std::nullopt}, {u"C", u"+493"}}),
      HasSubstr("<Recipients><Recipient><Number>+491</Number></Recipient>"
                "<Recipient><Number>+493</Number></Recipient></Recipients>"));
}

TEST_F(RecipientsToXml, WritesAnEmptyElementForAnEmptyAddress) {
  EXPECT_THAT(RecordsWith({{u"A", u""}}), HasSubstr("<Recipients><Recipient/></Recipients>"));
}

TEST_F(RecipientsToXml, LooksAtAsManyValuesAsTheMessagesRowHas) {
  // One value in the message's row: of a recipient the first value alone is looked at.
  StoredMessage bare;
  bare.recipients = {{u"Ada", u"+491"}, {std::nullopt, u"+492"}};
  filler_->Add(u"/Inbox", bare);
  EXPECT_EQ(ExportedRecords(), "<SMS Oid=\"" + OidOf(u"/Inbox") +
                                   "\"><Folder>/Inbox</Folder><Recipients><Recipient><Number>+492"
                                   "</Number></Recipient></Recipients></SMS>");
}

TEST_F(RecipientsToXml, LooksAtNoMoreValuesThanTheRecipientHas) {
  // Nine values in the message's row, at most three in the recipient's.
  EXPECT_THAT(RecordsWith({{std::nullopt, u"+491"}}),
              HasSubstr("<Recipients><Recipient><Number>+491</Number></Recipient></Recipients>"));
}

}  // namespace
}  // namespace corvane::testing
