// Removes items of any kind.
#pragma once

#include <cstdint>
#include <vector>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids, const Report& report);

}  // namespace tool
