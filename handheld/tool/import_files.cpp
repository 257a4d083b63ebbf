#include "handheld/tool/import_files.h"

#include <fmt/core.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/json/message_json.h"
#include "common/formats/vcard/vcard.h"
#include "common/text/text.h"
#include "handheld/tool/message_import.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// What FileKindOf needs of a file.
constexpr std::size_t kFileKindBytes = 64 << 10;

// The first character that is neither a byte-order mark nor blank.
char FirstSign(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first == bytes.npos ? '\0' : bytes[first];
}

// One for each kind of record, for all files.
struct Imports {
  Imports(Session& session, const ImportOptions& options, const Report& report)
      : items(session, options, report),
        messages(session, options, report),
        calls(session, options, report) {}
  ItemImport items;
  MessageImport<formats::TextMessage> messages;
  MessageImport<formats::Call> calls;
};

void AddNotices(const std::vector<formats::Notice>& notices, const fs::path& file,
                ItemImport& import, ImportTally& tally) {
  for (const formats::Notice& notice : notices)
    import.Notice({file, notice.line}, notice.text, tally);
}

// These answer how many records the bytes hold.
std::size_t ImportCards(const fs::path& file, std::string_view bytes, ItemImport& import,
                        ImportTally& tally) {
  const formats::VCardFile cards = formats::ReadVCards(bytes);
  AddNotices(cards.notices, file, import, tally);
  for (const formats::ParsedContact& parsed : cards.contacts) {
    AddNotices(parsed.notices, file, import, tally);
    import.Import({file, parsed.line}, parsed.contact, tally);
  }
  return cards.contacts.size();
}

std::size_t ImportCalendar(const fs::path& file, std::string_view bytes, const calendar::Zone& zone,
                           ItemImport& import, ImportTally& tally) {
  const formats::CalendarFile calendar = formats::ReadICalendar(bytes, zone);
  AddNotices(calendar.notices, file, import, tally);
  for (const formats::ParsedAppointment& parsed : calendar.appointments)
    import.Import({file, parsed.line}, parsed.appointment, tally);
  for (const formats::ParsedTask& parsed : calendar.tasks)
    import.Import({file, parsed.line}, parsed.task, tally);
  return calendar.appointments.size() + calendar.tasks.size();
}

// Backups may be large, with the pictures that were in the messages: they are read piece by piece.
std::size_t ImportMessages(const fs::path& file, FileKind kind, std::istream& stream,
                           Imports& imports, ImportTally& tally) {
  std::size_t records = 0;
  imports.messages.Begin(file, tally);
  imports.calls.Begin(file, tally);
  const formats::ItemSink sink = {[&](const formats::TextMessage& message, std::size_t line) {
                                    ++records;
                                    imports.messages.Import(message, line);
                                  },
                                  [&](const formats::Call& call, std::size_t line) {
                                    ++records;
                                    imports.calls.Import(call, line);
                                  }};
  const auto notices = kind == FileKind::kBackup ? formats::ReadBackup(stream, sink)
                                                 : formats::ReadJsonLines(stream, sink);
  AddNotices(notices, file, imports.items, tally);
  imports.messages.Finish();
  imports.calls.Finish();
  return records;
}

std::string ReadBeginning(std::istream& stream) {
  std::string bytes(kFileKindBytes, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

std::string ReadRest(std::istream& stream) {
  return {std::istreambuf_iterator<char>(stream), {}};
}

const char* NameOf(FileKind kind) {
  if (kind == FileKind::kCards) return "contacts";
  return kind == FileKind::kCalendar ? "appointments or tasks" : "messages or calls";
}

std::size_t ImportRecords(Session& session, const fs::path& file, FileKind kind,
                          std::istream& stream, Imports& imports, ImportTally& tally) {
  if (kind == FileKind::kBackup || kind == FileKind::kJsonLines)
    return ImportMessages(file, kind, stream, imports, tally);
  const std::string bytes = ReadRest(stream);
  return kind == FileKind::kCards
             ? ImportCards(file, bytes, imports.items, tally)
             : ImportCalendar(file, bytes, session.Zone(), imports.items, tally);
}

// False when nothing could be taken from the file.
bool ImportFile(Session& session, const fs::path& file, const Report& report, Imports& imports,
                ImportTally& tally) {
  std::error_code none;
  std::ifstream stream(file, std::ios::binary);
  if (!stream || fs::is_directory(file, none)) {
    Tell(report.err, "corvane-device: {} cannot be read\n", file.string());
    return false;
  }
  std::string beginning = ReadBeginning(stream);
  const FileKind kind = FileKindOf(file, beginning);
  stream.clear();
  std::size_t records = 0;
  if (stream.seekg(0)) {
    records = ImportRecords(session, file, kind, stream, imports, tally);
  } else {  // a pipe
    stream.clear();
    std::istringstream whole(std::move(beginning) + ReadRest(stream));
    records = ImportRecords(session, file, kind, whole, imports, tally);
  }
  if (records > 0) return true;
  Tell(report.err, "corvane-device: {}: no {} in it\n", file.string(), NameOf(kind));
  return false;
}

}  // namespace

FileKind FileKindOf(const std::filesystem::path& file, std::string_view beginning) {
  const std::string extension = file.extension().string();
  const auto isNamed = [&](std::string_view name) { return text::EqualsNoCase(extension, name); };
  if (isNamed(".vcf")) return FileKind::kCards;
  if (isNamed(".ics")) return FileKind::kCalendar;
  const char first = FirstSign(beginning);
  if (first == '<') return FileKind::kBackup;
  if (first == '{') return FileKind::kJsonLines;
  if (formats::LooksLikeICalendar(beginning)) return FileKind::kCalendar;
  if (isNamed(".xml")) return FileKind::kBackup;
  if (isNamed(".json") || isNamed(".jsonl")) return FileKind::kJsonLines;
  return FileKind::kCards;
}

Outcome ImportFiles(Session& session, const std::vector<fs::path>& files,
                    const ImportOptions& options, const Report& report) {
  Imports imports(session, options, report);
  std::size_t done = 0;
  std::size_t failed = 0;
  for (const fs::path& file : files) {
    ImportTally tally;
    try {
      if (!ImportFile(session, file, report, imports, tally)) {
        ++failed;
        continue;
      }
      imports.items.Commit();
    } catch (const StatusError& failure) {
      Tell(report.err, "corvane-device: {}: {}; not all of it is stored: import the file again\n",
           file.string(), failure.what());
      return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
    }
    Tell(report.out, "{}: {}{} added, {} changed, {} unchanged, {} failed; {} notices\n",
         file.string(), options.dryRun ? "would be " : "", tally.added, tally.changed,
         tally.unchanged, tally.failed, tally.notices);
    done += tally.done();
    failed += tally.failed;
  }
  if (failed == 0) return Outcome::kDone;
  return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
}

}  // namespace tool
