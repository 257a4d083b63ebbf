#include "desktop/folder/calendar_lines.h"

#include <algorithm>
#include <utility>

#include "common/formats/icalendar/icalendar.h"
#include "common/text/text.h"
#include "desktop/folder/file_parts.h"

namespace desktop {

CalendarPart LinesOfPart(std::string_view text) {
  CalendarPart part;
  const FileParts parts = FindParts(text);
  std::size_t end = 0;
  for (const FileLine& line : parts.lines) {
    if (line.begin > end)
      part.push_back({std::string(text.substr(end, line.begin - end)), {}, {}, 1});
    end = line.end;
    CalendarLine own{std::string(text.substr(line.begin, end - line.begin)), line.content.text,
                     formats::ParseProperty(line.content), line.depth == 0 ? 0 : line.depth - 1};
    part.push_back(std::move(own));
  }
  return part;
}

std::string TextOfPart(const CalendarPart& part) {
  std::string text;
  for (const CalendarLine& line : part) text += line.bytes;
  return text;
}

CalendarLine LineOf(const RawLine& raw, const LineStyle& style) {
  CalendarLine line;
  line.bytes = BytesOf(raw, style);
  formats::ContentLineReader reader(line.bytes);
  formats::ContentLine content;
  if (reader.Next(content)) {
    line.text = content.text;
    line.property = formats::ParseProperty(content);
  }
  return line;
}

std::optional<std::size_t> FindLine(const CalendarPart& part, std::string_view name) {
  for (std::size_t i = 1; i + 1 < part.size(); ++i) {
    if (part[i].depth == 0 && part[i].property && part[i].property->name == name) return i;
  }
  return std::nullopt;
}

void RemoveLines(CalendarPart& part, std::string_view name) {
  while (const std::optional<std::size_t> at = FindLine(part, name)) {
    part.erase(part.begin() + static_cast<std::ptrdiff_t>(*at));
  }
}

void InsertLine(CalendarPart& part, CalendarLine line,
                std::initializer_list<std::string_view> behind) {
  std::size_t place = part.size() - 1;
  while (place > 1 && part[place - 1].depth > 0) --place;
  for (std::size_t i = 1; i + 1 < part.size(); ++i) {
    if (part[i].depth != 0 || !part[i].property) continue;
    const std::string& name = part[i].property->name;
    if (std::find(behind.begin(), behind.end(), name) != behind.end()) place = i + 1;
  }
  part.insert(part.begin() + static_cast<std::ptrdiff_t>(place), std::move(line));
}

std::vector<PartRange> AlarmsOf(const CalendarPart& part) {
  std::vector<PartRange> alarms;
  for (std::size_t i = 0; i < part.size(); ++i) {
    if (part[i].depth != 1 || !part[i].property) continue;
    const bool alarm = text::EqualsNoCase(text::TrimBlanks(part[i].property->value), "VALARM");
    if (alarm && part[i].property->name == "BEGIN") alarms.push_back({i, i + 1});
    if (alarm && part[i].property->name == "END" && !alarms.empty()) alarms.back().end = i + 1;
  }
  return alarms;
}

CalendarContext::Reading CalendarContext::Read(const CalendarParts& parts) const {
  std::string text = "BEGIN:VCALENDAR\r\n" + frame_;
  for (const CalendarPart& part : parts) text += TextOfPart(part);
  text += "END:VCALENDAR\r\n";
  formats::CalendarFile file = formats::ReadICalendar(text, zone_);
  Reading reading;
  std::size_t found = 0;
  const auto take = [&](Item item) {
    if (KindOf(item) == kind_ && UidOf(item) == uid_ && ++found == 1) {
      reading.item = std::move(item);
    } else {
      reading.others.push_back(std::move(item));
    }
  };
  for (formats::ParsedAppointment& parsed : file.appointments) take(std::move(parsed.appointment));
  for (formats::ParsedTask& parsed : file.tasks) take(std::move(parsed.task));
  if (found > 1) reading.item.reset();
  return reading;
}

}  // namespace desktop
