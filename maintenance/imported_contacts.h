// Which contact of other programs' files is which item of the handheld.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "formats/contact.h"
#include "maintenance/session.h"
#include "platform/host/outlook/import_ledger.h"

namespace maintenance {

// A contact is known by its UID, one without by its content. Calls throw StatusError.
class ImportedContacts {
 public:
  explicit ImportedContacts(Session& session);

  struct Known {
    std::uint32_t oid = 0;    // the item may be gone by now; 0 for what is pretended
    std::string contentHash;  // of the contact as it was imported last
  };
  std::optional<Known> Find(const formats::Contact& contact) const;
  void Remember(const formats::Contact& contact, std::uint32_t oid);
  // As Remember, for this object's life only: what a dry run would have imported.
  void Pretend(const formats::Contact& contact);

  // The UID under which an item is known; empty for none.
  std::string UidOf(std::uint32_t oid) const;

 private:
  ce::host::ImportLedger ledger_;
  std::map<std::string, Known> pretended_;
  mutable std::optional<std::map<std::uint32_t, std::string>> uids_;  // by OID, read once
};

}  // namespace maintenance
