// Messages and calls as lines of JSON, one object a line, for programs.
//
// A message: "folder" (its path), "time" (ISO 8601 UTC), "flags" (words of "read", "unmodified",
// "submitted", "unsent", "attachment", "from-me", and bits without a name as "0x40"), "from" (an
// object of "address" and "name"), "to" (such objects), "text", "class" ("sms" or "mms").
//
// A call: "number", "name", "type" ("w", "h", "m"), "start", "end", "outgoing", "connected",
// "missed", "roaming", "ended", "callerId" ("unavailable", "blocked", "available", or a number),
// "note".
//
// What is empty is not written, but "folder", "class" and a call's truths always are.
#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/call.h"
#include "common/formats/items/item_sink.h"
#include "common/formats/items/message.h"
#include "common/formats/items/notice.h"

namespace formats {

// Without a line end. `oid` is written in front unless empty; reading ignores it.
std::string MessageToJson(const TextMessage& message, std::string_view oid = {});
std::string CallToJson(const Call& call, std::string_view oid = {});

// Reads both kinds, in any order; a line is told to be a call by a name that only calls have. Never
// fails: a line that is no object or has no name that is known, another name and a value that does
// not fit are notices, and what else the line has is kept. Beyond what is written, "flags" and
// "callerId" may be numbers, "from" and those in "to" may be texts (the address), a time may have
// an offset or none (then it is UTC). Memory is that of one line, of at most kLongestJsonLine
// bytes. Whether a stream could be read to its end is its state (bad).
inline constexpr std::size_t kLongestJsonLine = 16 << 20;
std::vector<Notice> ReadJsonLines(std::istream& in, const ItemSink& sink);
std::vector<Notice> ReadJsonLines(std::string_view bytes, const ItemSink& sink);

}  // namespace formats
