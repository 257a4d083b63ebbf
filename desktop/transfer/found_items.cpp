#include "desktop/transfer/found_items.h"

#include <fmt/format.h>

#include "desktop/records/record_kind.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

void Take(const std::string& document, FoundItems& found) {
  for (const Record& record : ParseRecords(document)) {
    if (!record.oid) continue;
    if (record.element.name == kErrorElement) {
      found.failed.emplace(*record.oid, ErrorValue(record));
    } else if (IsTakenByAgent(record.element.name) &&
               !found.states.emplace(*record.oid, StateHash(record.element)).second) {
      throw Error(fmt::format("the answer makes no sense: OID {} twice", *record.oid));
    }
  }
}

void Require(std::int32_t status) {
  if (status != 0) throw Error("the handheld broke off: " + StatusText(status));
}

}  // namespace

FoundItems FindItems(const ConnectionOptions& connection,
                     const std::map<RecordKind, std::vector<Oid>>& oids) {
  FoundItems found;
  for (const auto& [kind, wanted] : oids) {
    Require(DownloadSpecific(connection, kind, wanted,
                             [&](const std::string& document) { Take(document, found); }));
  }
  return found;
}

FoundItems FindAllItems(const ConnectionOptions& connection, const std::set<RecordKind>& kinds) {
  FoundItems found;
  for (const RecordKind kind : kinds) {
    Require(
        DownloadAll(connection, kind, [&](const std::string& document) { Take(document, found); }));
  }
  return found;
}

}  // namespace desktop
