// What a folder of people's files holds, as it was read.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "desktop/merge/item.h"

namespace desktop {

struct DeskItem {
  std::filesystem::path file;  // below the folder: "contacts/anna.vcf"
  std::size_t line = 0;        // where it begins, from 1
  // What it is known by, among items of every kind, for as long as it is there: whatever becomes of
  // its content, of its UID, and of the file's name.
  std::string key;
  Item item;
};

struct DeskFile {
  // What tells whether the file is as it was; empty for one that is to be read again next time.
  std::string stamp;
  // Else it could not be read, and its items are those that were known of it.
  bool readable = true;
  std::vector<DeskItem> items;  // in the order of their lines
};

// By their paths below the folder.
using DeskFiles = std::map<std::string, DeskFile>;

enum class DeskTrouble {
  kContent,    // something of an item that a handheld cannot hold, or that was odd
  kLeftAlone,  // a file or an item that takes no part
};

struct DeskNotice {
  DeskTrouble trouble = DeskTrouble::kContent;
  std::filesystem::path file;
  std::size_t line = 0;  // 0 for the file as a whole
  std::string text;      // "PHOTO: a contact holds no pictures"
};

// "contacts/anna.vcf:12: text", as a terminal may get it.
std::string ToText(const DeskNotice& notice);

}  // namespace desktop
