// A telephone's message as people's programs exchange it: independent of wire, store and file.
//
// Text is UTF-8; line breaks may be LF, CR LF or CR.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/formats/items/message_time.h"

namespace formats {

// What a handheld's message flags say.
struct MessageFlags {
  bool read = false;
  bool unmodified = false;
  bool submitted = false;  // given away to be sent
  bool unsent = false;     // still being written, or waiting
  bool hasAttachment = false;
  bool fromMe = false;       // without it the message counts as received
  std::uint32_t others = 0;  // the bits without a name, where they stand; none of the above
  friend bool operator==(const MessageFlags&, const MessageFlags&) = default;
};
// The number that the handheld stores and the wire carries. Each undoes the other, for any number.
std::int32_t ToFlags(const MessageFlags& flags);
MessageFlags FromFlags(std::int32_t number);

// Either may be empty.
struct MessageParty {
  std::string address;  // a telephone number, a sender's word, an e-mail address
  std::string name;
  friend bool operator==(const MessageParty&, const MessageParty&) = default;
};

enum class MessageClass {
  kSms,
  kMms,  // what it shows and plays is not kept, only its text
};

struct TextMessage {
  std::string folder = "/Inbox";  // its path in the message store, such as "/Inbox/Old"
  MessageClass messageClass = MessageClass::kSms;
  std::optional<MessageTime> time;  // of delivery
  MessageFlags flags;
  MessageParty from;
  std::vector<MessageParty> to;
  std::string text;
  friend bool operator==(const TextMessage&, const TextMessage&) = default;
};

}  // namespace formats
