#include "desktop/folder/desk_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/vcard/vcard.h"
#include "common/text/code_page.h"
#include "common/text/text.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::Task;

void AddNotices(std::vector<formats::Notice>& from, const std::filesystem::path& file,
                std::vector<DeskNotice>& to) {
  for (formats::Notice& notice : from) {
    to.push_back({DeskTrouble::kContent, file, notice.line, std::move(notice.text)});
  }
}

// Other programs may put bytes of their own behind the last line.
bool EndsWithAnEnd(std::string_view bytes) {
  std::string_view text = bytes;
  text::Conversion decoded;
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    decoded = text::DecodeFile(bytes);
    text = decoded.text;
  }
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  const std::size_t lineEnd = text.find_last_of("\r\n");
  if (lineEnd != std::string_view::npos) text.remove_prefix(lineEnd + 1);
  return text::StartsWithNoCase(text, "END") && text::TrimBlanks(text.substr(3)).starts_with(':');
}

// Files of people's programs have one line break.
template <typename... Texts>
void MakePlain(Texts&... texts) {
  ((texts = text::NormalizeLineBreaks(std::move(texts))), ...);
}

Contact Plain(Contact contact) {
  for (std::string& text : contact.fields) MakePlain(text);
  return contact;
}

Appointment Plain(Appointment appointment) {
  MakePlain(appointment.subject, appointment.location, appointment.body);
  if (!appointment.series) return appointment;
  for (formats::ChangedOccurrence& change : appointment.series->changed) {
    MakePlain(change.occurrence.subject, change.occurrence.location, change.occurrence.body);
  }
  return appointment;
}

Task Plain(Task task) {
  MakePlain(task.subject, task.body);
  return task;
}

DeskText ToText(const Contact& contact, const calendar::Zone&) {
  return {WriteVCard(Plain(contact), formats::VCardVersion::k30), {}};
}

DeskText ToText(const Appointment& appointment, const calendar::Zone& zone) {
  const Appointment plain = Plain(appointment);
  formats::CalendarText text = formats::WriteICalendar({&plain, 1}, {}, zone);
  return {std::move(text.bytes), std::move(text.losses)};
}

DeskText ToText(const Task& task, const calendar::Zone& zone) {
  const Task plain = Plain(task);
  formats::CalendarText text = formats::WriteICalendar({}, {&plain, 1}, zone);
  return {std::move(text.bytes), std::move(text.losses)};
}

}  // namespace

std::string ToText(const DeskNotice& notice) {
  const std::string place = notice.line == 0
                                ? notice.file.string()
                                : fmt::format("{}:{}", notice.file.string(), notice.line);
  return text::OnOneLine(place + ": " + notice.text);
}

std::string_view ExtensionOf(std::string_view subfolder) {
  return subfolder == kContactsFolder ? ".vcf" : ".ics";
}

std::string_view SubfolderOf(ItemKind kind) {
  constexpr std::string_view kFolders[] = {kContactsFolder, kCalendarFolder, kTasksFolder};
  return kFolders[static_cast<std::size_t>(kind)];
}

DeskReading ReadDeskBytes(const std::filesystem::path& file, std::string_view bytes,
                          const calendar::Zone& zone) {
  DeskReading reading;
  reading.whole = EndsWithAnEnd(bytes);
  if (text::EqualsNoCase(file.extension().string(), ".vcf")) {
    formats::VCardFile cards = formats::ReadVCards(bytes);
    for (formats::ParsedContact& parsed : cards.contacts) {
      reading.items.push_back({file, parsed.line, {}, std::move(parsed.contact)});
      AddNotices(parsed.notices, file, reading.notices);
    }
    AddNotices(cards.notices, file, reading.notices);
  } else {
    formats::CalendarFile calendar = formats::ReadICalendar(bytes, zone);
    for (formats::ParsedAppointment& parsed : calendar.appointments) {
      reading.items.push_back({file, parsed.line, {}, std::move(parsed.appointment)});
    }
    for (formats::ParsedTask& parsed : calendar.tasks) {
      reading.items.push_back({file, parsed.line, {}, std::move(parsed.task)});
    }
    AddNotices(calendar.notices, file, reading.notices);
  }
  std::stable_sort(reading.items.begin(), reading.items.end(),
                   [](const DeskItem& a, const DeskItem& b) { return a.line < b.line; });
  return reading;
}

DeskText TextOfItem(const Item& item, const calendar::Zone& zone) {
  return std::visit([&](const auto& of) { return ToText(of, zone); }, item);
}

}  // namespace desktop
