#include "desktop/folder/edit_text.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/lines/vcard_property.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "desktop/folder/calendar_edit.h"
#include "desktop/folder/card_edit.h"

namespace desktop {
namespace {

bool SaysAnItem(std::string_view name) {
  return name == "VCARD" || name == "VEVENT" || name == "VTODO";
}

// What frames items, and what they refer to.
bool IsFrame(std::string_view name) {
  return name == "VCALENDAR" || name == "VTIMEZONE";
}

}  // namespace

TextEdit::TextEdit(std::string_view bytes, calendar::Zone zone, std::chrono::sys_seconds when)
    : zone_(std::move(zone)),
      when_(when),
      file_(bytes),
      parts_(FindParts(file_.text())),
      western_(!text::IsValidUtf8(file_.text())) {
  for (std::size_t i = 0; i < parts_.parts.size(); ++i) {
    const FilePart& part = parts_.parts[i];
    if (!SaysAnItem(part.name)) continue;
    partAt_.emplace(parts_.lines[part.first].content.line, i);
    if (part.name == "VCARD") continue;
    if (!TextOfLine(i, "RECURRENCE-ID").empty()) changes_.insert(i);
    std::string uid = UidOfPart(i);
    if (!uid.empty()) seriesOf_[part.name + ":" + std::move(uid)].push_back(i);
  }
}

std::string TextEdit::UidOfPart(std::size_t index) const {
  return TextOfLine(index, "UID");
}

std::string TextEdit::TextOfLine(std::size_t index, std::string_view name) const {
  const FilePart& part = parts_.parts[index];
  const std::size_t depth = parts_.lines[part.first].depth;
  for (std::size_t i = part.first + 1; i <= part.last; ++i) {
    const FileLine& line = parts_.lines[i];
    if (line.depth != depth || !text::StartsWithNoCase(line.content.text, name)) continue;
    const std::optional<formats::Property> property = formats::ParseProperty(line.content);
    if (property && property->name == name) return formats::TextOf(*property);
  }
  return {};
}

std::vector<std::size_t> TextEdit::PartsOf(std::size_t line) const {
  const auto at = partAt_.find(line);
  if (at == partAt_.end()) return {};
  const FilePart& part = parts_.parts[at->second];
  if (part.name == "VCARD") return {at->second};
  const std::string uid = UidOfPart(at->second);
  const auto series = seriesOf_.find(part.name + ":" + uid);
  return series == seriesOf_.end() ? std::vector<std::size_t>{at->second} : series->second;
}

std::size_t TextEdit::BeginOf(std::size_t part) const {
  return parts_.lines[parts_.parts[part].first].begin;
}

std::string_view TextEdit::TextAt(std::size_t part) const {
  return std::string_view(file_.text()).substr(BeginOf(part), EndOf(part) - BeginOf(part));
}

std::size_t TextEdit::EndOf(std::size_t part) const {
  return parts_.lines[parts_.parts[part].last].end;
}

bool TextEdit::AreTouched(const std::vector<std::size_t>& parts) const {
  return std::any_of(parts.begin(), parts.end(), [&](std::size_t part) {
    return touched_.contains(part) || extended_.contains(part);
  });
}

void TextEdit::Replace(std::size_t begin, std::size_t end, std::string text) {
  splices_[begin] = {end, std::move(text)};
}

// Why the item cannot be edited; nothing when it can.
std::optional<std::string> TextEdit::Obstacle(const std::vector<std::size_t>& parts) const {
  if (parts.empty()) return "no item begins there";
  if (file_.damaged()) return "the file's character set is damaged";
  for (const std::size_t index : parts) {
    const FilePart& part = parts_.parts[index];
    if (!part.whole) return "the " + part.name + " has no end";
    const bool isOfCard = parts_.lines[part.first].content.dialect == formats::VCardDialect::k21;
    if (isOfCard && part.name != "VCARD") return "the " + part.name + " is folded as a vCard 2.1";
  }
  return std::nullopt;
}

TextChange TextEdit::Remove(std::size_t line, const Item& item) {
  const std::vector<std::size_t> parts = PartsOf(line);
  if (const std::optional<std::string> obstacle = Obstacle(parts)) return {false, {*obstacle}};
  if (AreTouched(parts)) return {false, {}, true};
  if (KindOf(item) != ItemKind::kContact) {
    const CalendarContext context = ContextOf(parts, item);
    const CalendarParts lines = LinesOf(parts);
    if (!context.Read(lines).others.empty()) {
      const auto main = std::find(parts.begin(), parts.end(), partAt_.at(line));
      EditedCalendar edited =
          RemoveOccurrence(context, lines, static_cast<std::size_t>(main - parts.begin()), item,
                           StyleOfPart(parts.front()));
      if (!edited.done) return {false, std::move(edited.losses)};
      Apply(parts, std::move(edited));
      touched_.insert(parts.begin(), parts.end());
      return {true, {}};
    }
  }
  for (const std::size_t part : parts) {
    Replace(BeginOf(part), EndOf(part), {});
    touched_.insert(part);
  }
  return {true, {}};
}

bool TextEdit::IsEmpty() const {
  for (std::size_t i = 0; i < parts_.parts.size(); ++i) {
    const FilePart& part = parts_.parts[i];
    const bool within = part.parent != kNoPart && parts_.parts[part.parent].name != "VCALENDAR";
    if (within || IsFrame(part.name)) continue;
    const auto splice = splices_.find(BeginOf(i));
    if (splice == splices_.end() || !splice->second.text.empty()) return false;
  }
  return true;
}

std::string TextEdit::CutOut(std::size_t line) const {
  const std::vector<std::size_t> own = PartsOf(line);
  std::string text;
  std::size_t from = 0;
  for (std::size_t i = 0; i < parts_.parts.size(); ++i) {
    const FilePart& part = parts_.parts[i];
    const bool within = part.parent != kNoPart && parts_.parts[part.parent].name != "VCALENDAR";
    const bool kept = std::find(own.begin(), own.end(), i) != own.end();
    if (within || kept || IsFrame(part.name)) continue;
    text += file_.text().substr(from, BeginOf(i) - from);
    from = EndOf(i);
  }
  return file_.BytesOf(text + file_.text().substr(from));
}

// The first line's end counts for the part.
LineStyle TextEdit::StyleOfPart(std::size_t part) const {
  LineStyle style = StyleOf(std::string_view(file_.text()).substr(BeginOf(part)));
  style.western = western_;
  return style;
}

TextChange TextEdit::Change(std::size_t line, const Item& from, const Item& to) {
  const std::vector<std::size_t> parts = PartsOf(line);
  if (const std::optional<std::string> obstacle = Obstacle(parts)) return {false, {*obstacle}};
  if (KindOf(from) != KindOf(to)) return {false, {"is of another kind"}};
  const std::size_t main = partAt_.at(line);
  if (std::optional<TextChange> change = ChangeOccurrence(parts, main, from, to)) return *change;
  if (AreTouched(parts)) return {false, {}, true};
  TextChange change{true, {}};
  if (const auto* contact = std::get_if<formats::Contact>(&to)) {
    const FilePart& part = parts_.parts[main];
    const auto lines = std::span(parts_.lines).subspan(part.first, part.last - part.first + 1);
    EditedPart edited = EditCard(file_.text(), lines, *contact, StyleOfPart(main), when_);
    change.losses = std::move(edited.losses);
    Replace(BeginOf(main), EndOf(main), std::move(edited.text));
  } else {
    change = ChangeCalendar(parts, main, from, to);
  }
  if (change.done) touched_.insert(parts.begin(), parts.end());
  return change;
}

// The zones that the parts speak of, and nothing else of the file, are what they are read with.
CalendarContext TextEdit::ContextOf(const std::vector<std::size_t>& parts, const Item& item) const {
  std::string own;
  for (const std::size_t part : parts) own += TextAt(part);
  std::string frame;
  for (std::size_t i = 0; i < parts_.parts.size(); ++i) {
    if (parts_.parts[i].name != "VTIMEZONE") continue;
    const std::string tzid = TextOfLine(i, "TZID");
    if (!tzid.empty() && own.find(tzid) != std::string::npos) frame += TextAt(i);
  }
  return CalendarContext(std::move(frame), zone_, KindOf(item), UidOf(item));
}

CalendarParts TextEdit::LinesOf(const std::vector<std::size_t>& parts) const {
  CalendarParts lines;
  for (const std::size_t part : parts) lines.push_back(LinesOfPart(TextAt(part)));
  return lines;
}

void TextEdit::Apply(const std::vector<std::size_t>& parts, EditedCalendar edited) {
  for (std::size_t i = parts.size(); i < edited.parts.size(); ++i) {
    edited.parts[parts.size() - 1] += edited.parts[i];
  }
  for (std::size_t i = 0; i < parts.size(); ++i) {
    Replace(BeginOf(parts[i]), EndOf(parts[i]), std::move(edited.parts[i]));
  }
}

EditedCalendar TextEdit::EditIn(const std::vector<std::size_t>& parts, std::size_t part,
                                const Item& from, const Item& to) const {
  const auto main = std::find(parts.begin(), parts.end(), part) - parts.begin();
  return EditCalendarItem(ContextOf(parts, from), LinesOf(parts), static_cast<std::size_t>(main),
                          from, to, StyleOfPart(parts.front()), when_);
}

TextChange TextEdit::ChangeCalendar(const std::vector<std::size_t>& parts, std::size_t main,
                                    const Item& from, const Item& to) {
  EditedCalendar edited = EditIn(parts, main, from, to);
  if (!edited.done) return {false, std::move(edited.losses)};
  DefineZoneOf(edited.parts, parts, to);
  TextChange change{true, std::move(edited.losses)};
  Apply(parts, std::move(edited));
  return change;
}

// An occurrence that is an item of its own is said by its event, or else the one that recurs, which
// stays as it is: no other occurrence matters to it. Nothing where that is not all.
std::optional<TextChange> TextEdit::ChangeOccurrence(const std::vector<std::size_t>& parts,
                                                     std::size_t main, const Item& from,
                                                     const Item& to) {
  const auto* appointment = std::get_if<formats::Appointment>(&from);
  if (appointment == nullptr || appointment->series || appointment->uid == UidOfPart(main)) {
    return std::nullopt;
  }
  std::vector<std::size_t> own;
  std::copy_if(parts.begin(), parts.end(), std::back_inserter(own),
               [&](std::size_t part) { return part == main || !changes_.contains(part); });
  const bool hasEvent = changes_.contains(main);
  if (own.size() > (hasEvent ? 2 : 1)) return std::nullopt;
  const auto isTouched = [&](std::size_t part) { return touched_.contains(part); };
  if (std::any_of(own.begin(), own.end(), isTouched)) return TextChange{false, {}, true};
  EditedCalendar edited = EditIn(own, main, from, to);
  if (!edited.done) return std::nullopt;
  for (std::size_t i = 0; i < own.size(); ++i) {
    const bool recurs = !changes_.contains(own[i]);
    if (recurs && edited.parts[i] != TextAt(own[i])) return std::nullopt;
  }
  DefineZoneOf(edited.parts, own, to);
  for (std::size_t i = 0; i < own.size(); ++i) {
    if (own[i] == main && hasEvent) Replace(BeginOf(main), EndOf(main), edited.parts[i]);
  }
  for (std::size_t i = own.size(); i < edited.parts.size(); ++i) {
    insertions_[EndOf(parts.back())] += edited.parts[i];
    extended_.insert(parts.back());
  }
  if (hasEvent) touched_.insert(main);
  return TextChange{true, std::move(edited.losses)};
}

// For the texts of these parts, and of more behind them. What stands as it stood, and names a zone
// that nothing defines, goes on to do so.
void TextEdit::DefineZoneOf(const std::vector<std::string>& texts,
                            const std::vector<std::size_t>& parts, const Item& written) {
  const std::string named = "TZID=" + zone_.name();
  bool zoned = false;
  for (std::size_t i = 0; i < texts.size() && !zoned; ++i) {
    const bool isNew = i >= parts.size() || texts[i] != TextAt(parts[i]);
    zoned = isNew && texts[i].find(named) != std::string::npos;
  }
  if (zoned) DefineZone(parts.front(), written);
}

// Behind the zones that the calendar has; all appointments that need it share one definition.
void TextEdit::DefineZone(std::size_t part, const Item& written) {
  const std::size_t calendar = parts_.parts[part].parent;
  std::size_t place = kNoPart;
  bool behindItems = false;
  for (std::size_t i = 0; i < parts_.parts.size(); ++i) {
    if (parts_.parts[i].parent != calendar || i == calendar) continue;
    if (parts_.parts[i].name != "VTIMEZONE") {
      if (place == kNoPart) place = BeginOf(i);
      behindItems = true;
      continue;
    }
    if (!behindItems) place = EndOf(i);
    if (TextOfLine(i, "TZID") == zone_.name()) return;
  }
  const auto* appointment = std::get_if<formats::Appointment>(&written);
  if (place == kNoPart || appointment == nullptr) return;
  ZonedItems& zoned = zoned_.try_emplace(place, ZonedItems{StyleOfPart(part), {}}).first->second;
  zoned.appointments.push_back(*appointment);
}

std::string TextEdit::DefinitionFor(const ZonedItems& zoned) const {
  const formats::CalendarText text = formats::WriteICalendar(zoned.appointments, {}, zone_);
  const FileParts parts = FindParts(text.bytes);
  std::string definition;
  for (const FilePart& each : parts.parts) {
    if (each.name != "VTIMEZONE") continue;
    for (std::size_t i = each.first; i <= each.last; ++i) {
      definition += BytesOf(RawLine::Of(parts.lines[i].content.text), zoned.style);
    }
  }
  return definition;
}

std::string TextEdit::bytes() const {
  std::string text;
  std::size_t from = 0;
  std::map<std::size_t, std::string> insertions = insertions_;
  for (const auto& [place, zoned] : zoned_) insertions[place] += DefinitionFor(zoned);
  auto insertion = insertions.begin();
  const auto copyTo = [&](std::size_t end) {
    for (; insertion != insertions.end() && insertion->first <= end; ++insertion) {
      text += file_.text().substr(from, insertion->first - from);
      text += insertion->second;
      from = insertion->first;
    }
    text += file_.text().substr(from, end - from);
    from = end;
  };
  for (const auto& [begin, splice] : splices_) {
    copyTo(begin);
    text += splice.text;
    from = splice.end;
  }
  copyTo(file_.text().size());
  return file_.BytesOf(text);
}

}  // namespace desktop
