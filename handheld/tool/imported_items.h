// Which record of other programs' files is which item of the handheld.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "handheld/outlook/import_ledger.h"
#include "handheld/tool/session.h"

namespace tool {

// What a record is known by, and what tells one state of it from another.
struct RecordIdentity {
  RecordIdentity(const std::string& uid, std::string hash);

  std::string name;         // made of its UID, of its content when it has none
  std::string contentHash;  // formats::ContentHash of it as it is when it comes back from an item
};

inline RecordIdentity IdentityOf(const formats::Contact& contact) {
  return {contact.uid, formats::ContentHash(contact)};
}
// The same for what a handheld keeps alike.
template <typename Record>
RecordIdentity IdentityOf(const Record& record) {
  return {record.uid, formats::ContentHash(Normalized(record, formats::SeriesEnd::kDay))};
}

// Of one kind of item. Calls throw StatusError.
class ImportedItems {
 public:
  // `itemType` is an ol...Item.
  ImportedItems(Session& session, ce::INT itemType);

  struct Known {
    std::uint32_t oid = 0;    // the item may be gone by now; 0 for what is pretended
    std::string contentHash;  // of the record as it was imported last
  };
  std::optional<Known> Find(const RecordIdentity& identity) const;
  void Remember(const RecordIdentity& identity, std::uint32_t oid);
  // As Remember, for this object's life only: what a dry run would have imported.
  void Pretend(const RecordIdentity& identity);

  // The UID under which an item is known; empty for none.
  std::string UidOf(std::uint32_t oid) const;

 private:
  ce::host::ImportLedger ledger_;
  const ce::INT itemType_;
  std::map<std::string, Known> pretended_;
  mutable std::optional<std::map<std::uint32_t, std::string>> uids_;  // by OID, read once
};

}  // namespace tool
