// The kinds of records that travel: what each is called where, and what becomes of it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/calendar/zone.h"
#include "desktop/wire/request.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

inline constexpr std::string_view kContactKind = "contact";
inline constexpr std::string_view kAppointmentKind = "appointment";
inline constexpr std::string_view kTaskKind = "task";

// What people's programs take. kSmsBackup is a backup file of formats/sms_backup.h.
enum class RecordFormat { kVcf, kIcs, kXml, kJson, kSmsBackup, kCsv };

struct KindWords {
  RecordKind kind;
  std::string_view argument;     // on the command line
  std::string_view name;         // to people, and in the mapping
  std::string_view withArticle;  // "an appointment"
  std::string_view plural;
  std::string_view element;  // of a record
  // Has an OID and travels both ways; the others, the telephone's, come and are never sent.
  bool isItem;
  std::span<const RecordFormat> formats;  // that its records can be had in, the usual one first
  // The record as one line of JSON. An item must have its OID; the zone is the handheld's.
  std::string (*json)(const Record& record, const calendar::Zone& zone);
};

const KindWords& WordsOf(RecordKind kind);

// Whether records of the kind can be had so.
bool IsFormatOf(RecordFormat format, RecordKind kind);

// The name of the kind whose records have such an element; empty for other elements.
std::string_view KindOfElement(std::string_view elementName);
// The elements of items: the agent answers these in an upload and skips all others.
bool IsTakenByAgent(std::string_view elementName);
// Nothing for a name that is none of those above. Of two kinds with one name it is the first.
std::optional<RecordKind> KindNamed(std::string_view name);

}  // namespace desktop
