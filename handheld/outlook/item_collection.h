// The folder and the collection of its items.
#pragma once

#include "handheld/outlook/item_kind.h"
#include "handheld/outlook/session.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

// The object starts with the caller's reference.
IFolder* MakeFolder(const SessionPtr& session, const ItemKind& kind);

}  // namespace ce::host
