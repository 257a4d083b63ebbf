#include "common/formats/json/message_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(MessageJson, WritesAMessageOnOneLine) {
  TextMessage message;
  message.folder = "/Inbox/Old";
  message.time = TimeOf("2008-02-15T13:45:01.250Z");
  message.flags = FromFlags(0x41);
  message.from = {"+4912345", "Åsa"};
  message.to = {{"+49222", ""}};
  message.text = "a\n\"b\"";
  EXPECT_EQ(
      MessageToJson(message, "00AB"),
      R"({"oid":"00AB","folder":"/Inbox/Old","class":"sms","time":"2008-02-15T13:45:01.250Z",)"
      R"("flags":["read","0x40"],"from":{"address":"+4912345","name":"Åsa"},)"
      R"("to":[{"address":"+49222"}],"text":"a\n\"b\""})");
}

TEST(MessageJson, LeavesOutWhatIsEmpty) {
  EXPECT_EQ(MessageToJson({}), R"({"folder":"/Inbox","class":"sms"})");
  EXPECT_EQ(CallToJson({}), R"({"outgoing":false,"connected":false,"missed":false,"roaming":false,)"
                            R"("ended":false,"callerId":"unavailable"})");
}

TEST(MessageJson, WritesACallOnOneLine) {
  Call call;
  call.number = "+4912345";
  call.name = "Åsa";
  call.numberType = "m";
  call.start = TimeOf("2008-02-15T13:45:01Z");
  call.end = TimeOf("2008-02-15T13:46:01Z");
  call.outgoing = call.ended = true;
  call.callerId = 7;
  call.note = "ring\nback";
  EXPECT_EQ(CallToJson(call),
            R"({"number":"+4912345","name":"Åsa","type":"m","start":"2008-02-15T13:45:01Z",)"
            R"("end":"2008-02-15T13:46:01Z","outgoing":true,"connected":false,"missed":false,)"
            R"("roaming":false,"ended":true,"callerId":7,"note":"ring\nback"})");
}

TEST(MessageJson, WritesIllFormedTextAsReplacementCharacters) {
  TextMessage message;
  message.text = "a\xFFz";
  EXPECT_EQ(MessageToJson(message),
            "{\"folder\":\"/Inbox\",\"class\":\"sms\",\"text\":\"a\uFFFDz\"}");
}

