// What a person hands in to be sent, file by file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"
#include "common/formats/vcard/overflow.h"
#include "common/terminal/tally.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

struct PushRecord {
  std::string place;  // "FILE:LINE", or the kind's name when it comes from no file
  std::string title;  // what to call it in a message; empty for none
  std::string kind;   // its name
  std::string uid;
  std::string content;  // the mapping's stand-in for a UID; empty when there is one, or an own OID
  std::string hash;
  std::string state;                // StateOf it, of a record that is sent as it stands
  std::string xml;                  // with an "Oid" only when ownOid has it
  std::optional<Oid> ownOid;        // the file itself says which item it is
  std::vector<std::string> losses;  // what sending it loses, a line each
  bool deletes = false;
};

// What was read and cannot be sent: of a line of a file, about so many of what the noun says, of
// which the owner is one (see terminal::NoticeSums).
using NoticeSink =
    std::function<void(const std::filesystem::path& file, std::size_t line, const std::string& text,
                       terminal::Noun noun, std::size_t owner)>;

// Contacts of a vCard file, appointments and tasks of an iCalendar file, or the records of an XML
// document that the agent takes in. Which of them it is, the extension says (.vcf, .vcard, .ics,
// .xml), otherwise the content; "-" is the standard input. The zone is the handheld's. Throws Error
// when the file cannot be read, is malformed, or is no vCard or iCalendar file though it should be.
std::vector<PushRecord> ReadPushFile(const std::filesystem::path& path, const calendar::Zone& zone,
                                     const NoticeSink& notices,
                                     formats::Overflow overflow = formats::Overflow::kLeftOut);

// As ReadPushFile makes it of the item, which stands at that place.
PushRecord RecordOf(std::string place, const formats::Contact& contact);
PushRecord RecordOf(std::string place, const formats::Appointment& appointment,
                    const calendar::Zone& zone);
PushRecord RecordOf(std::string place, const formats::Task& task);

// StateHash of the record as the agent will read it. It takes as long as reading it, and most
// records that have not changed never need it.
std::string StateOf(const PushRecord& record);

// The record as the agent will read it.
XmlElement ElementOf(const PushRecord& record);

// Asks for the deletion of an item.
PushRecord DeletionOf(RecordKind kind, Oid oid);

}  // namespace desktop
