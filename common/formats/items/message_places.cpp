#include "common/formats/items/message_places.h"

#include <string_view>

namespace formats {
namespace {

bool IsBelow(std::string_view folder, std::string_view top) {
  return folder.starts_with(top) && (folder.size() == top.size() || folder[top.size()] == '/');
}

}  // namespace

MessagePlace PlaceOf(MessageType type, bool read) {
  MessageFlags flags;
  flags.read = read;
  if (type == MessageType::kReceived) return {kInboxPath, flags};
  flags.fromMe = true;
  flags.unsent = type != MessageType::kSent;
  flags.submitted = type != MessageType::kDraft && type != MessageType::kFailed;
  if (type == MessageType::kSent) return {kSentItemsPath, flags};
  if (type == MessageType::kDraft) return {kDraftsPath, flags};
  return {kOutboxPath, flags};
}

MessageType TypeOf(const std::string& folder, const MessageFlags& flags) {
  if (!flags.fromMe && !flags.unsent) return MessageType::kReceived;
  if (IsBelow(folder, kDraftsPath)) return MessageType::kDraft;
  if (IsBelow(folder, kOutboxPath)) {
    return flags.submitted ? MessageType::kOutbox : MessageType::kFailed;
  }
  return flags.unsent ? MessageType::kDraft : MessageType::kSent;
}

}  // namespace formats
