// One file of a folder as items.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/desk_item.h"

namespace desktop {

inline constexpr std::string_view kContactsFolder = "contacts";
inline constexpr std::string_view kCalendarFolder = "calendar";
inline constexpr std::string_view kTasksFolder = "tasks";

// ".vcf" or ".ics", by what the subfolder holds.
std::string_view ExtensionOf(std::string_view subfolder);
std::string_view SubfolderOf(ItemKind kind);

struct DeskReading {
  std::vector<DeskItem> items;  // without keys, in the order of their lines
  std::vector<DeskNotice> notices;
  // Whether the file ends as one does that was written to its end.
  bool whole = true;
};

// `file` says below the folder where the bytes come from, and by its extension what they are.
DeskReading ReadDeskBytes(const std::filesystem::path& file, std::string_view bytes,
                          const calendar::Zone& zone);

// An item as a file of its own.
struct DeskText {
  std::string bytes;
  std::vector<std::string> losses;
};
DeskText TextOfItem(const Item& item, const calendar::Zone& zone);

}  // namespace desktop
