// What has been imported before: which record of which source became which item.
//
// It lies in the store, so that an item and the memory of where it came from are committed together
// (StoreBatch). Importing the same file again finds every record here, with the same content,
// and changes nothing. An entry may outlive its item: whoever finds one asks for the item.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "handheld/outlook/session.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

class ImportLedger {
 public:
  struct Entry {
    LONG oid = 0;
    std::string content;
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  // E_FAIL when the application is not logged on. Until this has succeeded, and when the
  // application has logged off since, the other calls answer E_FAIL.
  [[nodiscard]] HRESULT Open(IPOutlookApp* app);

  // `itemType` is an ol...Item. `identity` names the record in its source (a UID, or a text that
  // its content makes up), `content` tells one state of it from another (a hash). Both are UTF-8.
  [[nodiscard]] HRESULT Find(INT itemType, std::string_view identity,
                             std::optional<Entry>& entry) const;
  // Every identity of this kind with its entry.
  [[nodiscard]] HRESULT List(INT itemType,
                             std::vector<std::pair<std::string, Entry>>& entries) const;
  // Replaces what was remembered of this identity.
  [[nodiscard]] HRESULT Remember(INT itemType, std::string_view identity, const Entry& entry);
  // Succeeds as well when nothing was remembered.
  [[nodiscard]] HRESULT Forget(INT itemType, std::string_view identity);

 private:
  Store* store() const { return session_ ? session_->store() : nullptr; }

  SessionPtr session_;
};

}  // namespace ce::host
