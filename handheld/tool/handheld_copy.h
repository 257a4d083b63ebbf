// A handheld taken apart for a copy of it, and a directory in which one is put together.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "common/files/tar.h"
#include "handheld/base/unique_fd.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// A directory for the owner alone, which goes with all that is in it unless it is kept. What was
// left there goes when the next one is made beside it.
class WorkDirectory {
 public:
  // Throws files::Error.
  explicit WorkDirectory(const std::filesystem::path& parent);
  ~WorkDirectory();
  WorkDirectory(const WorkDirectory&) = delete;
  WorkDirectory& operator=(const WorkDirectory&) = delete;

  std::filesystem::path path() const { return claimed_ / "work"; }
  // Puts it on the disk and gives it this name, in the place of an empty directory of that name.
  void KeepAs(const std::filesystem::path& name);

 private:
  std::filesystem::path claimed_;
  ce::host::UniqueFd claim_;  // while it lives, nobody takes that for left behind
};

// Removes the work directories that were left in `parent` by processes that were killed.
void RemoveAbandoned(const std::filesystem::path& parent);

// The place where a new handheld's directory will stand. Throws files::Error when there is
// something in the way, and then removes what was left there.
std::filesystem::path ParentOfNew(const std::filesystem::path& directory);

// A copy of the store as it is at one moment. False when there is no store yet. Throws
// files::Error.
bool CopyStore(Session& session, const std::filesystem::path& to);

// Calls `visit` with the entry "files" and with all that is below it, directories before what they
// hold. What is another volume's, and what is neither file nor directory nor link, is left out and
// named; false then.
bool ForEachFile(Session& session, const Report& report,
                 const std::function<void(const files::ArchiveEntry&)>& visit);

}  // namespace tool
