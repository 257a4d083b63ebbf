// Where a folder's handheld is, as its synchronisations remember it.
#pragma once

#include <filesystem>
#include <string>

namespace desktop {

// What each is called among the notes of Memory.
inline constexpr char kZoneNote[] = "zone";
inline constexpr char kCountryNote[] = "country";

struct RememberedPlace {
  std::string zone;     // empty for none
  std::string country;  // as well
};

// Nothing of a folder that has not been synchronised. Changes nothing there. Throws Error when it
// cannot be understood, or while a synchronisation runs.
RememberedPlace RecallPlace(const std::filesystem::path& folder);

}  // namespace desktop
