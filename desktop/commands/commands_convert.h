// "convert": notes from one format into another, by the handheld's own means.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/note_requests.h"

namespace desktop {

// Where the handheld keeps a note while it converts it. Nothing that travels can delete a file: it
// stays, emptied. Two conversions at once would meet in it.
inline constexpr std::string_view kScratchNote = "\\~note.pwi";

struct ConvertOptions {
  // The note: one of these.
  std::optional<std::filesystem::path> file;
  std::optional<std::string> devicePath;
  std::optional<NoteFormat> from;  // of the file; nothing for what its extension says
  // What becomes of it: one of these. A note of the handheld can only become a format.
  std::optional<NoteFormat> format;
  std::optional<std::string> toDevice;
  std::optional<std::filesystem::path> output;  // nothing for the standard output
};

// A file travels in one request; one that is too large for that is refused before anything is sent.
// kPartlyDone when the note has been converted, and still lies in kScratchNote.
int Convert(const ConnectionOptions& connection, const ConvertOptions& options,
            const Console& console);

}  // namespace desktop
