// Makers of appointments (IAppointment).
#pragma once

#include <cstdint>
#include <memory>

#include "handheld/outlook/session.h"
#include "platform/com.h"

namespace ce::host {

class ItemList;

// As ItemKind::make and ItemKind::load ask for.
//
// Deleting an appointment that has already gone, or was never saved, succeeds; saving one that has
// gone since it was read fails with E_INVALIDARG. Saving a series drops those of its exceptions
// whose days are no longer days of it.
HRESULT MakeAppointment(const SessionPtr& session, IDispatch** item);
HRESULT LoadAppointment(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                        std::uint32_t oid, IDispatch** item);

}  // namespace ce::host
