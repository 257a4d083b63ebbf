// Looks at the handheld before a push: are the items that the mapping names still the same ones?
#pragma once

#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_records.h"
#include "desktop/wire/connection.h"

namespace desktop {

// Null when there is none, or when the record names its item itself.
const MappedItem* FindMapped(const Mapping& mapping, const PushRecord& record);

enum class ItemState {
  kSame,  // as the mapping remembers it, or already as the record has it
  kGone,
  kChanged,  // or another one altogether
};

// What the handheld has under the OIDs that the mapping gives these records. Connects to nobody
// when there are none. An item whose state the mapping does not remember counts as the same.
// Throws Error when the handheld does not tell about each.
std::map<Oid, ItemState> CheckMapped(const ConnectionOptions& connection, const Mapping& mapping,
                                     std::span<const PushRecord> records);

enum class Named { kToDelete, kAtAll };

// Of the items that records name themselves, to be deleted or at all, those that the handheld does
// not have. Connects to nobody when none are named. Throws Error as above.
std::set<Oid> FindMissing(const ConnectionOptions& connection, std::span<const PushRecord> records,
                          Named named = Named::kToDelete);

// Of contacts that were sent, with the OIDs that they have, the phonetic names that the handheld
// did not keep: the fields of each. Connects to nobody when none was sent.
std::map<const PushRecord*, std::vector<std::string>> FindUnkeptNames(
    const ConnectionOptions& connection, const std::map<Oid, const PushRecord*>& sent);

}  // namespace desktop
