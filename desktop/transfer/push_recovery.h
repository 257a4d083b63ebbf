// After a push that did not come to its end: what became of the items whose answer never came?
//
// The handheld may still be at work on them. So they are looked for until none has come for a
// while; and once everything is sent they are looked for again, since one that has come even later
// is there a second time by then.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "desktop/transfer/found_items.h"
#include "desktop/transfer/mapping.h"
#include "desktop/wire/connection.h"

namespace desktop {

// What does not come to its end throws Error, or Interrupted.
class PushRecovery {
 public:
  // What becomes of an item that is there twice.
  enum class Surplus { kDelete, kLeave };

  // Connection and mapping must outlive this object. `quiet` is how long none must have come.
  PushRecovery(const ConnectionOptions& connection, Mapping& mapping,
               std::chrono::milliseconds quiet, Surplus surplus = Surplus::kDelete)
      : connection_(connection), mapping_(mapping), quiet_(quiet), twice_(surplus) {}

  // Finds the items that the mapping expects among those of the handheld that it does not know, and
  // takes in their OIDs; what is not found is expected no longer. Connects to nobody when none are
  // expected. When it throws, all that was not found is expected on.
  void AdoptExpected();

  // Whether an item of this state was expected and not found.
  [[nodiscard]] bool IsMissing(const std::string& state) const { return missing_.contains(state); }

  // Of the items that came after AdoptExpected had given them up, takes in those that are not there
  // yet and deletes the others. Connects to nobody when all were found.
  void DeleteLatecomers();

  // Items that were there twice.
  [[nodiscard]] std::size_t deleted() const { return deleted_; }

 private:
  using Items = std::vector<MappedItem>;
  using Strangers = std::map<std::string, std::deque<Oid>>;  // by state

  [[nodiscard]] FoundItems Look() const;
  [[nodiscard]] Strangers StrangersAmong(const FoundItems& found) const;
  bool AdoptAmong(const FoundItems& found);
  bool SortOut(const FoundItems& found);
  void Adopt(MappedItem item, Oid oid);
  void DeleteSurplus();

  const ConnectionOptions& connection_;
  Mapping& mapping_;
  const std::chrono::milliseconds quiet_;
  const Surplus twice_;
  std::map<std::string, Items> missing_;             // by state
  std::map<std::string, std::vector<Oid>> surplus_;  // to be deleted, by the name of the kind
  std::size_t deleted_ = 0;
};

}  // namespace desktop
