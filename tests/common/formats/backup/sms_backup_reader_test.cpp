#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/items/message_places.h"
#include "tests/common/formats/items/message_support.h"
#include "tests/support/paths.h"

namespace formats::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string Sms(const std::string& attributes) {
  return "<smses>\n<sms " + attributes + " />\n</smses>\n";
}

// A received message with these attributes besides.
std::string Body(const std::string& body) {
  return Sms("address=\"1\" date=\"0\" type=\"1\" read=\"0\" body=\"" + body + "\"");
}

std::string Mms(const std::string& attributes, const std::string& children) {
  return "<smses><mms date=\"0\" read=\"0\" " + attributes + ">" + children + "</mms></smses>";
}

TextMessage OnlyMessage(const Items& items) {
  EXPECT_THAT(items.messages, SizeIs(1));
  return items.messages.empty() ? TextMessage{} : items.messages.front();
}

TEST(SmsBackupReader, ReadsAReceivedMessage) {
  const Items items = ReadBackupText(
      Sms("protocol=\"0\" address=\"+4912345\" date=\"1203083101250\" type=\"1\" "
          "subject=\"null\" body=\"Caf\u00E9\" toa=\"null\" sc_toa=\"null\" "
          "service_center=\"null\" read=\"1\" status=\"-1\" locked=\"0\" date_sent=\"0\" "
          "readable_date=\"whenever\" contact_name=\"\u00C5sa\""));
  TextMessage expected;
  expected.folder = "/Inbox";
  expected.time = TimeOf("2008-02-15T13:45:01.250Z");
  expected.flags.read = true;
  expected.from = {"+4912345", "\u00C5sa"};
  expected.text = "Caf\u00E9";
  EXPECT_EQ(OnlyMessage(items), expected);
  EXPECT_THAT(items.lines, ElementsAre(2u));
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupReader, ReadsASentMessageToSeveral) {
  const Items items = ReadBackupText(
      Sms("address=\"1~2\" date=\"0\" type=\"2\" read=\"1\" body=\"x\" contact_name=\"A, B\""));
  const TextMessage message = OnlyMessage(items);
  EXPECT_EQ(message.folder, "/Sent Items");
  EXPECT_EQ(ToFlags(message.flags), 0x25);
  EXPECT_EQ(message.from, MessageParty());
  EXPECT_THAT(message.to, ElementsAre(MessageParty{"1", "A"}, MessageParty{"2", "B"}));
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupReader, PutsEachKindInItsPlace) {
  for (int type = 1; type <= 6; ++type) {
    const Items items = ReadBackupText(
        Sms("address=\"1\" date=\"0\" read=\"0\" type=\"" + std::to_string(type) + "\""));
    const TextMessage message = OnlyMessage(items);
    EXPECT_EQ((MessagePlace{message.folder, message.flags}),
              PlaceOf(static_cast<MessageType>(type), false));
    EXPECT_EQ(items.notices.empty(), type != 6);
  }
}

TEST(SmsBackupReader, KeepsATildeInASendersName) {
  EXPECT_EQ(OnlyMessage(ReadBackupText(Sms("address=\"a~b\" date=\"0\" type=\"1\""))).from.address,
            "a~b");
}

TEST(SmsBackupReader, TakesNullAndUnknownForNothing) {
  const TextMessage message = OnlyMessage(ReadBackupText(
      Sms("address=\"null\" date=\"0\" type=\"1\" body=\"null\" contact_name=\"(Unknown)\"")));
  EXPECT_EQ(message.from, MessageParty());
  EXPECT_EQ(message.text, "");
}

struct TextCase {
  const char* name;
  const char* written;
  const char* read;
  const char* notice = nullptr;
};
class BackupTextTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(BackupTextTest, IsReadHoweverItComesInPieces) {
  const std::string xml = Body(GetParam().written);
  for (const std::size_t piece : {xml.size(), std::size_t{1}, std::size_t{3}, std::size_t{7}}) {
    const Items items = ReadBackupInPieces(xml, piece);
    EXPECT_EQ(OnlyMessage(items).text, GetParam().read);
    if (GetParam().notice == nullptr) {
      EXPECT_THAT(items.notices, IsEmpty());
    } else {
      EXPECT_THAT(items.notices, ElementsAre(std::string("2: ") + GetParam().notice));
    }
  }
}

constexpr char kCannotCarry[] = "characters that XML cannot carry were left out";
constexpr char kNotUtf8[] = "bytes that are not UTF-8 were replaced";
constexpr char kHalves[] = "halves of surrogate pairs were replaced";

