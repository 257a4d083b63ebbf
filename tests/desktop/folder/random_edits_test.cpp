// Random items among random lines of other programs, changed at random: what was wanted is read,
// and the other lines stay.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/folder/contact_differences.h"
#include "desktop/folder/desk_reader.h"
#include "desktop/folder/edit_text.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/item_facts.h"
#include "tests/desktop/folder/edit_support.h"

namespace desktop::testing {
namespace {

using formats::Appointment;
using formats::Contact;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;

// A text of letters and of what means something to a content line.
rc::Gen<std::string> Text() {
  const auto piece =
      rc::gen::element<std::string>("a", "b", "Zoe", "x y", "\u00E9", "\u5C71", ";", ",", ":", "\\",
                                    "\"", "=", "\n", "-", "1", std::string(80, 'w'));
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text = "t";
    for (std::size_t i = 0; i < pieces.size() && i < 6; ++i) text += pieces[i];
    return text + "t";
  });
}

std::string MaybeText() {
  return *rc::gen::arbitrary<bool>() ? *Text() : std::string();
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const char* name : {"Friends", "Work; far", "VIP"}) {
    if (*rc::gen::arbitrary<bool>()) names.emplace_back(name);
  }
  return names;
}

// The file with some of the lines put between those that are directly within its items.
std::string WithForeignLines(const std::string& text, const std::vector<std::string>& foreign) {
  const FileParts file = FindParts(text);
  std::string mixed;
  std::size_t depth = 0;
  std::size_t next = 0;
  for (const FileLine& line : file.lines) {
    const bool begins = line.content.text.starts_with("BEGIN:");
    const bool frame = line.content.text == "BEGIN:VCALENDAR";
    if (begins && !frame) ++depth;
    if (line.content.text.starts_with("END:") && line.content.text != "END:VCALENDAR") --depth;
    mixed += text.substr(line.begin, line.end - line.begin);
    const bool inZone = text.rfind("BEGIN:VTIMEZONE", line.begin) != std::string::npos &&
                        text.find("END:VTIMEZONE", line.end) != std::string::npos;
    if (depth != 1 || inZone || next >= foreign.size()) continue;
    if (*rc::gen::inRange(0, 3) == 0) mixed += foreign[next++];
  }
  return mixed;
}

std::string Kept(const std::string& text, const std::vector<std::string>& foreign) {
  std::string kept;
  const FileParts file = FindParts(text);
  for (const FileLine& line : file.lines) {
    const std::string bytes = text.substr(line.begin, line.end - line.begin);
    for (const std::string& each : foreign) {
      if (bytes == each) kept += bytes;
    }
  }
  return kept;
}

const std::vector<std::string> kForeignCard = {
    "NICKNAME:Nan\r\n",
    "X-A;B=c:d\r\n",
    "item7.IMPP;X-SERVICE=a:xmpp:a@b\r\n",
    "PHOTO;ENCODING=b;TYPE=JPEG:" + std::string(48, 'A') + "\r\n " + std::string(74, 'B') + "\r\n",
    "x-lower-case:1\n",
    "KEY:abc\r\n"};
const std::vector<std::string> kForeignEvent = {
    "ATTENDEE;CN=A;PARTSTAT=ACCEPTED:mailto:a@example.org\r\n", "X-A;B=c:d\r\n",
    "URL:https://example.org/" + std::string(40, 'u') + "\r\n " + std::string(30, 'v') + "\r\n",
    "COMMENT:first\n", "GEO:1.0;2.0\r\n"};

Contact RandomContact() {
  Contact contact;
  contact.uid = "uid";
  for (std::string& field : contact.fields) {
    if (*rc::gen::inRange(0, 3) == 0) field = *Text();
  }
  contact.categories = Names();
  if (*rc::gen::arbitrary<bool>()) contact.birthday = std::chrono::year(1980) / 3 / 22;
  return contact;
}

Contact Edited(Contact contact) {
  const std::size_t count = *rc::gen::inRange(1, 5);
  for (std::size_t i = 0; i < count; ++i) {
    contact.fields[*rc::gen::inRange<std::size_t>(0, formats::kContactFieldCount)] = MaybeText();
  }
  if (*rc::gen::inRange(0, 4) == 0) contact.categories = Names();
  if (*rc::gen::inRange(0, 4) == 0) contact.birthday = std::chrono::year(1990) / 12 / 1;
  return contact;
}

