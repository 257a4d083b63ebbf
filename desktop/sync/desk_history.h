// What the desk's files held before each run: history/desk.db, each content once for as many runs
// as it was the same.
//
// It holds what people wrote: for its owner alone. Every failure throws Error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "desktop/folder/desk_folder.h"
#include "desktop/sync/database.h"

namespace desktop {

class DeskHistory {
 public:
  explicit DeskHistory(const std::filesystem::path& path, Database::Open open);

  // What the folder holds now is what it held before the run of that time, the last one.
  void Save(const std::string& time, const DeskFolder& folder);

  // The files before that run, by their names below the folder. Two runs with the same content of a
  // file have the same number for it.
  [[nodiscard]] std::map<std::string, std::int64_t> Before(const std::string& time) const;
  [[nodiscard]] std::string BytesOf(std::int64_t number) const;

  // Those of all other times are forgotten, with what no other needs.
  void Keep(const std::set<std::string>& times);

 private:
  struct Kept {
    std::int64_t number = 0;
    std::string stamp;
  };
  [[nodiscard]] std::map<std::string, Kept> Latest() const;

  Database database_;
};

}  // namespace desktop
