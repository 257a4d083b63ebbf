// Where on a handheld a telephone's message belongs, and back.
#pragma once

#include <string>

#include "common/formats/items/message.h"

namespace formats {

inline constexpr char kInboxPath[] = "/Inbox";
inline constexpr char kOutboxPath[] = "/Outbox";
inline constexpr char kSentItemsPath[] = "/Sent Items";
inline constexpr char kDraftsPath[] = "/Drafts";

// What telephones call a message; the numbers are those of their backups.
enum class MessageType {
  kReceived = 1,
  kSent = 2,
  kDraft = 3,
  kOutbox = 4,  // on its way
  kFailed = 5,  // could not be sent
  kQueued = 6,  // as kOutbox, from where on it is not told apart
};

struct MessagePlace {
  std::string folder;
  MessageFlags flags;
  friend bool operator==(const MessagePlace&, const MessagePlace&) = default;
};

// Beside "read": in the Inbox no flag; in Sent Items from me, submitted; in Drafts from me, unsent;
// in the Outbox from me, unsent, submitted, but not submitted when it failed.
MessagePlace PlaceOf(MessageType type, bool read);

// Never kQueued. For the places above what they were made of; otherwise one that is not from me and
// not unsent is received, one below Drafts a draft, one below Outbox on its way if submitted and
// failed if not, any other that is unsent a draft, and the rest sent.
MessageType TypeOf(const std::string& folder, const MessageFlags& flags);

}  // namespace formats
