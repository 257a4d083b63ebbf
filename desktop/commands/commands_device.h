// "info", "storage", "cards" and "keys": what the handheld is, has room for and writes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/request.h"

namespace desktop {

// Lines for people, or with json one value on one line. Sizes are told in units for people and in
// bytes, in JSON in bytes alone.

// The agent's version, the handheld's language and time, whether it converts notes, and its cards.
int PrintInfo(const ConnectionOptions& connection, bool json, const Console& console);

// The room on all storage cards together, or on the volume of a directory of the handheld.
int PrintStorage(const ConnectionOptions& connection, const std::optional<std::string>& directory,
                 bool json, const Console& console);

// The storage cards: number, directory, room.
int PrintCards(const ConnectionOptions& connection, bool json, const Console& console);

// The names of the elements that records of the kind may have, in the handheld's order: one a line,
// in JSON an array of them.
int PrintKeys(const ConnectionOptions& connection, RecordKind kind, bool json,
              const Console& console);

// "0 bytes", "1 byte", "1.5 KiB", … "16.0 EiB".
std::string SizeText(std::uint64_t bytes);

// "en-US" for 0x0409; empty for a number that stands for no known language.
std::string_view LanguageTag(std::uint32_t id);

}  // namespace desktop