TEST(MessageJson, ReadsBothKindsInAnyOrderWithTheirLines) {
  const Items items =
      ReadJsonText("\xEF\xBB\xBF{\"text\":\"a\"}\r\n\n  \n{\"number\":\"1\"}\n{\"text\":\"\"}");
  EXPECT_THAT(items.messages, SizeIs(2));
  EXPECT_THAT(items.calls, SizeIs(1));
  EXPECT_THAT(items.lines, ElementsAre(1u, 4u, 5u));
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(MessageJson, ReadsShortForms) {
  const Items items =
      ReadJsonText(R"({"flags":37,"from":"+49","to":["1",{"name":"n"}],"class":"MMS",)"
                   R"("time":"2008-02-15T14:45:01+01:00"})"
                   "\n"
                   R"({"start":null,"callerId":2,"ended":true})"
                   "\n"
                   R"({"callerId":"blocked"})");
  ASSERT_THAT(items.messages, SizeIs(1));
  const TextMessage& message = items.messages[0];
  EXPECT_EQ(ToFlags(message.flags), 37);
  EXPECT_EQ(message.from, (MessageParty{"+49", ""}));
  EXPECT_THAT(message.to, ElementsAre(MessageParty{"1", ""}, MessageParty{"", "n"}));
  EXPECT_EQ(message.messageClass, MessageClass::kMms);
  EXPECT_EQ(message.time, TimeOf("2008-02-15T13:45:01Z"));
  ASSERT_THAT(items.calls, SizeIs(2));
  EXPECT_EQ(items.calls[0].start, std::nullopt);
  EXPECT_EQ(items.calls[0].callerId, kCallerIdAvailable);
  EXPECT_EQ(items.calls[1].callerId, kCallerIdBlocked);
  EXPECT_THAT(items.notices, IsEmpty());
}

TEST(MessageJson, IgnoresAnOid) {
  EXPECT_THAT(ReadJsonText(R"({"oid":"00AB","text":"a"})").notices, IsEmpty());
}

TEST(MessageJson, LeavesOutALineOfNothing) {
  const Items items = ReadJsonText("{}\n{\"oid\":\"00AB\"}\n{\"text\":\"a\"}\n");
  EXPECT_THAT(items.lines, ElementsAre(3u));
  EXPECT_THAT(items.notices, ElementsAre("1: nothing in it is of a message or a call: left out",
                                         "2: nothing in it is of a message or a call: left out"));
}

TEST(MessageJson, ReadsAnEmptyMessageThatWasWritten) {
  const Items items = ReadJsonText(MessageToJson({}) + "\n" + CallToJson({}));
  EXPECT_THAT(items.messages, ElementsAre(TextMessage()));
  EXPECT_THAT(items.calls, ElementsAre(Call()));
  EXPECT_THAT(items.notices, IsEmpty());
}

struct OddCase {
  const char* name;
  const char* line;
  const char* notice;
};
class OddJsonTest : public ::testing::TestWithParam<OddCase> {};

TEST_P(OddJsonTest, IsNoticedAndTheRestIsKept) {
  const Items items = ReadJsonText(std::string("{\"text\":\"a\"}\n") + GetParam().line);
  EXPECT_THAT(items.notices, ElementsAre(std::string("2: ") + GetParam().notice));
}

INSTANTIATE_TEST_SUITE_P(
    MessageJson, OddJsonTest,
    ::testing::Values(
        OddCase{"UnknownName", R"({"colour":"red","text":"a"})", "colour: not a known name"},
        OddCase{"NumberForText", R"({"text":5})", "text: this value does not fit: 5"},
        OddCase{"NoTime", R"({"time":"noon"})", R"(time: this value does not fit: "noon")"},
        OddCase{"UnknownFlag", R"({"flags":["read","blue"]})",
                R"(flags: this value does not fit: ["read","blue"])"},
        OddCase{"FlagOfTooManyBits", R"({"flags":["0x100000000"]})",
                R"(flags: this value does not fit: ["0x100000000"])"},
        OddCase{"FlagsBeyond32Bits", R"({"flags":4294967296})",
                "flags: this value does not fit: 4294967296"},
        OddCase{"FlagsBelow32Bits", R"({"flags":-2147483649})",
                "flags: this value does not fit: -2147483649"},
        OddCase{"FlagsWithAFraction", R"({"flags":1.5})", "flags: this value does not fit: 1.5"},
        OddCase{"UnknownClass", R"({"class":"fax"})", R"(class: this value does not fit: "fax")"},
        OddCase{"SenderIsANumber", R"({"from":7})", "from: this value does not fit: 7"},
        OddCase{"RecipientsAreNoList", R"({"to":"x"})", R"(to: this value does not fit: "x")"},
        OddCase{"ARecipientIsNone", R"({"to":[[]]})", "to: this value does not fit: [[]]"},
        OddCase{"TruthIsText", R"({"missed":"yes"})", R"(missed: this value does not fit: "yes")"},
        OddCase{"UnknownCallerId", R"({"callerId":"secret"})",
                R"(callerId: this value does not fit: "secret")"},
        OddCase{"NoJson", "{\"text\":", "not a JSON object: {\"text\":"},
        OddCase{"Array", "[1]", "not a JSON object: [1]"},
        OddCase{"TwoObjects", "{} {}", "not a JSON object: {} {}"},
        OddCase{"NotUtf8", "{\"text\":\"\xFF\"}", "bytes that are not UTF-8 were replaced"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(MessageJson, KeepsWhatElseALineHas) {
  const Items items = ReadJsonText(R"({"time":"noon","text":"kept","flags":[9]})");
  ASSERT_THAT(items.messages, SizeIs(1));
  EXPECT_EQ(items.messages[0].text, "kept");
  EXPECT_EQ(items.messages[0].time, std::nullopt);
  EXPECT_THAT(items.notices, SizeIs(2));
}

TEST(MessageJson, TakesDeepNestingWithoutHarm) {
  const std::string deep = "{\"text\":" + std::string(1'000'000, '[') +
                           std::string(1'000'000, ']') + ",\"folder\":\"/A\"}";
  const Items items = ReadJsonText(deep);
  ASSERT_THAT(items.messages, SizeIs(1));
  EXPECT_EQ(items.messages[0].folder, "/A");
  EXPECT_THAT(items.notices, SizeIs(1));
}

TEST(MessageJson, ReadsLinesLongerThanAPieceOfTheFile) {
  TextMessage message;
  message.text = std::string(200'000, 'x') + "\u00E9";
  const std::string line = MessageToJson(message) + "\n";
  const Items items = ReadJsonText(line + line);
  EXPECT_THAT(items.messages, ElementsAre(message, message));
  EXPECT_THAT(items.lines, ElementsAre(1u, 2u));
}

TEST(MessageJson, PassesOverALineThatIsTooLong) {
  const std::string line =
      "{\"text\":\"" + std::string(kLongestJsonLine, 'x') + "\"}\n{\"text\":\"\"}\n";
  const Items items = ReadJsonText(line);
  EXPECT_THAT(items.lines, ElementsAre(2u));
  EXPECT_THAT(items.notices, ElementsAre("1: a line this long is not read"));
}

TEST(MessageJson, BoundsItsNotices) {
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "?\n";
  const Items items = ReadJsonText(lines);
  ASSERT_THAT(items.notices, SizeIs(201));
  EXPECT_EQ(items.notices.back(), "1000: 800 more notices were left out");
}

TEST(MessageJson, MayBeReadForOneKindOnly) {
  int calls = 0;
  ItemSink sink;
  sink.call = [&](const Call&, std::size_t) { ++calls; };
  std::istringstream in("{\"text\":\"a\"}\n{\"number\":\"1\"}\n");
  EXPECT_TRUE(ReadJsonLines(in, sink).empty());
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace formats::testing
