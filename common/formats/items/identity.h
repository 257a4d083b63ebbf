// What makes an item the same one, and what makes it a changed one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/formats/items/appointment.h"
#include "common/formats/items/call.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/message.h"
#include "common/formats/items/task.h"

namespace formats {

// Hashes and identities are 32 hexadecimal digits, equal for what is equal. They stand in files and
// stores that outlive a version, so that their values never change.

class Digest {
 public:
  void Add(std::string_view bytes);
  // Of all that has been added.
  [[nodiscard]] std::string Digits() const;

 private:
  std::uint64_t first_ = 0xCBF29CE484222325;
  std::uint64_t second_ = 0x6C62272E07BB0142;
};

// With a FileAs as a handheld derives it when the contact has none: "Last, First", or the company.
Contact WithFileAs(Contact contact);
// Without a FileAs that is as derived.
Contact WithoutDerivedFileAs(Contact contact);

std::string ContentHash(std::string_view bytes);
// Of everything but the UID, the FileAs as WithFileAs gives it.
std::string ContentHash(const Contact& contact);
// Of everything but the UID. Text counts with its line breaks as LF.
std::string ContentHash(const Appointment& appointment);
std::string ContentHash(const Task& task);

// The same for a message however it was carried and whatever has become of it since: of its class,
// its time in seconds, whether it is from me, the other side's addresses without the signs that
// only arrange a number, and its text, line breaks of any kind taken as one. Not of its folder and
// other flags, nor of names.
//
// Two messages may share one, such as the same word sent twice within a second: who imports adds as
// many of an identity as the file has more than the handheld.
std::string IdentityOf(const TextMessage& message);
// Of the call's start in seconds, its number as above and whether it was outgoing.
std::string IdentityOf(const Call& call);

// A new random one, "urn:uuid:...".
std::string NewUid();

}  // namespace formats