INSTANTIATE_TEST_SUITE_P(
    SmsBackupReader, BackupTextTest,
    ::testing::Values(
        TextCase{"SurrogatePair", "a&#55357;&#56832;z", "a\U0001F600z"},
        TextCase{"HexadecimalSurrogatePair", "&#xD83D;&#xde00;", "\U0001F600"},
        TextCase{"PairOfPairs", "&#55357;&#56832;&#55357;&#56832;", "\U0001F600\U0001F600"},
        TextCase{"WholeReference", "&#128512;", "\U0001F600"},
        TextCase{"EmojiItself", "\U0001F600", "\U0001F600"},
        TextCase{"HighHalfAlone", "a&#55357;z", "a\uFFFDz", kHalves},
        TextCase{"HighHalfAtTheEnd", "a&#55357;", "a\uFFFD", kHalves},
        TextCase{"LowHalfAlone", "a&#56832;z", "a\uFFFDz", kHalves},
        TextCase{"HalfBeforeAnotherCharacter", "&#55357;&#65;", "\uFFFDA", kHalves},
        TextCase{"BeyondUnicode", "&#x110000;z", "\uFFFDz",
                 "numbers that are no characters were replaced"},
        TextCase{"FiveEntities", "&lt;&gt;&amp;&quot;&apos;", "<>&\"'"},
        TextCase{"DoublyEscaped", "&amp;#55357;&amp;lt;", "&#55357;&lt;"},
        TextCase{"LineBreaks", "a&#10;b&#13;&#10;c&#13;d&#9;e", "a\nb\r\nc\rd\te"},
        TextCase{"BareLineBreaks", "a\nb\r\nc\rd\te", "a\nb\nc\nd\te"},
        TextCase{"BareAmpersand", "Tom & Jerry &c; &nbsp;", "Tom & Jerry &c; &nbsp;"},
        TextCase{"AmpersandAtTheEnd", "a&", "a&"},
        TextCase{"NumberWithoutAnEnd", "a&#65 &#; &#x; &#6a;", "a&#65 &#; &#x; &#6a;"},
        TextCase{"LessThan", "1 < 2 <b>", "1 < 2 <b>"}, TextCase{"Apostrophe", "it's", "it's"},
        TextCase{"ControlReference", "a&#1;z", "az", kCannotCarry},
        TextCase{"ZeroReference", "a&#0;z", "az", kCannotCarry},
        TextCase{"NoncharacterReference", "a&#xFFFE;z", "az", kCannotCarry},
        TextCase{"Control", "a\x1Bz", "az", kCannotCarry},
        TextCase{"Noncharacter", "a\xEF\xBF\xBFz", "az", kCannotCarry},
        TextCase{"DeleteSign", "a\x7Fz", "a\x7Fz"},
        TextCase{"Latin1", "caf\xE9!", "caf\uFFFD!", kNotUtf8},
        TextCase{"Latin1AtTheEnd", "caf\xE9", "caf\uFFFD", kNotUtf8}),
    [](const auto& test) { return std::string(test.param.name); });

struct LossCase {
  const char* name;
  const char* attributes;
  const char* notice;
};
class BackupLossTest : public ::testing::TestWithParam<LossCase> {};

TEST_P(BackupLossTest, IsNoticedOnceWithACount) {
  const std::string sms = std::string("<sms address=\"1\" ") + GetParam().attributes + "/>\n";
  const Items one = ReadBackupText("<smses>\n" + sms + "</smses>");
  EXPECT_THAT(one.notices, ElementsAre(std::string("2: ") + GetParam().notice));
  const Items three = ReadBackupText("<smses>\n\n" + sms + sms + sms + "</smses>");
  EXPECT_THAT(three.notices, ElementsAre(std::string("3: ") + GetParam().notice + " (3 times)"));
  EXPECT_THAT(three.messages, SizeIs(3));
}

