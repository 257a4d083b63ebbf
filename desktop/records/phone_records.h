// Text messages and calls as the wire has them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// The status of a handheld that lacks what is asked about, and what that means for messages.
inline constexpr std::int32_t kNotSupported = static_cast<std::int32_t>(0x80004001);
inline constexpr std::string_view kNoMessageStore =
    "the handheld has no store of text messages, as one without a telephone";

// What the record says. Elements that it does not know and times that do not exist are left out,
// and so is the first moment of 1601, which is how a handheld writes that it has no time. The wire
// does not tell that a call was missed: it is one that came in and was not connected.
formats::TextMessage MessageFromXml(const XmlElement& record);
formats::Call CallFromXml(const XmlElement& record);

// What the handheld has left out of a message, for people, alike for all of which it is the same;
// empty for a whole one. Of a multimedia message it tells where it lies and nothing else; of one
// without an identifier neither sender nor text nor recipients.
std::string MissingOf(const Record& message);

}  // namespace desktop