RC_GTEST_PROP(RandomEdits, OfContactsReadAsWantedAndKeepOtherLines, ()) {
  const Contact from = RandomContact();
  const auto version = *rc::gen::element(formats::VCardVersion::k30, formats::VCardVersion::k40);
  const std::string text = WithForeignLines(formats::WriteVCard(from, version), kForeignCard);
  const Contact to = Edited(from);
  const DeskReading before = ReadDeskBytes("a.vcf", text, Berlin());
  RC_ASSERT(before.items.size() == 1u);
  TextEdit edit(text, Berlin(), kEditTime);
  const TextChange change = edit.Change(1, before.items[0].item, to);
  RC_LOG() << text << "\n-- edited to --\n" << edit.bytes();
  RC_ASSERT(change.done);
  const DeskReading after = ReadDeskBytes("a.vcf", edit.bytes(), Berlin());
  RC_ASSERT(after.items.size() == 1u);
  Contact wanted = to;
  const Contact now = std::get<Contact>(after.items[0].item);
  const ContactDifferences differences = DifferencesOf(now, wanted);
  for (const ContactDifference& each : differences) {
    // A name to sort by that follows from the others is as good as none.
    if (each.field == "FileAs") continue;
    RC_LOG() << each.field << (each.missing ? " lacks " : " has ") << each.value;
    RC_ASSERT(!change.losses.empty());
  }
  RC_ASSERT(change.losses.empty());
  RC_ASSERT(Kept(edit.bytes(), kForeignCard) == Kept(text, kForeignCard));
}

Appointment RandomAppointment() {
  Appointment a;
  a.uid = "uid";
  a.subject = *Text();
  a.location = MaybeText();
  a.body = MaybeText();
  a.busyStatus = *rc::gen::inRange(0, 4);
  a.isPrivate = *rc::gen::arbitrary<bool>();
  a.categories = Names();
  a.allDay = *rc::gen::inRange(0, 4) == 0;
  const formats::local_days day{std::chrono::year(2026) / 11 / 2};
  a.start = day + days(*rc::gen::inRange(0, 20));
  if (a.allDay) {
    a.end = *a.start + days(*rc::gen::inRange(1, 3));
  } else {
    *a.start += minutes(15 * *rc::gen::inRange(0, 90));
    a.end = *a.start + minutes(15 * *rc::gen::inRange(0, 12));
  }
  if (*rc::gen::arbitrary<bool>()) a.reminderMinutes = *rc::gen::inRange(0, 60);
  if (*rc::gen::arbitrary<bool>()) {
    a.series.emplace();
    a.series->pattern.occurrences = *rc::gen::inRange(3, 9);
  }
  return a;
}

formats::local_days DayOfSeries(const Appointment& a, int n) {
  return std::chrono::floor<days>(*a.start) + days(n);
}

void EditOne(Appointment& a) {
  switch (*rc::gen::inRange(0, 9)) {
    case 0:
      a.subject = *Text();
      return;
    case 1:
      a.location = MaybeText();
      return;
    case 2:
      a.body = MaybeText();
      return;
    case 3:
      a.busyStatus = *rc::gen::inRange(0, 4);
      return;
    case 4:
      a.isPrivate = !a.isPrivate;
      return;
    case 5:
      a.categories = Names();
      return;
    case 6:
      a.reminderMinutes = *rc::gen::inRange(0, 90);
      return;
    case 7:
      if (!a.series) *a.start += a.allDay ? hours(24) : hours(1);
      if (!a.series) *a.end += a.allDay ? hours(24) : hours(1);
      if (a.series && a.series->deleted.empty()) a.series->deleted = {DayOfSeries(a, 1)};
      return;
    default:
      if (!a.series || !a.series->changed.empty()) return;
      formats::Occurrence occurrence = a;
      occurrence.subject = *Text();
      *occurrence.start += days(2);
      *occurrence.end += days(2);
      a.series->changed.push_back({DayOfSeries(a, 2), occurrence});
  }
}

RC_GTEST_PROP(RandomEdits, OfEventsReadAsWantedAndKeepOtherLines, ()) {
  const Appointment from = RandomAppointment();
  const formats::CalendarText written = formats::WriteICalendar({&from, 1}, {}, Berlin());
  const std::string text = WithForeignLines(written.bytes, kForeignEvent);
  const DeskReading before = ReadDeskBytes("a.ics", text, Berlin());
  RC_ASSERT(before.items.size() == 1u);
  Appointment to = from;
  const int edits = *rc::gen::inRange(1, 4);
  for (int i = 0; i < edits; ++i) EditOne(to);
  TextEdit edit(text, Berlin(), kEditTime);
  const TextChange change = edit.Change(before.items[0].line, before.items[0].item, to);
  RC_LOG() << text << "\n-- edited to --\n" << edit.bytes();
  RC_ASSERT(change.done);
  for (const std::string& loss : change.losses) RC_LOG() << loss;
  RC_ASSERT(change.losses.empty());
  const DeskReading after = ReadDeskBytes("a.ics", edit.bytes(), Berlin());
  RC_ASSERT(after.items.size() == 1u);
  const std::set<std::string> differing =
      DifferingFields(FactsOf(after.items[0].item), FactsOf(Item(to)));
  for (const std::string& field : differing) RC_LOG() << field;
  RC_ASSERT(differing.empty());
  // A new exception has them as well, behind the event.
  RC_ASSERT(Kept(edit.bytes(), kForeignEvent).starts_with(Kept(text, kForeignEvent)));
}

}  // namespace
}  // namespace desktop::testing
