#include "handheld/base/com_object.h"

#include <mutex>

namespace ce::host {
namespace {

// Never destroyed: an object may end after static ones have.
struct Groups {
  std::mutex lock;
  ObjectGroup* first = nullptr;
};

Groups& AllGroups() {
  static Groups* const groups = new Groups;
  return *groups;
}

}  // namespace

ObjectGroup::ObjectGroup() {
  Groups& groups = AllGroups();
  const std::lock_guard guard(groups.lock);
  next_ = groups.first;
  if (next_) next_->previous_ = this;
  groups.first = this;
}

ObjectGroup::~ObjectGroup() {
  Groups& groups = AllGroups();
  const std::lock_guard guard(groups.lock);
  (previous_ ? previous_->next_ : groups.first) = next_;
  if (next_) next_->previous_ = previous_;
}

LONG LiveComObjects() {
  Groups& groups = AllGroups();
  const std::lock_guard guard(groups.lock);
  LONG objects = CountedAlive::g_count;
  for (const ObjectGroup* group = groups.first; group; group = group->next_) {
    objects += group->count();
  }
  return objects;
}

}  // namespace ce::host
