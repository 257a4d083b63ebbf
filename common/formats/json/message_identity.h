// What makes a message or call the same one, and what makes it a changed one.
#pragma once

#include <string>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"

namespace formats {

// 32 hexadecimal digits, stable over versions.
//
// ContentHash is of everything there is, line breaks of any kind taken as one.
std::string ContentHash(const TextMessage& message);
std::string ContentHash(const Call& call);

// The same for a message however it was carried and whatever has become of it since: of its class,
// its time in seconds, whether it is from me, the other side's addresses without the signs that
// only arrange a number, and its text. Not of its folder and other flags, nor of names.
//
// Two messages may share one, such as the same word sent twice within a second: who imports adds as
// many of an identity as the file has more than the handheld.
std::string IdentityOf(const TextMessage& message);
// Of the call's start in seconds, its number as above and whether it was outgoing.
std::string IdentityOf(const Call& call);

}  // namespace formats
