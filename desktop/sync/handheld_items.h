// The handheld's items as a synchronisation reads and sends them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/merge/item.h"
#include "desktop/transfer/push_records.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/request.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

RecordKind RecordKindOf(ItemKind kind);

struct HandheldItem {
  Oid oid = 0;
  bool unreadable = false;   // it is there, and could not be sent
  std::string record;        // as it came; empty for one that could not be sent
  std::string hash;          // of the record
  std::optional<Item> item;  // without a UID; nothing where the hash was known already
};

// By OID, those that need not be understood once more.
using KnownRecords = std::unordered_map<Oid, std::string_view>;

// All of a kind, or those of these OIDs, of which some may be gone by now. The zone is the
// handheld's. Throw Error when the handheld does not come to a good end, or makes no sense.
std::vector<HandheldItem> ReadHandheld(const ConnectionOptions& connection, ItemKind kind,
                                       const calendar::Zone& zone, const KnownRecords& known);
std::vector<HandheldItem> ReadHandheld(const ConnectionOptions& connection, ItemKind kind,
                                       const calendar::Zone& zone, std::span<const Oid> oids);

// A record that has been kept. Throws Error when it is none.
Item ItemOfRecord(std::string_view record, const calendar::Zone& zone);

// What to send so that the handheld has this item. It goes by the key in the mapping.
PushRecord RecordFor(const Item& item, const std::string& key, const calendar::Zone& zone);

}  // namespace desktop
