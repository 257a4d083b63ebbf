// Whatever a message or call holds is the same after writing and reading, in every format.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "common/formats/json/message_json.h"
#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

// Whatever means something to the formats, beside letters of all lengths in UTF-8.
rc::Gen<std::string> AnyText() {
  const auto piece = rc::gen::weightedOneOf<std::string>(
      {{6, rc::gen::element<std::string>("a", "Z", "0", "é", "山", "\U0001F600")},
       {5, rc::gen::element<std::string>("\"", "'", "<", ">", "&", "\r\n", "\n", "\r", " ", "\t",
                                         "~", ", ", "\\", "{", "null")},
       {1, rc::gen::element<std::string>("&#55357;", "&amp;", "]]>", "<!--", "(Unknown)", "-1",
                                         "-2", "insert-address-token", std::string(1, '\0'), "\x01",
                                         "\x7F", "\uFEFF", "\u0085", "\u2028", "\uFFFD",
                                         "\xEF\xBF\xBE", std::string(300, 'w'))}});
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text;
    for (const std::string& p : pieces) text += p;
    return text;
  });
}

rc::Gen<std::string> FieldText() {
  return rc::gen::weightedOneOf<std::string>(
      {{4, rc::gen::just(std::string())},
       {4, rc::gen::element<std::string>("+4912345", "null", "(Unknown)", "A, B", "1~2", "~",
                                         "insert-address-token", "-1", "-2", "-3")},
       {4, AnyText()}});
}

rc::Gen<std::optional<MessageTime>> AnyTime() {
  const auto moment = rc::gen::weightedOneOf<std::int64_t>(
      {{1, rc::gen::element<std::int64_t>(0, -1, 1, -11644473600000, 253402300799999)},
       {3, rc::gen::resize(1000, rc::gen::inRange<std::int64_t>(-11644473600000, 253402300800000))},
       {3, rc::gen::resize(1000, rc::gen::inRange<std::int64_t>(1203083101000, 1203083201000))}});
  return rc::gen::map(rc::gen::maybe(moment), [](const rc::Maybe<std::int64_t>& m) {
    return m ? TimeFromMilliseconds(*m) : std::nullopt;
  });
}

MessageParty AnyParty() {
  return {*FieldText(), *FieldText()};
}

TextMessage AnyMessage() {
  TextMessage message;
  message.folder = *rc::gen::oneOf(
      rc::gen::element<std::string>("/Inbox", "/Outbox", "/Sent Items", "/Drafts", "/Inbox/Old"),
      FieldText());
  message.messageClass = *rc::gen::element(MessageClass::kSms, MessageClass::kMms);
  message.time = *AnyTime();
  message.flags =
      FromFlags(*rc::gen::oneOf(rc::gen::inRange(0, 0x80), rc::gen::arbitrary<std::int32_t>()));
  message.from = AnyParty();
  const int recipients = *rc::gen::inRange(0, 4);
  for (int i = 0; i < recipients; ++i) message.to.push_back(AnyParty());
  message.text = *FieldText();
  return message;
}

Call AnyCall() {
  Call call;
  call.number = *FieldText();
  call.name = *FieldText();
  call.numberType = *rc::gen::oneOf(rc::gen::element<std::string>("", "w", "h", "m"), FieldText());
  call.start = *AnyTime();
  call.end = *AnyTime();
  call.outgoing = *rc::gen::arbitrary<bool>();
  call.connected = *rc::gen::arbitrary<bool>();
  call.missed = *rc::gen::arbitrary<bool>();
  call.roaming = *rc::gen::arbitrary<bool>();
  call.ended = *rc::gen::arbitrary<bool>();
  call.callerId = *rc::gen::oneOf(rc::gen::inRange(-1, 5), rc::gen::arbitrary<std::int32_t>());
  call.note = *FieldText();
  return call;
}

RC_GTEST_PROP(MessageRoundTrip, BackupKeepsEveryMessage, ()) {
  const std::vector<TextMessage> messages = {AnyMessage(), AnyMessage()};
  const Items items = ReadBackupText(WriteBackup(messages));
  RC_ASSERT(items.messages == messages);
  RC_ASSERT(items.calls.empty());
}

RC_GTEST_PROP(MessageRoundTrip, BackupKeepsEveryCall, ()) {
  const std::vector<Call> calls = {AnyCall(), AnyCall()};
  const Items items = ReadBackupText(WriteBackup(calls));
  RC_ASSERT(items.calls == calls);
  RC_ASSERT(items.messages.empty());
}

RC_GTEST_PROP(MessageRoundTrip, BackupIsTheSameWhateverItsPieces, ()) {
  const std::string xml = WriteBackup({AnyMessage(), AnyMessage()});
  const auto piece = static_cast<std::size_t>(*rc::gen::inRange(1, 40));
  const Items whole = ReadBackupText(xml);
  const Items pieces = ReadBackupInPieces(xml, piece);
  RC_ASSERT(pieces.messages == whole.messages);
  RC_ASSERT(pieces.notices == whole.notices);
  RC_ASSERT(pieces.lines == whole.lines);
}

RC_GTEST_PROP(MessageRoundTrip, JsonKeepsEveryMessageAndCall, ()) {
  const TextMessage message = AnyMessage();
  const Call call = AnyCall();
  const Items items = ReadJsonText(MessageToJson(message, "1") + "\n" + CallToJson(call) + "\n");
  RC_ASSERT(items.messages == std::vector<TextMessage>{message});
  RC_ASSERT(items.calls == std::vector<Call>{call});
  RC_ASSERT(items.notices.empty());
}

}  // namespace
}  // namespace formats::testing
