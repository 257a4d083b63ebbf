#include "maintenance/imported_contacts.h"

#include <vector>

#include "formats/identity.h"
#include "maintenance/status_error.h"

namespace maintenance {
namespace {

using ce::host::ImportLedger;

constexpr std::string_view kUidPrefix = "uid:";

std::string IdentityOf(const formats::Contact& contact) {
  if (!contact.uid.empty()) return std::string(kUidPrefix) + contact.uid;
  return "content:" + formats::ContentHash(contact);
}

}  // namespace

ImportedContacts::ImportedContacts(Session& session) {
  Check(ledger_.Open(session.Outlook().get()), "the memory of imports");
}

std::optional<ImportedContacts::Known> ImportedContacts::Find(
    const formats::Contact& contact) const {
  const std::string identity = IdentityOf(contact);
  if (const auto pretended = pretended_.find(identity); pretended != pretended_.end())
    return pretended->second;
  std::optional<ImportLedger::Entry> entry;
  Check(ledger_.Find(ce::olContactItem, identity, entry), "the memory of imports");
  if (!entry) return std::nullopt;
  return Known{static_cast<std::uint32_t>(entry->oid), entry->content};
}

void ImportedContacts::Remember(const formats::Contact& contact, std::uint32_t oid) {
  Check(ledger_.Remember(ce::olContactItem, IdentityOf(contact),
                         {static_cast<ce::LONG>(oid), formats::ContentHash(contact)}),
        "the memory of imports");
}

void ImportedContacts::Pretend(const formats::Contact& contact) {
  pretended_[IdentityOf(contact)] = {0, formats::ContentHash(contact)};
}

std::string ImportedContacts::UidOf(std::uint32_t oid) const {
  if (!uids_) {
    uids_.emplace();
    std::vector<std::pair<std::string, ImportLedger::Entry>> entries;
    Check(ledger_.List(ce::olContactItem, entries), "the memory of imports");
    for (const auto& [identity, entry] : entries)
      if (identity.rfind(kUidPrefix, 0) == 0)
        uids_->emplace(static_cast<std::uint32_t>(entry.oid), identity.substr(kUidPrefix.size()));
  }
  const auto found = uids_->find(oid);
  return found == uids_->end() ? std::string() : found->second;
}

}  // namespace maintenance
