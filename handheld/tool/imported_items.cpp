#include "handheld/tool/imported_items.h"

#include <utility>
#include <vector>

#include "handheld/tool/status_error.h"

namespace tool {
namespace {

using ce::host::ImportLedger;

constexpr std::string_view kUidPrefix = "uid:";
constexpr std::string_view kContentPrefix = "content:";

}  // namespace

RecordIdentity::RecordIdentity(const std::string& uid, std::string hash)
    : name(uid.empty() ? kContentPrefix : kUidPrefix), contentHash(std::move(hash)) {
  name += uid.empty() ? contentHash : uid;
}

ImportedItems::ImportedItems(Session& session, ce::INT itemType) : itemType_(itemType) {
  Check(ledger_.Open(session.Outlook().get()), "the memory of imports");
}

std::optional<ImportedItems::Known> ImportedItems::Find(const RecordIdentity& identity) const {
  if (const auto pretended = pretended_.find(identity.name); pretended != pretended_.end())
    return pretended->second;
  std::optional<ImportLedger::Entry> entry;
  Check(ledger_.Find(itemType_, identity.name, entry), "the memory of imports");
  if (!entry) return std::nullopt;
  return Known{static_cast<std::uint32_t>(entry->oid), entry->content};
}

void ImportedItems::Remember(const RecordIdentity& identity, std::uint32_t oid) {
  Check(ledger_.Remember(itemType_, identity.name,
                         {static_cast<ce::LONG>(oid), identity.contentHash}),
        "the memory of imports");
}

void ImportedItems::Pretend(const RecordIdentity& identity) {
  pretended_[identity.name] = {0, identity.contentHash};
}

std::string ImportedItems::UidOf(std::uint32_t oid) const {
  if (!uids_) {
    uids_.emplace();
    std::vector<std::pair<std::string, ImportLedger::Entry>> entries;
    Check(ledger_.List(itemType_, entries), "the memory of imports");
    for (const auto& [name, entry] : entries)
      if (name.rfind(kUidPrefix, 0) == 0)
        uids_->emplace(static_cast<std::uint32_t>(entry.oid), name.substr(kUidPrefix.size()));
  }
  const auto found = uids_->find(oid);
  return found == uids_->end() ? std::string() : found->second;
}

}  // namespace tool
