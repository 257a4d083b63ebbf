#include "handheld/tool/import_files.h"

#include <fmt/core.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "common/files/standard_streams.h"
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
  Imports(Session& session, const ImportOptions& options, const Report& to)
      : overflow(options.overflow),
        report(to, options.dryRun),
        items(session, options, report),
        messages(session, options, report),
        calls(session, options, report) {}
  const formats::Overflow overflow;
  ImportReport report;
  ItemImport items;
  MessageImport<formats::TextMessage> messages;
  MessageImport<formats::Call> calls;
};

void AddNotices(const std::vector<formats::Notice>& notices, ImportReport& report) {
  for (const formats::Notice& notice : notices) report.Notice(notice.line, notice.text);
}

// These answer how many records the bytes hold.
std::size_t ImportCards(std::string_view bytes, Imports& imports) {
  const formats::VCardFile cards = formats::ReadVCards(bytes, imports.overflow);
  imports.report.ExpectRecords(cards.contacts.size());
  imports.report.ExpectNoticesOf({"contact", "contacts"});
  AddNotices(cards.notices, imports.report);
  for (const formats::ParsedContact& parsed : cards.contacts) {
    imports.report.BeginRecord();
    AddNotices(parsed.notices, imports.report);
    imports.items.Import(parsed.line, parsed.contact);
  }
  return cards.contacts.size();
}

std::size_t ImportCalendar(std::string_view bytes, const calendar::Zone& zone, Imports& imports) {
  const formats::CalendarFile calendar = formats::ReadICalendar(bytes, zone);
  const std::size_t records = calendar.appointments.size() + calendar.tasks.size();
  imports.report.ExpectRecords(records);
  AddNotices(calendar.notices, imports.report);
  for (const formats::ParsedAppointment& parsed : calendar.appointments)
    imports.items.Import(parsed.line, parsed.appointment);
  for (const formats::ParsedTask& parsed : calendar.tasks)
    imports.items.Import(parsed.line, parsed.task);
  return records;
}

// Backups may be large, with the pictures that were in the messages: they are read piece by piece.
std::size_t ImportMessages(FileKind kind, std::istream& stream, Imports& imports) {
  std::size_t records = 0;
  imports.messages.Begin();
  imports.calls.Begin();
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
  for (const formats::Notice& notice : notices)
    imports.report.SummedNotice(notice.line, notice.text);
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

std::size_t ImportRecords(Session& session, FileKind kind, std::istream& stream, Imports& imports) {
  if (kind == FileKind::kBackup || kind == FileKind::kJsonLines)
    return ImportMessages(kind, stream, imports);
  const std::string bytes = ReadRest(stream);
  return kind == FileKind::kCards ? ImportCards(bytes, imports)
                                  : ImportCalendar(bytes, session.Zone(), imports);
}

// What can be read again from its beginning is not held in memory.
std::size_t ImportStream(Session& session, const fs::path& file, std::istream& stream,
                         Imports& imports, FileKind& kind) {
  std::string beginning = ReadBeginning(stream);
  kind = FileKindOf(file, beginning);
  stream.clear();
  if (!files::IsStandard(file) && stream.seekg(0))
    return ImportRecords(session, kind, stream, imports);
  stream.clear();
  std::istringstream whole(std::move(beginning) + ReadRest(stream));
  return ImportRecords(session, kind, whole, imports);
}

// False when nothing could be taken from the file.
bool ImportFile(Session& session, const fs::path& file, Imports& imports) {
  std::error_code none;
  std::ifstream opened;
  const bool standard = files::IsStandard(file);
  if (!standard) opened.open(file, std::ios::binary);
  imports.report.Begin(file);
  if (!opened || fs::is_directory(file, none)) {
    imports.report.EndInProblem(file.string() + " cannot be read");
    return false;
  }
  FileKind kind = FileKind::kCards;
  if (ImportStream(session, file, standard ? std::cin : opened, imports, kind) > 0) return true;
  imports.report.EndInProblem(fmt::format("{}: no {} in it", file.string(), NameOf(kind)));
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
    try {
      if (!ImportFile(session, file, imports)) {
        ++failed;
        continue;
      }
      imports.items.Commit();
    } catch (const StatusError& failure) {
      imports.report.EndInProblem(fmt::format(
          "{}: {}; not all of it is stored: import the file again", file.string(), failure.what()));
      return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
    }
    imports.report.End();
    done += imports.report.tally().done();
    failed += imports.report.tally().failed;
  }
  if (failed == 0) return Outcome::kDone;
  return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
}

}  // namespace tool
