// What runs that were broken off have left on its way.
#pragma once

#include <string>
#include <vector>

#include "desktop/merge/item.h"
#include "desktop/sync/memory.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_recovery.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// What the mapping calls an item of the desk while it is on its way, as an addition or as a change.
inline constexpr char kAddition = '+';
inline constexpr char kAlteration = '=';

// An item that a run before this one has put on one side, and not come to remember.
struct InFlight {
  ItemKind kind = ItemKind::kContact;
  std::string key;         // on the desk; or
  std::string uid;         // there
  Oid oid = 0;             // 0 for the second of two of a conflict, which is to be like no other
  std::string state;       // StateHash of the record as it was added; or
  std::string recordHash;  // of the record that was made a file of
};

// Waits for what the handheld may still be adding. All that is remembered is known to the mapping
// then, so that nothing else is taken for it. Throws as PushRecovery.
void AdoptUnheardOf(const Memory& memory, Mapping& mapping, PushRecovery& recovery);

std::vector<InFlight> FindInFlight(const Memory& memory, const Mapping& mapping);

}  // namespace desktop
