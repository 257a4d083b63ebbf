// Which item of the desk is which of the handheld.
#pragma once

#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/phone/phone_numbers.h"
#include "desktop/sync/in_flight.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/sides.h"

namespace desktop {

struct Pairing {
  const Link* link = nullptr;  // the memory's; null where they were not known to be one
  const DeskItem* desk = nullptr;
  const HandheldItem* handheld = nullptr;
  // What the handheld has is what a run before this one has put there, or has made the file of.
  bool asPut = false;
  bool deleted = false;  // the handheld's, which was put there: it is not on the desk any more
};

struct Pairings {
  std::vector<Pairing> pairs;        // those of links first, in their order
  std::vector<std::string> notices;  // a line each
};

// Those of one kind.
Pairings PairUp(ItemKind kind, const Sides& sides, const Memory& memory,
                const std::vector<InFlight>& inFlight, const phone::PhoneNumbers& numbers,
                const calendar::Zone& zone);

// What the handheld's record says, whether it has been understood yet or not.
Item ItemOf(const HandheldItem& handheld, const calendar::Zone& zone);

}  // namespace desktop
