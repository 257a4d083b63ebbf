// Between people's messages and calls (UTF-8) and those of the handheld (UTF-16).
#pragma once

#include <string_view>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"
#include "handheld/store/call_log.h"
#include "handheld/store/message_stores.h"

namespace tool {

// Of a message in the folder of this path. What the handheld lacks, or has as an empty text, is
// empty; text that is no UTF-16 has U+FFFD where it is damaged.
formats::TextMessage ToRecord(const ce::host::StoredMessage& message, std::u16string_view folder);
formats::Call ToRecord(const ce::host::StoredCall& call);

// Everything but the folder. What is empty is lacking, but a message always has a text; bytes that
// are no UTF-8 become U+FFFD.
ce::host::StoredMessage ToStored(const formats::TextMessage& message);
ce::host::StoredCall ToStored(const formats::Call& call);

}  // namespace tool
