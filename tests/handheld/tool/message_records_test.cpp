#include "handheld/tool/message_records.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "handheld/store/call_log.h"
#include "platform/mapi.h"
#include "platform/phone.h"

namespace tool::testing {
namespace {

using ce::host::StoredCall;
using ce::host::StoredMessage;
using formats::Call;
using formats::TextMessage;

TextMessage FullMessage() {
  TextMessage message;
  message.folder = "/Sent Items/Old";
  message.messageClass = formats::MessageClass::kMms;
  message.time = formats::TimeFromMilliseconds(1203083101250);
  message.flags = formats::FromFlags(0x35);
  message.from = {"+46705550100", "me"};
  message.to = {{"+46705550101", "Åsa"}, {"+46705550102", ""}, {"", "Nils"}};
  message.text = "Fika?\n🍰";
  return message;
}

Call FullCall() {
  Call call;
  call.number = "+46705550101";
  call.name = "Åsa";
  call.numberType = "m";
  call.start = formats::TimeFromMilliseconds(1203083101250);
  call.end = formats::TimeFromMilliseconds(1203083171250);
  call.outgoing = call.connected = call.roaming = call.ended = true;
  call.callerId = 7;
  call.note = "\\My Documents\\call.pwi";
  return call;
}

TEST(MessageRecords, StoresAMessageAsATelephoneDoes) {
  const StoredMessage stored = ToStored(FullMessage());
  EXPECT_EQ(stored.messageClass, u"IPM.MMS");
  EXPECT_EQ(stored.deliveryTime, 128475567012500000);
  EXPECT_EQ(stored.flags, 0x35);
  EXPECT_EQ(stored.subject, u"Fika?\n🍰");
  EXPECT_EQ(stored.size, 16) << "bytes";
  EXPECT_EQ(stored.senderAddress, u"+46705550100");
  ASSERT_EQ(stored.recipients.size(), 3u);
  EXPECT_EQ(stored.recipients[0].name, u"Åsa");
  EXPECT_EQ(stored.recipients[1].name, std::nullopt);
}

TEST(MessageRecords, GivesBackEverythingOfAMessage) {
  EXPECT_EQ(ToRecord(ToStored(FullMessage()), u"/Sent Items/Old"), FullMessage());
  EXPECT_EQ(ToRecord(ToStored(TextMessage{}), u"/Inbox"), TextMessage{});
}

TEST(MessageRecords, LetsAMessageLackWhatIsEmptyButItsText) {
  const StoredMessage stored = ToStored(TextMessage{});
  EXPECT_EQ(stored.messageClass, u"IPM.SMStext");
  EXPECT_EQ(stored.deliveryTime, std::nullopt);
  EXPECT_EQ(stored.senderAddress, std::nullopt);
  EXPECT_EQ(stored.senderName, std::nullopt);
  EXPECT_EQ(stored.subject, u"");
}

TEST(MessageRecords, ReadsAMessageThatLacksEverything) {
  const TextMessage message = ToRecord(StoredMessage{}, u"/Inbox");
  EXPECT_EQ(message, TextMessage{});
}

TEST(MessageRecords, TakesEveryMultimediaClassForOne) {
  StoredMessage stored;
  stored.messageClass = u"IPM.MMS.Note";
  EXPECT_EQ(ToRecord(stored, u"/").messageClass, formats::MessageClass::kMms);
  stored.messageClass = u"IPM.Note";
  EXPECT_EQ(ToRecord(stored, u"/").messageClass, formats::MessageClass::kSms);
}

TEST(MessageRecords, ReplacesHalfCharacters) {
  StoredMessage stored;
  stored.subject = std::u16string(u"a") + char16_t{0xD83C};
  EXPECT_EQ(ToRecord(stored, u"/").text, "a\uFFFD");
}

TEST(CallRecords, StoresACallAsATelephoneDoes) {
  const StoredCall stored = ToStored(FullCall());
  EXPECT_EQ(stored.kind, ce::IOM_OUTGOING);
  EXPECT_EQ(stored.flags,
            ce::CALLLOG_OUTGOING | ce::CALLLOG_CONNECTED | ce::CALLLOG_ENDED | ce::CALLLOG_ROAM);
  EXPECT_EQ(stored.startTime, 128475567012500000);
  EXPECT_EQ(stored.endTime, stored.startTime + 700'000'000);
  EXPECT_EQ(stored.callerIdType, 7u);
  EXPECT_EQ(stored.number, u"+46705550101");
}

TEST(CallRecords, GivesBackEverythingOfACall) {
  EXPECT_EQ(ToRecord(ToStored(FullCall())), FullCall());
  EXPECT_EQ(ToRecord(ToStored(Call{})), Call{});
  Call missed;
  missed.missed = missed.ended = true;
  missed.callerId = -1;
  EXPECT_EQ(ToRecord(ToStored(missed)), missed);
}

TEST(CallRecords, TakesNoTimeForNone) {
  StoredCall stored;
  EXPECT_EQ(ToRecord(stored).start, std::nullopt);
  stored.startTime = -1;
  EXPECT_EQ(ToRecord(stored).start, std::nullopt);
}

RC_GTEST_PROP(MessageRecords, GiveBackAnyFlags, (std::int32_t flags)) {
  TextMessage message;
  message.flags = formats::FromFlags(flags);
  RC_ASSERT(ToStored(message).flags == flags);
  RC_ASSERT(ToRecord(ToStored(message), u"/Inbox") == message);
}

}  // namespace
}  // namespace tool::testing
