// The files of the system's zone database.
//
// The database's directory is TZDIR's when that is set, else the usual one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace calendar {

// Of a zone's form only: not absolute, no "..", nothing but letters, digits and "_-+/".
bool ValidZoneName(std::string_view name);

// What the file of a zone holds, unexamined; nothing when there is none, or the name is invalid.
std::optional<std::string> ReadZoneFile(std::string_view name);

// Every zone of the database, sorted.
std::vector<std::string> ListZones();

// The host's own zone: what /etc/localtime links to or /etc/timezone says, else "UTC". `etc` is
// where the two are looked for.
std::string HostZoneName(const std::filesystem::path& etc = "/etc");

}  // namespace calendar
