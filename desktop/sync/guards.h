// What a synchronisation does not do without having been told that it is meant.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/pairing.h"

namespace desktop {

class Guard {
 public:
  // Both must outlive this object.
  Guard(const Memory& memory, const calendar::Zone& zone) : memory_(memory), zone_(zone) {}

  void Look(ItemKind kind, const std::vector<Pairing>& pairs);

  // A side has lost all of a kind, or more than half of ten and more; or the handheld is another
  // one. A whole message for the person; empty for no objection.
  [[nodiscard]] std::string Objection() const;

 private:
  struct Side {
    std::size_t known = 0;
    std::size_t gone = 0;  // of these
    std::size_t there = 0;
  };
  void Judge(ItemKind kind, const char* where, const Side& side);
  [[nodiscard]] bool IsAnother(const Pairing& pair) const;

  const Memory& memory_;
  const calendar::Zone& zone_;
  std::size_t recognised_ = 0;
  std::size_t others_ = 0;  // under the OIDs of what was there
  std::string losses_;
};

}  // namespace desktop
