#include "maintenance/import_files.h"

#include <fmt/core.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "formats/icalendar.h"
#include "formats/text.h"
#include "formats/vcard.h"

namespace maintenance {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> ReadFile(const fs::path& file) {
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  if (!stream || fs::is_directory(file, error)) return std::nullopt;
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

bool IsCalendar(const fs::path& file, std::string_view bytes) {
  const std::string extension = file.extension().string();
  if (formats::EqualsNoCase(extension, ".vcf")) return false;
  return formats::EqualsNoCase(extension, ".ics") || formats::LooksLikeICalendar(bytes);
}

// These answer how many records the bytes hold.
std::size_t ImportCards(const fs::path& file, std::string_view bytes, ItemImport& import,
                        ImportTally& tally) {
  const formats::VCardFile cards = formats::ReadVCards(bytes);
  for (const formats::Notice& notice : cards.notices)
    import.Notice({file, notice.line}, notice.text, tally);
  for (const formats::ParsedContact& parsed : cards.contacts) {
    for (const formats::Notice& notice : parsed.notices)
      import.Notice({file, notice.line}, notice.text, tally);
    import.Import({file, parsed.line}, parsed.contact, tally);
  }
  return cards.contacts.size();
}

std::size_t ImportCalendar(const fs::path& file, std::string_view bytes, const calendar::Zone& zone,
                           ItemImport& import, ImportTally& tally) {
  const formats::CalendarFile calendar = formats::ReadICalendar(bytes, zone);
  for (const formats::Notice& notice : calendar.notices)
    import.Notice({file, notice.line}, notice.text, tally);
  for (const formats::ParsedAppointment& parsed : calendar.appointments)
    import.Import({file, parsed.line}, parsed.appointment, tally);
  for (const formats::ParsedTask& parsed : calendar.tasks)
    import.Import({file, parsed.line}, parsed.task, tally);
  return calendar.appointments.size() + calendar.tasks.size();
}

// False when the file could not be read at all.
bool ImportFile(Session& session, const fs::path& file, const Report& report, ItemImport& import,
                ImportTally& tally) {
  const auto bytes = ReadFile(file);
  if (!bytes) {
    fmt::print(report.err, "corvane-device: {} cannot be read\n", file.string());
    return false;
  }
  const bool isCalendar = IsCalendar(file, *bytes);
  const std::size_t records = isCalendar
                                  ? ImportCalendar(file, *bytes, session.Zone(), import, tally)
                                  : ImportCards(file, *bytes, import, tally);
  if (records > 0) return true;
  fmt::print(report.err, "corvane-device: {}: no {} in it\n", file.string(),
             isCalendar ? "appointments or tasks" : "contacts");
  return false;
}

}  // namespace

Outcome ImportFiles(Session& session, const std::vector<fs::path>& files,
                    const ImportOptions& options, const Report& report) {
  ItemImport import(session, options, report);
  std::size_t done = 0;
  std::size_t failed = 0;
  for (const fs::path& file : files) {
    ImportTally tally;
    try {
      if (!ImportFile(session, file, report, import, tally)) {
        ++failed;
        continue;
      }
      import.Commit();
    } catch (const StatusError& failure) {
      fmt::print(report.err,
                 "corvane-device: {}: {}; some items named above may not be stored: import the "
                 "file again\n",
                 file.string(), failure.what());
      return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
    }
    fmt::print(report.out, "{}: {}{} added, {} changed, {} unchanged, {} failed; {} notices\n",
               file.string(), options.dryRun ? "would be " : "", tally.added, tally.changed,
               tally.unchanged, tally.failed, tally.notices);
    done += tally.done();
    failed += tally.failed;
  }
  if (failed == 0) return Outcome::kDone;
  return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
}

}  // namespace maintenance