INSTANTIATE_TEST_SUITE_P(
    SmsBackupReader, BackupLossTest,
    ::testing::Values(
        LossCase{"Locked", "date=\"0\" type=\"1\" locked=\"1\"",
                 "locked: a handheld cannot lock messages"},
        LossCase{"Subject", "date=\"0\" type=\"1\" subject=\"s\"",
                 "subject: a text message has no place for it"},
        LossCase{"ServiceCentre", "date=\"0\" type=\"1\" service_center=\"+49\"",
                 "service_center: the number of the service centre is not kept"},
        LossCase{"Status", "date=\"0\" type=\"2\" status=\"0\"",
                 "status: delivery reports are not kept"},
        LossCase{"DateSent", "date=\"0\" type=\"1\" date_sent=\"5\"",
                 "date_sent: only the time in \"date\" is kept"},
        LossCase{"Queued", "date=\"0\" type=\"6\"",
                 "type: queued messages are kept as messages on their way in the Outbox"},
        LossCase{"UnknownType", "date=\"0\" type=\"9\"",
                 "type: not a known kind of message, taken as a received one: 9"},
        LossCase{"NoDate", "type=\"1\"", "date: not a time: "},
        LossCase{"DateIsText", "type=\"1\" date=\"12x\"", "date: not a time: 12x"},
        LossCase{"DateTooFar", "type=\"1\" date=\"9223372036854775807\"",
                 "date: not a time: 9223372036854775807"},
        LossCase{"DateBeyondAnyNumber", "type=\"1\" date=\"99999999999999999999\"",
                 "date: not a time: 99999999999999999999"},
        LossCase{"BrokenNoteOfOurOwn", "date=\"0\" type=\"1\" handheld=\"{\"",
                 "handheld: it is not a JSON object"},
        LossCase{"NoteThatDoesNotFit", "date=\"0\" type=\"1\" handheld='{\"text\":1}'",
                 "handheld: text: this value does not fit: 1"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SmsBackupReader, ReadsTheTextOfAMultimediaMessage) {
  const Items items = ReadBackupText(
      Mms("msg_box=\"1\" sub=\"Hello\" address=\"1\" contact_name=\"A\"",
          "<parts><part ct=\"application/smil\" text=\"&lt;smil/>\"/>"
          "<part ct=\"text/plain\" text=\"one\"/><part ct=\"image/gif\" data=\"R0lGOD\"/>"
          "<part ct=\"text/plain\" text=\"two\"/><part ct=\"image/gif\" data=\"R0lGOD\"/></parts>"
          "<addrs><addr address=\"1\" type=\"137\"/>"
          "<addr address=\"insert-address-token\" type=\"151\"/>"
          "<addr address=\"2\" type=\"130\"/></addrs>"));
  const TextMessage message = OnlyMessage(items);
  EXPECT_EQ(message.messageClass, MessageClass::kMms);
  EXPECT_EQ(message.folder, "/Inbox");
  EXPECT_EQ(message.text, "Hello\none\ntwo");
  EXPECT_EQ(message.from, (MessageParty{"1", "A"}));
  EXPECT_THAT(message.to, ElementsAre(MessageParty{}, MessageParty{"2", ""}));
  EXPECT_THAT(items.notices,
              ElementsAre("1: addr: those who got a copy are kept as recipients",
                          "1: part: of a multimedia message only text is kept, not image/gif "
                          "(2 times)"));
}

TEST(SmsBackupReader, GivesNamesToTheAddressesThatTheyGoWith) {
  const TextMessage message = OnlyMessage(
      ReadBackupText(Mms("msg_box=\"2\" address=\"2~1\" contact_name=\"B, A\"",
                         "<addrs><addr address=\"1\" type=\"151\"/>"
                         "<addr address=\"2\" type=\"151\"/><addr address=\"3\" type=\"129\"/>"
                         "</addrs>")));
  EXPECT_THAT(message.to,
              ElementsAre(MessageParty{"1", "A"}, MessageParty{"2", "B"}, MessageParty{"3", ""}));
}

TEST(SmsBackupReader, KeepsNoNamesThatDoNotGoWithTheAddresses) {
  const Items items =
      ReadBackupText(Sms("address=\"1~2~3\" date=\"0\" type=\"2\" contact_name=\"A, B\""));
  EXPECT_THAT(OnlyMessage(items).to,
              ElementsAre(MessageParty{"1", ""}, MessageParty{"2", ""}, MessageParty{"3", ""}));
  EXPECT_THAT(items.notices, ElementsAre("2: contact_name: not as many names as addresses"));
}

TEST(SmsBackupReader, TakesTheAddressAttributeOfAMultimediaMessageWithoutAddresses) {
  const Items sent = ReadBackupText(Mms("msg_box=\"2\" address=\"1~2\" contact_name=\"A, B\"", ""));
  EXPECT_THAT(OnlyMessage(sent).to, ElementsAre(MessageParty{"1", "A"}, MessageParty{"2", "B"}));
  EXPECT_THAT(sent.notices, IsEmpty());
  const Items received = ReadBackupText(Mms("msg_box=\"1\" address=\"1~2\"", ""));
  EXPECT_EQ(OnlyMessage(received).from.address, "1");
  EXPECT_THAT(received.notices, ElementsAre("1: address: which one sent it is not said"));
}

TEST(SmsBackupReader, NoticesWhatItDoesNotKnow) {
  const Items items = ReadBackupText(
      "<smses><rcs/><sms date=\"0\" type=\"1\" address=\"1\"><extra/></sms>"
      "<mms date=\"0\" msg_box=\"1\"><part/><addrs><addr address=\"1\" type=\"9\"/></addrs></mms>"
      "<rcs><sms date=\"0\" type=\"1\"/></rcs>text</smses>");
  EXPECT_THAT(items.messages, SizeIs(2));
  EXPECT_THAT(items.notices,
              ElementsAre("1: addr: not a known kind of address: 9",
                          "1: extra: not a known element, left out",
                          "1: part: not a known element, left out",
                          "1: rcs: not a known element, left out (2 times)",
                          "1: text between the elements has no meaning and was left out"));
}

TEST(SmsBackupReader, SaysWhenTheCountDiffers) {
  const Items items = ReadBackupText("<smses count=\"5\"><sms date=\"0\" type=\"1\"/></smses>");
  EXPECT_THAT(items.notices, ElementsAre("1: the file says that it has 5 entries, and has 1"));
}

TEST(SmsBackupReader, IgnoresInstructionsCommentsAndSections) {
  const Items items = ReadBackupText(
      "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n<!-- <sms> -- > \"\n-->\n"
      "<?xml-stylesheet type=\"text/xsl\" href=\"sms.xsl\"?>\n<smses>\n<![CDATA[<sms>\n]]>\n"
      "<sms date=\"0\" type=\"1\"\n   address=\"1\"/></smses>");
  EXPECT_THAT(items.lines, ElementsAre(8u));
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupReader, ReadsQuotesOfBothKindsAndBlanksAroundTheSign) {
  const Items items = ReadBackupText(
      "<smses ><sms date = '0'\ttype\n=\n\"1\" body='say \"a\" > b' data = \"x\"></sms ></smses >");
  EXPECT_EQ(OnlyMessage(items).text, "say \"a\" > b");
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(SmsBackupReader, HandsOverCallsAndMessagesOfOneFile) {
  const Items items = ReadBackupText(
      "<calls><call number=\"1\" duration=\"0\" date=\"0\" type=\"3\"/>"
      "<sms date=\"0\" type=\"1\"/></calls>");
  EXPECT_THAT(items.calls, SizeIs(1));
  EXPECT_THAT(items.messages, SizeIs(1));
}

TEST(SmsBackupReader, LetsAnExceptionOfTheReceiverOut) {
  ItemSink sink;
  int messages = 0;
  sink.message = [&](const TextMessage&, std::size_t) {
    ++messages;
    throw std::runtime_error("full");
  };
  const std::string sms = "<sms date=\"0\" type=\"1\"/>";
  EXPECT_THROW(ReadBackup("<smses>" + sms + sms + "</smses>", sink), std::runtime_error);
  EXPECT_EQ(messages, 1);
}

TEST(SmsBackupReader, NeedsNoReceiver) {
  EXPECT_TRUE(ReadBackup(Body("x"), ItemSink{}).empty());
}

std::string Sample() {
  std::ifstream in(corvane::testing::SourcePath("samples/phone-backup.xml"), std::ios::binary);
  EXPECT_TRUE(in.is_open());
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(SmsBackupReader, ReadsTheSampleWithTheseNotices) {
  const Items items = ReadBackupText(Sample());
  EXPECT_THAT(items.messages, SizeIs(9));
  EXPECT_EQ(items.messages.at(0).text,
            "Fika på Björkgatan kl. 15? \U0001F370\nTa med \"kanelbullar\" & mjölk.");
  EXPECT_EQ(items.messages.at(7).text, "Valborg\nElden brinner \U0001F525");
  EXPECT_EQ(items.messages.at(7).from.name, "Åsa Björkman");
  EXPECT_THAT(
      items.notices,
      ElementsAre("5: date_sent: only the time in \"date\" is kept (2 times)",
                  "5: service_center: the number of the service centre is not kept (2 times)",
                  "7: locked: a handheld cannot lock messages",
                  "8: status: delivery reports are not kept (2 times)",
                  "11: type: queued messages are kept as messages on their way in the Outbox",
                  "12: part: of a multimedia message only text is kept, not image/gif"));
}

TEST(SmsBackupReader, KeepsOfACutOffFileWhatIsWhole) {
  const std::string sample = Sample();
  std::size_t before = 0;
  for (std::size_t length = 0; length < sample.size(); length += 13) {
    const Items items = ReadBackupText(sample.substr(0, length));
    EXPECT_GE(items.messages.size(), before);
    before = items.messages.size();
    ASSERT_FALSE(items.notices.empty()) << length;
  }
  EXPECT_EQ(before, 9u);
  const Items cut = ReadBackupText(sample.substr(0, sample.find("Hej, jag")));
  EXPECT_THAT(cut.messages, SizeIs(4));
  EXPECT_EQ(cut.notices.back(),
            "8: the file ends too early, after this; only what is whole is kept");
}

}  // namespace
}  // namespace formats::testing
