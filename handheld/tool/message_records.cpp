#include "handheld/tool/message_records.h"

#include <algorithm>
#include <limits>

#include "common/text/unicode.h"

namespace tool {
namespace {

using ce::host::StoredCall;
using ce::host::StoredMessage;
using ce::host::StoredRecipient;

constexpr char16_t kTextClass[] = u"IPM.SMStext";
constexpr std::u16string_view kMultimediaClass = u"IPM.MMS";

std::string TextOf(const std::optional<std::u16string>& stored) {
  return stored ? text::ToUtf8Lossy(*stored) : std::string();
}

std::optional<std::u16string> StoredText(const std::string& text) {
  if (text.empty()) return std::nullopt;
  return text::FromUtf8Lossy(text);
}

// A call always has its times in the store; 0 is none.
std::optional<formats::MessageTime> CallTime(std::int64_t fileTime) {
  return fileTime == 0 ? std::nullopt : formats::TimeFromFileTime(fileTime);
}
std::int64_t StoredTime(const std::optional<formats::MessageTime>& time) {
  return time ? formats::ToFileTime(*time) : 0;
}

ce::LONG SizeOf(std::u16string_view text) {
  constexpr std::size_t kMost = std::numeric_limits<ce::LONG>::max();
  return static_cast<ce::LONG>(std::min(text.size() * sizeof(char16_t), kMost));
}

}  // namespace

formats::TextMessage ToRecord(const StoredMessage& message, std::u16string_view folder) {
  formats::TextMessage record;
  record.folder = text::ToUtf8Lossy(folder);
  if (message.messageClass && message.messageClass->starts_with(kMultimediaClass))
    record.messageClass = formats::MessageClass::kMms;
  if (message.deliveryTime) record.time = formats::TimeFromFileTime(*message.deliveryTime);
  record.flags = formats::FromFlags(message.flags.value_or(0));
  record.from = {TextOf(message.senderAddress), TextOf(message.senderName)};
  for (const StoredRecipient& recipient : message.recipients)
    record.to.push_back({TextOf(recipient.address), TextOf(recipient.name)});
  record.text = TextOf(message.subject);
  return record;
}

StoredMessage ToStored(const formats::TextMessage& message) {
  StoredMessage stored;
  stored.messageClass = message.messageClass == formats::MessageClass::kMms
                            ? std::u16string(kMultimediaClass)
                            : kTextClass;
  if (message.time) stored.deliveryTime = formats::ToFileTime(*message.time);
  stored.lastModificationTime = stored.deliveryTime;
  stored.flags = formats::ToFlags(message.flags);
  stored.status = 0;
  stored.subject = text::FromUtf8Lossy(message.text);
  stored.size = SizeOf(*stored.subject);
  stored.senderAddress = StoredText(message.from.address);
  stored.senderName = StoredText(message.from.name);
  for (const formats::MessageParty& party : message.to)
    stored.recipients.push_back({StoredText(party.name), StoredText(party.address)});
  return stored;
}

formats::Call ToRecord(const StoredCall& call) {
  formats::Call record;
  record.number = TextOf(call.number);
  record.name = TextOf(call.name);
  record.numberType = TextOf(call.nameType);
  record.start = CallTime(call.startTime);
  record.end = CallTime(call.endTime);
  formats::SetCallFlags(record, call.flags);
  record.missed = call.kind == static_cast<ce::DWORD>(formats::CallKind::kMissed);
  record.callerId = static_cast<std::int32_t>(call.callerIdType);
  record.note = TextOf(call.note);
  return record;
}

StoredCall ToStored(const formats::Call& call) {
  StoredCall stored;
  stored.startTime = StoredTime(call.start);
  stored.endTime = StoredTime(call.end);
  stored.kind = static_cast<ce::DWORD>(formats::KindOf(call));
  stored.flags = formats::ToCallFlags(call);
  stored.callerIdType = static_cast<ce::DWORD>(call.callerId);
  stored.number = StoredText(call.number);
  stored.name = StoredText(call.name);
  stored.nameType = StoredText(call.numberType);
  stored.note = StoredText(call.note);
  return stored;
}

}  // namespace tool
