#include "handheld/base/com_object.h"

namespace ce::host {
namespace {

std::atomic<LONG> g_liveObjects{0};

}  // namespace

LONG LiveComObjects() {
  return g_liveObjects;
}

namespace detail {
void CountObject(LONG change) {
  g_liveObjects += change;
}
}  // namespace detail

}  // namespace ce::host
