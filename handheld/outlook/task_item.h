// Makers of tasks (ITask).
#pragma once

#include <cstdint>
#include <memory>

#include "handheld/outlook/session.h"
#include "platform/com.h"

namespace ce::host {

class ItemList;

// As ItemKind::make and ItemKind::load ask for.
//
// Deleting a task that has already gone, or was never saved, succeeds; saving one that has gone
// since it was read fails with E_INVALIDARG.
HRESULT MakeTask(const SessionPtr& session, IDispatch** item);
HRESULT LoadTask(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                 std::uint32_t oid, IDispatch** item);

}  // namespace ce::host
