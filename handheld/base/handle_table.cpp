#include "handheld/base/handle_table.h"

#include <utility>

namespace ce::host {

HANDLE HandleTable::Add(std::shared_ptr<HandleObject> object) {
  const std::lock_guard guard(lock_);
  // Steps of 4 pass by INVALID_HANDLE_VALUE and the predefined keys.
  const HANDLE handle = next_;
  objects_.emplace(handle, std::move(object));
  next_ += 4;
  return handle;
}

std::shared_ptr<HandleObject> HandleTable::Find(HANDLE handle) const {
  const std::lock_guard guard(lock_);
  const auto found = objects_.find(handle);
  return found == objects_.end() ? nullptr : found->second;
}

bool HandleTable::Close(HANDLE handle) {
  std::shared_ptr<HandleObject> closed;  // ends outside the lock
  const std::lock_guard guard(lock_);
  const auto found = objects_.find(handle);
  if (found == objects_.end()) return false;
  closed = std::move(found->second);
  objects_.erase(found);
  return true;
}

HandleTable& ObjectHandles() {
  // Outlives every static object whose destructor may still close a handle.
  static HandleTable* const table = new HandleTable;
  return *table;
}

}  // namespace ce::host
