// The pages of a store's file that say what tables there are.
#pragma once

#include <filesystem>

namespace ce::host {

// They lie at the same places in every store that was made in this format: those of the damaged one
// become those of the fresh one, and its free pages are forgotten. Whether that could be done. The
// damaged one must not be open.
bool MendSchema(const std::filesystem::path& damaged, const std::filesystem::path& fresh);

}  // namespace ce::host
