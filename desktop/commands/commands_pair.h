// "pair": a folder and a handheld under a name; and what commands take from it.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "common/calendar/zone.h"
#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/connection.h"

namespace desktop {

// What is left out stays as the pair has it.
struct PairOptions {
  std::optional<std::string> name;  // nothing to be told of all
  std::optional<Target> address;
  std::optional<std::filesystem::path> folder;
  std::optional<calendar::Zone> zone;
  std::optional<std::string> country;
  std::optional<std::set<RecordKind>> kinds;
  std::optional<std::string> policy;
};

// Writes the pair, or tells of it when there is nothing to change. Asks for the zone of a new one
// on a terminal; elsewhere it must be given, as the folder must. kUsage when something is missing.
int SetPair(const ConnectionOptions& connection, const PairOptions& options,
            const Console& console);

// Where a command goes, as far as the command line says.
struct PlaceOptions {
  std::optional<std::string> pair = {};
  bool addressGiven = false;
  std::optional<calendar::Zone> zone = {};
  std::optional<std::string> country = {};
};

// The zone of the handheld and the country of its numbers: as given, else those of the pair that is
// named, or of the one with the connection's address; the zone is this computer's else, which is a
// guess. A pair that is named gives the address, too, unless there is one.
struct Place {
  calendar::Zone zone;
  bool zoneIsGuessed = false;
  std::optional<std::string> country = {};
};
// Throws Error when there is no such pair, or the pairs cannot be read.
Place ChoosePlace(const PlaceOptions& options, ConnectionOptions& connection);

// To be said when times are read or written in such a zone; once.
void TellGuessedZone(const calendar::Zone& zone, const Console& console);

}  // namespace desktop
