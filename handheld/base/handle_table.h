// Handles: values that stand for objects of the platform.
//
// A table hands out a value for each object and never the same one twice, so that a handle kept
// beyond its closing finds nothing rather than somebody else's object. Thread-safe.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/types.h"

namespace ce::host {

// What a handle stands for. Closing the handle drops the table's reference; calls that are under
// way keep theirs, so the object ends with the last of them.
class HandleObject {
 public:
  HandleObject() = default;
  HandleObject(const HandleObject&) = delete;
  HandleObject& operator=(const HandleObject&) = delete;
  virtual ~HandleObject() = default;
};

class HandleTable {
 public:
  // Never 0, INVALID_HANDLE_VALUE or a predefined registry key.
  HANDLE Add(std::shared_ptr<HandleObject> object);
  // Null when the handle is unknown or closed.
  std::shared_ptr<HandleObject> Find(HANDLE handle) const;
  // False when the handle is unknown or closed.
  bool Close(HANDLE handle);

 private:
  mutable std::mutex lock_;
  HANDLE next_ = 0x100;
  std::unordered_map<HANDLE, std::shared_ptr<HandleObject>> objects_;
};

// The table that CloseHandle works on: files and threads.
HandleTable& ObjectHandles();

// In the table of CloseHandle. May throw std::bad_alloc.
inline HANDLE AddHandle(std::shared_ptr<HandleObject> object) {
  return ObjectHandles().Add(std::move(object));
}

// The object of the handle when it is a `T`, else null.
template <typename T>
std::shared_ptr<T> FindHandle(HANDLE handle) {
  return std::dynamic_pointer_cast<T>(ObjectHandles().Find(handle));
}

}  // namespace ce::host
