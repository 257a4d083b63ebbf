#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/formats/items/message_places.h"
#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

TextMessage Message(MessageType type) {
  TextMessage message;
  const MessagePlace place = PlaceOf(type, true);
  message.folder = place.folder;
  message.flags = place.flags;
  message.time = TimeOf("2008-02-15T13:45:01.250Z");
  return message;
}

TEST(SmsBackupWriter, WritesAReceivedMessageAsThatProgramDoes) {
  TextMessage message = Message(MessageType::kReceived);
  message.from = {"+4912345", "\u00C5sa \"B\""};
  message.text = "a & <b>\n\U0001F600\t.";
  EXPECT_EQ(WriteBackup({message}),
            "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n"
            "<smses count=\"1\">\n"
            "  <sms protocol=\"0\" address=\"+4912345\" date=\"1203083101250\" type=\"1\" "
            "subject=\"null\" body=\"a &amp; &lt;b&gt;&#10;\U0001F600&#9;.\" toa=\"null\" "
            "sc_toa=\"null\" service_center=\"null\" read=\"1\" status=\"-1\" locked=\"0\" "
            "date_sent=\"0\" readable_date=\"2008-02-15 13:45:01 UTC\" "
            "contact_name=\"\u00C5sa &quot;B&quot;\" />\n"
            "</smses>\n");
}

TEST(SmsBackupWriter, WritesAMultimediaMessageWithItsText) {
  TextMessage message = Message(MessageType::kSent);
  message.messageClass = MessageClass::kMms;
  message.to = {{"1", "A"}, {"2", ""}};
  message.text = "Hello";
  EXPECT_EQ(WriteBackup({message}),
            "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n"
            "<smses count=\"1\">\n"
            "  <mms date=\"1203083101250\" msg_box=\"2\" address=\"1~2\" m_type=\"128\" "
            "sub=\"null\" ct_t=\"application/vnd.wap.multipart.related\" text_only=\"1\" "
            "read=\"1\" locked=\"0\" date_sent=\"0\" readable_date=\"2008-02-15 13:45:01 UTC\" "
            "contact_name=\"A, (Unknown)\">\n"
            "    <parts>\n"
            "      <part seq=\"0\" ct=\"text/plain\" name=\"null\" chset=\"106\" cd=\"null\" "
            "fn=\"null\" cid=\"&lt;text_0&gt;\" cl=\"text_0.txt\" ctt_s=\"null\" ctt_t=\"null\" "
            "text=\"Hello\" />\n"
            "    </parts>\n"
            "    <addrs>\n"
            "      <addr address=\"insert-address-token\" type=\"137\" charset=\"106\" />\n"
            "      <addr address=\"1\" type=\"151\" charset=\"106\" />\n"
            "      <addr address=\"2\" type=\"151\" charset=\"106\" />\n"
            "    </addrs>\n"
            "  </mms>\n"
            "</smses>\n");
}

TEST(SmsBackupWriter, WritesACallAsThatProgramDoes) {
  Call call;
  call.number = "+4912345";
  call.start = TimeOf("2008-02-15T13:45:01Z");
  call.end = TimeOf("2008-02-15T13:46:02Z");
  call.outgoing = call.connected = call.ended = true;
  call.callerId = kCallerIdAvailable;
  EXPECT_EQ(WriteBackup({call}),
            "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n"
            "<calls count=\"1\">\n"
            "  <call number=\"+4912345\" duration=\"61\" date=\"1203083101000\" type=\"2\" "
            "presentation=\"1\" subscription_id=\"null\" "
            "readable_date=\"2008-02-15 13:45:01 UTC\" contact_name=\"(Unknown)\" />\n"
            "</calls>\n");
}

TEST(SmsBackupWriter, NotesWhatTheFormatHasNoPlaceFor) {
  TextMessage message = Message(MessageType::kReceived);
  message.folder = "/Inbox/Old";
  message.from.address = "1";
  message.to = {{"2", ""}};
  EXPECT_THAT(WriteBackup({message}),
              HasSubstr(" handheld=\"{&quot;folder&quot;:&quot;/Inbox/Old&quot;,"
                        "&quot;to&quot;:[{&quot;address&quot;:&quot;2&quot;}]}\" />\n"));
}

TEST(SmsBackupWriter, NotesNothingOfWhatTheFormatSays) {
  std::vector<TextMessage> messages;
  for (const MessageType type : {MessageType::kReceived, MessageType::kSent, MessageType::kDraft,
                                 MessageType::kOutbox, MessageType::kFailed}) {
    TextMessage message = Message(type);
    message.text = "text";
    if (type == MessageType::kReceived) {
      message.from = {"1", "A"};
    } else {
      message.to = {{"1", "A"}, {"2", "B"}};
    }
    messages.push_back(message);
    message.messageClass = MessageClass::kMms;
    messages.push_back(message);
  }
  const std::string xml = WriteBackup(messages);
  EXPECT_THAT(xml, Not(HasSubstr("handheld")));
  const Items items = ReadBackupText(xml);
  EXPECT_EQ(items.messages, messages);
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupWriter, WritesNoFileThatCannotBeRead) {
  TextMessage message = Message(MessageType::kReceived);
  message.text = "a\x01\xFF\xEF\xBF\xBFz";
  message.from.name = "\x02";
  const Items items = ReadBackupText(WriteBackup({message}));
  ASSERT_EQ(items.messages.size(), 1u);
  EXPECT_EQ(items.messages[0].text, "a\x01\uFFFD\xEF\xBF\xBFz");
  EXPECT_EQ(items.messages[0].from.name, "\x02");
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupWriter, WritesATimeThatIsNotKeptAsNone) {
  TextMessage message = Message(MessageType::kReceived);
  message.time = MessageTime::max();
  const Items items = ReadBackupText(WriteBackup({message}));
  ASSERT_EQ(items.messages.size(), 1u);
  EXPECT_EQ(items.messages[0].time, std::nullopt);
}

TEST(SmsBackupWriter, WritesAFileWithoutEntries) {
  EXPECT_EQ(WriteBackup(std::vector<Call>{}),
            "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n"
            "<calls count=\"0\">\n</calls>\n");
  EXPECT_THAT(ReadBackupText(WriteBackup(std::vector<TextMessage>{})).notices, IsEmpty());
}

}  // namespace
}  // namespace formats::testing
