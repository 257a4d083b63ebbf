// Which identifiers have been seen, in memory that does not grow with those that follow each other.
#pragma once

#include <iterator>
#include <map>

#include "desktop/wire/xml_records.h"

namespace desktop {

class OidSet {
 public:
  // False when it is in the set already.
  bool Insert(Oid oid) {
    const auto after = lastByFirst_.upper_bound(oid);
    const auto before = after == lastByFirst_.begin() ? lastByFirst_.end() : std::prev(after);
    if (before != lastByFirst_.end() && oid <= before->second) return false;
    Oid last = oid;
    if (after != lastByFirst_.end() && after->first - 1 == oid) {
      last = after->second;
      lastByFirst_.erase(after);
    }
    if (before != lastByFirst_.end() && before->second + 1 == oid) {
      before->second = last;
    } else {
      lastByFirst_.emplace(oid, last);
    }
    return true;
  }

  [[nodiscard]] bool Contains(Oid oid) const {
    const auto after = lastByFirst_.upper_bound(oid);
    return after != lastByFirst_.begin() && oid <= std::prev(after)->second;
  }

 private:
  std::map<Oid, Oid> lastByFirst_;  // of those that follow each other
};

}  // namespace desktop
