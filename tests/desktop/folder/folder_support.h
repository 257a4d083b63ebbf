// A folder of people's files for one test.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/desk_folder.h"
#include "tests/support/temporary_directory.h"

namespace desktop::testing {

namespace fs = std::filesystem;

inline calendar::Zone Berlin() {
  return *calendar::Zone::Find("Europe/Berlin");
}

struct FolderTest : corvane::testing::TemporaryDirectory {
  FolderTest() { folder.Make(); }

  std::vector<std::string> Names(const fs::path& below) const {
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto& entry : fs::recursive_directory_iterator(path() / below, missing)) {
      if (!entry.is_directory()) names.push_back(fs::relative(entry.path(), path()).string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  DeskContents Contents() const { return folder.Read({}, known); }
  // Every item, in the order of their files.
  std::vector<DeskItem> Items() const {
    std::vector<DeskItem> items;
    for (const auto& [name, file] : Contents().files) {
      items.insert(items.end(), file.items.begin(), file.items.end());
    }
    return items;
  }
  DeskItem Only() const {
    std::vector<DeskItem> items = Items();
    return items.size() == 1 ? std::move(items.front()) : DeskItem();
  }

  // An hour ahead of the files, so that they are known by their stamps.
  DeskFolder folder{path(), Berlin(),
                    [] { return std::chrono::system_clock::now() + std::chrono::hours(1); }};
  fs::path trash = path() / ".corvane" / "trash";
  DeskFiles known;
};

inline std::string Card(std::string_view uid, std::string_view lines) {
  std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  if (!uid.empty()) card += "UID:" + std::string(uid) + "\r\n";
  card += lines;
  return card + "END:VCARD\r\n";
}

inline std::string Event(std::string_view uid, std::string_view lines) {
  std::string event = "BEGIN:VEVENT\r\n";
  if (!uid.empty()) event += "UID:" + std::string(uid) + "\r\n";
  event += lines;
  return event + "END:VEVENT\r\n";
}

inline std::string Calendar(std::string_view parts) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Other//EN\r\n" + std::string(parts) +
         "END:VCALENDAR\r\n";
}

inline std::vector<std::string> Texts(const std::vector<DeskNotice>& notices) {
  std::vector<std::string> texts;
  for (const DeskNotice& notice : notices) texts.push_back(ToText(notice));
  return texts;
}

}  // namespace desktop::testing
