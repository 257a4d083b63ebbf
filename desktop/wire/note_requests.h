// Notes and the formats that the handheld converts them between: one request each. Those that ask
// throw Error when the handheld does not do it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "desktop/wire/connection.h"

namespace desktop {

inline constexpr std::string_view kConvertFromFile = "CVCeConvertFromFile";
inline constexpr std::string_view kConvertToFile = "CVCeConvertToFile";

// The wire's numbers.
enum class NoteFormat : std::uint32_t {
  kText = 1,  // in the handheld's 8-bit code page
  kRichText = 2,
  kUnicode = 17,  // UTF-16LE without a mark
  kInk = 67586,   // the handheld's own
};

// By the extension of the path: txt, rtf, unicode or pwi. The handheld knows them in small letters
// only; nothing for any other.
std::optional<NoteFormat> FormatOfDevicePath(std::string_view path);
// The same in any letter case.
std::optional<NoteFormat> FormatOfLocalPath(std::string_view path);

void RequireInk(const ConnectionOptions& connection);

// How many bytes of a note fit into the one request that sends it to this path.
std::size_t NoteRoom(std::string_view devicePath);

// The note in this format.
std::string FetchNote(const ConnectionOptions& connection, std::string_view devicePath,
                      NoteFormat format);
// Puts the note, which is in this format and for which there must be room, into the file in the
// format of its path. An empty one makes the file empty; when that fails, it is not told.
void StoreNote(const ConnectionOptions& connection, std::string_view devicePath, NoteFormat format,
               std::string_view note);

}  // namespace desktop
