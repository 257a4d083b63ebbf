#include "desktop/commands/commands_convert.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/files/atomic_file.h"
#include "common/files/standard_streams.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "desktop/commands/result.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::string_view kUnicodeMark = "\xFF\xFE";

struct LocalNote {
  std::string bytes;
  NoteFormat format = NoteFormat::kText;
};

// Most texts of today are, and nothing but strange characters would tell.
void WarnOfUtf8(const LocalNote& note, const std::string& name, const Console& console) {
  const bool ascii = std::all_of(note.bytes.begin(), note.bytes.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (note.format != NoteFormat::kText || ascii || !text::IsValidUtf8(note.bytes)) return;
  console.err
      << text::Shown(name)
      << ": seems to be UTF-8; the handheld takes it for text in its own 8-bit characters\n";
}

// Throws Error for one that does not fit into a request to that path.
LocalNote ReadLocalNote(const ConvertOptions& options, std::string_view devicePath,
                        const Console& console) {
  const std::string name = options.file->string();
  const std::optional<NoteFormat> format = options.from ? options.from : FormatOfLocalPath(name);
  if (!format) {
    throw Error(
        fmt::format("{}: a note's name ends in .pwi, .rtf, .txt or .unicode; say --from "
                    "for another",
                    name));
  }
  LocalNote note{files::ReadWholeInput(*options.file), *format};
  // The handheld would take the mark for a character of the note.
  if (note.format == NoteFormat::kUnicode && note.bytes.starts_with(kUnicodeMark)) {
    note.bytes.erase(0, kUnicodeMark.size());
  }
  const std::size_t room = NoteRoom(devicePath);
  if (note.bytes.size() > room) {
    throw Error(
        fmt::format("{} is too large: a note travels to the handheld in one request, which has "
                    "room for {} bytes of it, and it has {}; nothing has been sent",
                    name, room, note.bytes.size()));
  }
  WarnOfUtf8(note, name, console);
  return note;
}

void WriteOut(const ConvertOptions& options, const std::string& bytes, const Console& console) {
  if (options.output) {
    files::AtomicFile file(*options.output);
    file.Write(bytes);
    file.Commit();
    const std::string name = options.output->string();
    TellResult(console, {{"file", name}, {"bytes", bytes.size()}},
               fmt::format("{}: {} bytes", name, bytes.size()));
  } else {
    console.out << bytes;
    FlushOutput(console);
  }
}

// Whether the note is not there any more. Not to be interrupted: the note is somebody's own.
bool EmptyScratch(const ConnectionOptions& connection, const Console& console) {
  ConnectionOptions patient = connection;
  patient.interruptFd = -1;
  try {
    StoreNote(patient, kScratchNote, NoteFormat::kText, {});
    return true;
  } catch (const Error& problem) {
    TellProblem(console, fmt::format("the note still lies in {} on the handheld: {}", kScratchNote,
                                     problem.what()));
    return false;
  }
}

int ConvertThere(const ConnectionOptions& connection, const ConvertOptions& options,
                 const Console& console) {
  const LocalNote note = ReadLocalNote(options, kScratchNote, console);
  RequireInk(connection);
  std::string converted;
  bool emptied = false;
  try {
    StoreNote(connection, kScratchNote, note.format, note.bytes);
    converted = FetchNote(connection, kScratchNote, *options.format);
    emptied = EmptyScratch(connection, console);
  } catch (...) {
    EmptyScratch(connection, console);
    throw;
  }
  WriteOut(options, converted, console);
  return emptied ? kDone : kPartlyDone;
}

NoteFormat RequireNoteName(const std::string& devicePath) {
  const std::optional<NoteFormat> format = FormatOfDevicePath(devicePath);
  if (format) return *format;
  throw Error(fmt::format(
      "{}: a note's name on the handheld ends in .pwi, .rtf, .txt or .unicode, in small "
      "letters",
      devicePath));
}

int FetchFrom(const std::string& devicePath, const ConnectionOptions& connection,
              const ConvertOptions& options, const Console& console) {
  RequireNoteName(devicePath);
  RequireInk(connection);
  WriteOut(options, FetchNote(connection, devicePath, *options.format), console);
  return kDone;
}

int StoreAt(const std::string& devicePath, const ConnectionOptions& connection,
            const ConvertOptions& options, const Console& console) {
  const NoteFormat format = RequireNoteName(devicePath);
  const LocalNote note = ReadLocalNote(options, devicePath, console);
  RequireInk(connection);
  StoreNote(connection, devicePath, note.format, note.bytes);
  // Of an empty one it is not told whether it could be made.
  if (note.bytes.empty()) FetchNote(connection, devicePath, format);
  const std::string name = options.file->string();
  TellResult(console, {{"file", name}, {"path", devicePath}},
             fmt::format("{}: is {} on the handheld now", name, devicePath));
  return kDone;
}

}  // namespace

int Convert(const ConnectionOptions& connection, const ConvertOptions& options,
            const Console& console) {
  return RunGuarded(console, [&] {
    if (options.devicePath) return FetchFrom(*options.devicePath, connection, options, console);
    if (options.toDevice) return StoreAt(*options.toDevice, connection, options, console);
    return ConvertThere(connection, options, console);
  });
}

}  // namespace desktop
