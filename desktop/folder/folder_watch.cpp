#include "desktop/folder/folder_watch.h"

#include <fmt/format.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "common/text/text.h"
#include "desktop/folder/desk_reader.h"

namespace desktop {
namespace {

// A file that is still being written counts when it is closed, or by the name that it gets.
constexpr unsigned kWatched = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                              IN_ONLYDIR | IN_DONT_FOLLOW;

}  // namespace

FolderWatch::FolderWatch(std::filesystem::path root, const DeskParts& parts)
    : root_(std::move(root)), parts_(parts), fd_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  if (fd_ < 0) {
    throw files::Error(fmt::format("cannot watch {}: {}", root_.string(), std::strerror(errno)));
  }
}

FolderWatch::~FolderWatch() {
  close(fd_);
}

bool FolderWatch::WatchDirectory(const std::string& subfolder) {
  const std::filesystem::path path = root_ / subfolder;
  const int watch = inotify_add_watch(fd_, path.c_str(), kWatched);
  if (watch >= 0) return subfolders_.insert_or_assign(watch, subfolder).second;
  if (errno == ENOENT || errno == ENOTDIR || errno == EACCES) return false;
  throw files::Error(fmt::format("cannot watch {}: {}", path.string(), std::strerror(errno)));
}

bool FolderWatch::Watch() {
  bool isNew = WatchDirectory({});
  for (const std::string_view subfolder : {kContactsFolder, kCalendarFolder, kTasksFolder}) {
    const bool wanted = subfolder == kContactsFolder ? parts_.contacts : parts_.calendar;
    if (wanted && WatchDirectory(std::string(subfolder))) isNew = true;
  }
  return isNew;
}

bool FolderWatch::Matters(int watch, unsigned what, const char* name) {
  if ((what & IN_Q_OVERFLOW) != 0) return true;
  const auto known = subfolders_.find(watch);
  if (known == subfolders_.end()) return false;
  if ((what & IN_IGNORED) != 0) {
    subfolders_.erase(known);  // with its directory; its number may be given again
    return false;
  }
  const std::string_view file = name;
  if (known->second.empty()) {
    return (parts_.contacts && file == kContactsFolder) ||
           (parts_.calendar && (file == kCalendarFolder || file == kTasksFolder));
  }
  const std::string extension = std::filesystem::path(file).extension().string();
  return !file.starts_with('.') && text::EqualsNoCase(extension, ExtensionOf(known->second));
}

bool FolderWatch::TakeChanges() {
  bool changed = false;
  alignas(inotify_event) char buffer[16 * 1024];
  for (;;) {
    const ssize_t got = read(fd_, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return changed;
    for (const char* at = buffer; at < buffer + got;) {
      const auto& event = *reinterpret_cast<const inotify_event*>(at);
      if (Matters(event.wd, event.mask, event.len > 0 ? event.name : "")) changed = true;
      at += sizeof event + event.len;
    }
  }
}

}  // namespace desktop
