// Visits the contacts of a handheld one at a time.
#pragma once

#include <cstdint>
#include <functional>

#include "formats/contact.h"
#include "maintenance/session.h"

namespace maintenance {

// In the store's order, from one snapshot. Throws StatusError.
void ForEachContact(Session& session,
                    const std::function<void(std::uint32_t oid, const formats::Contact&)>& visit);

}  // namespace maintenance
