// What a handheld has, as far as a push needs to know it.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "desktop/wire/connection.h"
#include "desktop/wire/request.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

struct FoundItems {
  std::map<Oid, std::string> states;   // by StateHash
  std::map<Oid, std::int32_t> failed;  // could not be sent, with their status

  [[nodiscard]] bool Has(Oid oid) const { return states.contains(oid) || failed.contains(oid); }
};

// The items of these OIDs, or all of the kinds. Connects to nobody where there is nothing to ask.
// Throw Error when the handheld does not come to a good end, or names an OID twice.
FoundItems FindItems(const ConnectionOptions& connection,
                     const std::map<RecordKind, std::vector<Oid>>& oids);
FoundItems FindAllItems(const ConnectionOptions& connection, const std::set<RecordKind>& kinds);

}  // namespace desktop
