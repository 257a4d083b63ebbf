#include "desktop/wire/note_requests.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "common/text/little_endian.h"
#include "common/text/text.h"
#include "desktop/wire/device_requests.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

struct ExtensionRow {
  std::string_view extension;
  NoteFormat format;
};
constexpr ExtensionRow kExtensions[] = {{"pwi", NoteFormat::kInk},
                                        {"rtf", NoteFormat::kRichText},
                                        {"txt", NoteFormat::kText},
                                        {"unicode", NoteFormat::kUnicode}};

constexpr std::int32_t kRefused = static_cast<std::int32_t>(0x80004005);
constexpr std::int32_t kNoFile[] = {2, 3, 6};  // the last of a file that could not be opened

template <typename Equal>
std::optional<NoteFormat> FormatOf(std::string_view path, const Equal& equal) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos) return std::nullopt;
  const auto* const row = std::find_if(
      std::begin(kExtensions), std::end(kExtensions),
      [&](const ExtensionRow& each) { return equal(each.extension, path.substr(dot + 1)); });
  return row == std::end(kExtensions) ? std::nullopt : std::optional(row->format);
}

bool IsNoFile(std::int32_t status) {
  return std::find(std::begin(kNoFile), std::end(kNoFile), status) != std::end(kNoFile);
}

}  // namespace

std::optional<NoteFormat> FormatOfDevicePath(std::string_view path) {
  return FormatOf(path, std::equal_to<>());
}

std::optional<NoteFormat> FormatOfLocalPath(std::string_view path) {
  return FormatOf(path, text::EqualsNoCase);
}

void RequireInk(const ConnectionOptions& connection) {
  if (!AskHasInk(connection)) throw Error("the handheld has no RichInk control to convert notes");
}

std::size_t NoteRoom(std::string_view devicePath) {
  const std::size_t room = InputRoom(kConvertToFile);
  const std::size_t taken = 8 + DevicePathBytes(devicePath).size();
  return room < taken ? 0 : room - taken;
}

std::string FetchNote(const ConnectionOptions& connection, std::string_view devicePath,
                      NoteFormat format) {
  std::string input;
  text::PutWord(input, static_cast<std::uint32_t>(format));
  input += DevicePathBytes(devicePath);
  Reply reply = Invoke(connection, kConvertFromFile, input);
  if (IsNoFile(reply.status)) {
    throw Error(fmt::format("there is no file {} on the handheld, or it cannot be opened: {}",
                            devicePath, StatusText(reply.status)));
  }
  if (reply.status == kRefused) {
    throw Error(fmt::format("the handheld cannot convert {}, which is damaged or too large: {}",
                            devicePath, StatusText(reply.status)));
  }
  if (reply.status != 0) {
    throw Error(
        fmt::format("the handheld did not convert {}: {}", devicePath, StatusText(reply.status)));
  }
  return std::move(reply.output);
}

void StoreNote(const ConnectionOptions& connection, std::string_view devicePath, NoteFormat format,
               std::string_view note) {
  const std::string path = DevicePathBytes(devicePath);
  std::string input;
  text::PutWord(input, static_cast<std::uint32_t>(format));
  text::PutWord(input, static_cast<std::uint32_t>(path.size()));
  input += path;
  input += note;
  const Reply reply = Invoke(connection, kConvertToFile, input);
  if (reply.status == kRefused) {
    throw Error(fmt::format("the handheld cannot convert the note, which is damaged: {}",
                            StatusText(reply.status)));
  }
  if (IsNoFile(reply.status)) {
    throw Error(fmt::format("the handheld cannot make the file {}: {}", devicePath,
                            StatusText(reply.status)));
  }
  if (reply.status != 0) {
    throw Error(fmt::format("the handheld did not take the note {}: {}", devicePath,
                            StatusText(reply.status)));
  }
}

}  // namespace desktop
