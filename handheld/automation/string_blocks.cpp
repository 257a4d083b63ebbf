#include "handheld/automation/string_blocks.h"

namespace ce::host {
namespace {

#if defined(__SANITIZE_ADDRESS__)
#define CE_WATCHES_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CE_WATCHES_MEMORY 1
#endif
#endif

#ifdef CE_WATCHES_MEMORY
constexpr unsigned kMostKept = 0;  // so that the use of a freed string is seen
#else
constexpr unsigned kMostKept = 16;
#endif

constinit thread_local bool t_begun = false;

}  // namespace

// Gives back what the thread keeps when it ends.
class StringBlocks::Keeper {
 public:
  Keeper() { t_mostKept = kMostKept; }
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;
  ~Keeper() {
    t_mostKept = 0;
    for (FreeList& list : t_free) {
      while (list.first) std::free(std::exchange(list.first, list.first->next));
    }
  }
};

void StringBlocks::FreeOrBegin(void* block) {
  std::free(block);
  if (!std::exchange(t_begun, true)) thread_local const Keeper keeper;
}

}  // namespace ce::host
