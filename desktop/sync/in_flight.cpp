#include "desktop/sync/in_flight.h"

#include <set>

#include "desktop/sync/plan.h"

namespace desktop {

void AdoptUnheardOf(const Memory& memory, Mapping& mapping, PushRecovery& recovery) {
  if (mapping.expected().empty()) return;
  for (const Link& link : memory.links()) {
    const std::string kind(NameOf(link.kind));
    const bool known = mapping.FindOid(link.oid) != nullptr ||
                       mapping.FindUid(kind, kAddition + link.key) != nullptr;
    if (!known) mapping.Put({link.oid, kind, kAlteration + link.key, {}, {}});
  }
  recovery.AdoptExpected();
}

std::vector<InFlight> FindInFlight(const Memory& memory, const Mapping& mapping) {
  if (mapping.items().empty() && memory.intents().empty()) return {};
  std::set<Oid> linked;
  for (const Link& link : memory.links()) linked.insert(link.oid);
  std::vector<InFlight> inFlight;
  for (const auto& [oid, item] : mapping.items()) {
    if (linked.contains(oid) || item.uid.empty()) continue;
    for (const ItemKind kind : {ItemKind::kContact, ItemKind::kAppointment, ItemKind::kTask}) {
      if (item.kind != NameOf(kind)) continue;
      const bool added = item.uid.starts_with(kAddition);
      inFlight.push_back({kind, item.uid.substr(1), {}, oid, added ? item.state : "", {}});
    }
  }
  for (const Intent& intent : memory.intents()) {
    if (linked.contains(intent.oid)) continue;
    inFlight.push_back({intent.kind, {}, intent.uid, intent.oid, {}, intent.recordHash});
  }
  return inFlight;
}

}  // namespace desktop
