// The folder in which a desk's programs keep people and dates: contacts/ with a .vcf a person,
// calendar/ and tasks/ with an .ics an item, a series and its exceptions being one. Files may hold
// several items, and .ics files of either subfolder events and tasks.
//
// Other programs read and write there at any time. Hidden files, links and files of other kinds are
// left alone, and nothing outside of the folder is ever read or written. Every failure of the file
// system throws files::Error.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/files/error.h"
#include "desktop/folder/desk_item.h"

namespace desktop {

// The item is no longer as it was read.
class FileChanged : public files::Error {
 public:
  using files::Error::Error;
};

struct DeskParts {
  bool contacts = true;
  bool calendar = true;  // events and tasks
};

struct DeskContents {
  DeskFiles files;
  std::vector<DeskNotice> notices;  // about the files that were read this time
  std::size_t filesRead = 0;
};

struct DeskEdit {
  DeskItem item;           // as it was read
  std::optional<Item> to;  // nothing to remove it
};

struct DeskOutcome {
  // The item is no longer as it was read, or cannot be edited; its file stays as it is.
  bool refused = false;
  // As it now reads: with values that had no place before, where one has become free. As it was
  // when it was refused or removed.
  DeskItem item;
  // What the file cannot say, a line each; why it was refused.
  std::vector<std::string> losses;
};

class DeskFolder {
 public:
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  // The zone is that of the items' wall-clock times.
  DeskFolder(std::filesystem::path root, calendar::Zone zone,
             Clock clock = std::chrono::system_clock::now);

  const std::filesystem::path& root() const { return root_; }
  // Makes the folder and its subfolders, as far as they are missing, for the owner alone.
  void Make() const;

  // What the folder holds. Files that are as they were in `known`, an earlier call's, are not read
  // again; so are all of parts that are not asked for. A file that cannot be read, or is cut off,
  // is noticed and has the items that it had.
  DeskContents Read(const DeskParts& parts, DeskFiles known) const;
  // The files that it would read, by their paths below the folder, with what tells whether they are
  // as they were: empty where that cannot be told yet.
  std::map<std::string, std::string> Stamps() const;

  // In a file of its own, which is named after the UID. An item without one gets one.
  DeskOutcome Add(Item item) const;

  // Edits each file once, for all edits of it together. What is removed goes to `trash`, under the
  // name that it had below the folder, or a free one like it.
  std::vector<DeskOutcome> Edit(std::span<const DeskEdit> edits,
                                const std::filesystem::path& trash) const;
  // One alone. Throw FileChanged when it is refused.
  DeskOutcome Change(const DeskItem& item, const Item& to) const;
  void Remove(const DeskItem& item, const std::filesystem::path& trash) const;

 private:
  std::filesystem::path root_;
  calendar::Zone zone_;
  Clock clock_;
};

}  // namespace desktop
