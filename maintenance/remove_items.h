// Removes items of any kind.
#pragma once

#include <cstdint>
#include <vector>

#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids, const Report& report);

}  // namespace maintenance
