#include "desktop/sync/remembered_place.h"

#include <system_error>

#include "desktop/sync/memory.h"
#include "desktop/sync/state_folder.h"

namespace desktop {

RememberedPlace RecallPlace(const std::filesystem::path& folder) {
  std::error_code error;
  if (!std::filesystem::exists(folder / kStateName, error)) return {};
  const StateFolder state(folder, StateFolder::Use::kLook);
  const Memory memory(state.memory(), state.hasHistory());
  return {memory.Note(kZoneNote), memory.Note(kCountryNote)};
}

}  // namespace desktop
