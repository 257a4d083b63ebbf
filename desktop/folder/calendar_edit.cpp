#include "desktop/folder/calendar_edit.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "common/calendar/wall_time.h"
#include "common/formats/lines/category_list.h"
#include "common/text/text.h"
#include "desktop/folder/desk_reader.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/item_facts.h"
#include "desktop/folder/line_candidates.h"
#include "desktop/folder/property_edit.h"
#include "desktop/folder/series_edit.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Task;

CalendarParts CanonicalParts(std::string_view text) {
  CalendarParts parts;
  const FileParts file = FindParts(text);
  for (const FilePart& part : file.parts) {
    if (part.name != "VEVENT" && part.name != "VTODO") continue;
    const std::size_t begin = file.lines[part.first].begin;
    parts.push_back(LinesOfPart(text.substr(begin, file.lines[part.last].end - begin)));
  }
  return parts;
}

// The time of its own clock that the reader put behind the UID of one occurrence; empty for none.
std::string OriginalOf(const std::string& uid, const CalendarPart& part) {
  const std::optional<std::size_t> at = FindLine(part, "UID");
  const std::string own = at ? TextOf(*part[*at].property) : std::string();
  return uid.size() > own.size() + 1 && uid.starts_with(own) ? uid.substr(own.size() + 1) : "";
}

constexpr const char* kFollows = "occurrences that another zone moves: follow their series";

bool IsOfADay(const std::string& field) {
  return field.front() >= '0' && field.front() <= '9';
}

// What a changed occurrence has besides its times.
bool IsTextOfOccurrence(const FieldLines& field) {
  const std::string_view name = field.field;
  return name == "Subject" || name == "Location" || name == "Body" || name == "Busy";
}

class CalendarEditor {
 public:
  CalendarEditor(const CalendarContext& context, CalendarParts parts, std::size_t main,
                 const Item& from, const Item& to, const LineStyle& style)
      : context_(context),
        parts_(std::move(parts)),
        before_(parts_),
        main_(main),
        from_(from),
        to_(to),
        style_(style) {}

  EditedCalendar Edit(std::chrono::sys_seconds when);

 private:
  enum class Needed { kBetter, kNotWorse };

  bool Begin(EditedCalendar& edited);
  ItemFacts FactsFor(const Item& item) const;
  bool Try(CalendarParts parts, Needed needed);
  bool TryPart(std::size_t part, CalendarPart lines, Needed needed = Needed::kBetter);
  bool Differs(const std::string& field) const { return differing_.contains(field); }
  bool SeriesDiffers() const;
  bool IsWantedAsSeries(const std::string& day, const std::string& field) const;

  void SpellOutChanges();
  bool TakeOutOccurrence(const Appointment& from, const Appointment& to);
  void EditSeries(const Appointment& from, const Appointment& to);
  void EditChanges(const SeriesEdit& series);
  const CalendarPart* CanonicalOf(formats::local_days day) const;
  void EditDays();
  void EditTexts(std::size_t part, const std::string& before, const CalendarPart& canonical);
  void EditCategories();
  void EditAlarm();
  void NoteTime(std::chrono::sys_seconds when);
  void TellLosses(std::vector<std::string>& losses) const;

  const CalendarContext& context_;
  CalendarParts parts_;
  const CalendarParts before_;
  std::size_t main_;
  const Item& from_;
  const Item& to_;
  const LineStyle& style_;
  std::set<std::string> ownDays_;                        // as facts name them
  std::map<formats::local_days, std::size_t> ownParts_;  // of changed occurrences
  ItemFacts wanted_;
  ItemFacts facts_;
  std::vector<Item> others_;
  std::set<std::string> differing_;
  CalendarParts canonical_;
};

// Without changed occurrences that come of the zone alone.
ItemFacts CalendarEditor::FactsFor(const Item& item) const {
  ItemFacts facts = FactsOf(item);
  std::erase_if(facts, [&](const auto& fact) {
    const std::string& field = fact.first;
    return IsOfADay(field) && !field.ends_with("/Deleted") &&
           !ownDays_.contains(field.substr(0, field.find('/')));
  });
  return facts;
}

bool CalendarEditor::Try(CalendarParts parts, Needed needed) {
  CalendarContext::Reading reading = context_.Read(parts);
  if (!reading.item || reading.others != others_) return false;
  ItemFacts facts = FactsFor(*reading.item);
  std::set<std::string> differing = DifferingFields(facts, wanted_);
  // Of an occurrence that was not there anything may be wrong at first.
  const auto mayDiffer = [&](const std::string& field) {
    const std::string when = field.substr(0, field.find('/')) + "/When";
    return Differs(field) || (IsOfADay(field) && Differs(when) && !facts_.contains(when));
  };
  const bool better =
      !std::includes(differing.begin(), differing.end(), differing_.begin(), differing_.end());
  if (!std::all_of(differing.begin(), differing.end(), mayDiffer)) return false;
  if (needed == Needed::kBetter && !better) return false;
  parts_ = std::move(parts);
  facts_ = std::move(facts);
  differing_ = std::move(differing);
  return true;
}

bool CalendarEditor::TryPart(std::size_t part, CalendarPart lines, Needed needed) {
  CalendarParts parts = parts_;
  parts[part] = std::move(lines);
  return Try(std::move(parts), needed);
}

bool CalendarEditor::Begin(EditedCalendar& edited) {
  CalendarContext::Reading reading = context_.Read(parts_);
  if (!reading.item || *reading.item != from_) {
    edited.losses = {"cannot be told from the others of its UID"};
    return false;
  }
  DeskText text = TextOfItem(to_, context_.zone());
  canonical_ = CanonicalParts(text.bytes);
  edited.losses = std::move(text.losses);
  if (canonical_.empty()) return false;
  others_ = std::move(reading.others);
  if (const auto* to = std::get_if<Appointment>(&to_)) {
    const auto& from = std::get<Appointment>(from_);
    const SeriesEdit series(context_, style_, parts_, main_, from, *to, canonical_);
    for (const formats::local_days day : series.ownDays()) ownDays_.insert(formats::IsoDate(day));
    ownParts_ = series.ownParts();
  }
  wanted_ = FactsFor(to_);
  facts_ = FactsFor(*reading.item);
  differing_ = DifferingFields(facts_, wanted_);
  edited.done = true;
  return true;
}

bool CalendarEditor::SeriesDiffers() const {
  return std::any_of(differing_.begin(), differing_.end(), [](const std::string& field) {
    return field == "When" || field == "Rule" || IsOfADay(field);
  });
}

bool CalendarEditor::IsWantedAsSeries(const std::string& day, const std::string& field) const {
  const auto ofDay = wanted_.find(day + "/" + field);
  const auto ofSeries = wanted_.find(field);
  if (ofDay == wanted_.end() || ofSeries == wanted_.end())
    return ofDay == wanted_.end() && ofSeries == wanted_.end();
  return ofDay->second == ofSeries->second;
}

// A changed occurrence without a subject has what it does not say from its series. One that is no
// longer to follow that says all of it.
void CalendarEditor::SpellOutChanges() {
  for (const auto& [day, part] : ownParts_) {
    const std::string name = formats::IsoDate(day);
    CalendarPart own = parts_[part];
    if (FindLine(own, "SUMMARY") || !wanted_.contains(name + "/When")) continue;
    bool follows = true;
    for (const FieldLines& field : kFieldLines) {
      if (!IsTextOfOccurrence(field)) continue;
      follows = follows && IsWantedAsSeries(name, field.field);
      for (const std::string_view property : field.names) {
        const auto line = FindLine(parts_[main_], property);
        if (line && !FindLine(own, property)) InsertLine(own, parts_[main_][*line], {});
      }
    }
    if (!FindLine(own, "SUMMARY")) InsertLine(own, LineOf({{}, "SUMMARY", {}, {}}, style_), {});
    if (!follows) TryPart(part, std::move(own), Needed::kNotWorse);
  }
}

// One occurrence of several is changed by an event of its own.
bool CalendarEditor::TakeOutOccurrence(const Appointment& from, const Appointment& to) {
  if (FindLine(parts_[main_], "RECURRENCE-ID") || from.series) return true;
  const std::string original = OriginalOf(from.uid, parts_[main_]);
  if (original.empty()) return true;
  const std::optional<TimeValue> wall = TimeForms::FormOf(formats::Property(), original);
  if (!wall) return false;
  SeriesEdit series(context_, style_, parts_, main_, from, to, canonical_);
  CalendarParts parts = parts_;
  CalendarPart own = series.OccurrenceOf(parts_[main_], wall->time);
  Appointment same = to;
  static_cast<formats::Occurrence&>(same) = from;
  const DeskText text = TextOfItem(same, context_.zone());
  series.SetTimes(own, from, from, CanonicalParts(text.bytes).front(), TimeMode::kConverted);
  parts.push_back(std::move(own));
  if (!Try(std::move(parts), Needed::kNotWorse)) return false;
  main_ = parts_.size() - 1;
  return true;
}

// All of it together where that reads right, else what can be said of it.
void CalendarEditor::EditSeries(const Appointment& from, const Appointment& to) {
  if (!SeriesDiffers()) return;
  SeriesEdit series(context_, style_, parts_, main_, from, to, canonical_);
  const auto attempt = [&](SeriesPlan plan, Needed needed = Needed::kBetter) {
    for (const TimeMode mode : {TimeMode::kMoved, TimeMode::kConverted, TimeMode::kOwnZone}) {
      for (const bool wholeRule : {false, true}) {
        plan.mode = mode;
        plan.wholeRule = wholeRule;
        if (Try(series.Build(plan), needed)) return true;
      }
    }
    return false;
  };
  const bool times = Differs("When");
  const bool rule = Differs("Rule");
  const SeriesPlan all{times, rule || times, true};
  bool done = attempt(all);
  if (!done) {
    // An occurrence that has other words alone is none of its own before it has them.
    const CalendarParts parts = parts_;
    const std::set<std::string> differing = differing_;
    const ItemFacts facts = facts_;
    if (attempt(all, Needed::kNotWorse)) EditChanges(series);
    done = differing_.size() < differing.size();
    if (!done) {
      parts_ = parts;
      differing_ = differing;
      facts_ = facts;
    }
  }
  if (!done) done = attempt({times, rule, false});
  if (!done) done = attempt({times, false, false});
  if (!done) attempt({false, false, true});
  EditChanges(series);
}

void CalendarEditor::EditChanges(const SeriesEdit& series) {
  for (const auto& [day, part] : series.changes()) {
    const CalendarPart* canonical = CanonicalOf(day);
    if (canonical == nullptr || part >= parts_.size()) continue;
    EditTexts(part, formats::IsoDate(day) + "/", *canonical);
  }
}

const CalendarPart* CalendarEditor::CanonicalOf(formats::local_days day) const {
  for (const CalendarPart& part : canonical_) {
    const auto at = FindLine(part, "RECURRENCE-ID");
    const std::optional<TimeValue> id = at ? TimeForms::FormOf(part[*at]) : std::nullopt;
    if (id && formats::DayOf(id->isUtc ? context_.zone().ToLocal(
                                             formats::sys_seconds(id->time.time_since_epoch()))
                                       : id->time) == day)
      return &part;
  }
  return nullptr;
}

// A task's days; the time of day that its lines have stays.
void CalendarEditor::EditDays() {
  const auto& from = std::get<Task>(from_);
  const auto& to = std::get<Task>(to_);
  if (!Differs("Start") && !Differs("Due") && !Differs("Rule")) return;
  const auto set = [&](CalendarPart& part, const char* name,
                       const std::optional<formats::local_days>& old,
                       const std::optional<formats::local_days>& day, bool plain) {
    const auto at = FindLine(part, name);
    const auto wanted = FindLine(canonical_.front(), name);
    const std::optional<TimeValue> form = at ? TimeForms::FormOf(part[*at]) : std::nullopt;
    if (!wanted) return RemoveLines(part, name);
    if (form && old && day && !plain) {
      const std::string value = TimeForms::Spell(*form, form->time + (*day - *old));
      part[*at] = LineOf(WithValue(part[*at], value), style_);
    } else if (at) {
      part[*at] = LineOf(RawLine::Of(canonical_.front()[*wanted].text), style_);
    } else {
      InsertLine(part, LineOf(RawLine::Of(canonical_.front()[*wanted].text), style_), {"DTSTART"});
    }
  };
  for (const bool plain : {false, true}) {
    CalendarPart part = parts_[main_];
    if (Differs("Start") || plain) set(part, "DTSTART", from.start, to.start, plain);
    if (Differs("Due") || plain) set(part, "DUE", from.due, to.due, plain);
    if (Differs("Due") || plain) RemoveLines(part, "DURATION");
    const auto rule = FindLine(canonical_.front(), "RRULE");
    if (Differs("Rule") || plain) {
      RemoveLines(part, "RRULE");
      if (rule) {
        InsertLine(part, LineOf(RawLine::Of(canonical_.front()[*rule].text), style_),
                   {"DTSTART", "DUE"});
      }
    }
    if (TryPart(main_, std::move(part))) return;
  }
}

void CalendarEditor::EditTexts(std::size_t part, const std::string& before,
                               const CalendarPart& canonical) {
  for (const FieldLines& field : kFieldLines) {
    if (!Differs(before + field.field)) continue;
    for (CalendarPart& candidate : PropertyCandidates(parts_[part], canonical, field, style_)) {
      if (TryPart(part, std::move(candidate))) break;
    }
    if (std::string_view(field.field) != "Body" || Differs(before + field.field)) continue;
    CalendarPart lines = parts_[part];
    for (const char* name : {"X-ALT-DESC", "STYLED-DESCRIPTION"}) RemoveLines(lines, name);
    TryPart(part, std::move(lines), Needed::kNotWorse);
  }
}

void CalendarEditor::EditCategories() {
  const auto prefix = std::string("Categories/");
  const bool differs =
      std::any_of(differing_.begin(), differing_.end(),
                  [&](const std::string& field) { return field.starts_with(prefix); });
  if (!differs) return;
  CalendarPart part = parts_[main_];
  SetCategories(
      part, [&](const std::string& name) { return wanted_.contains(prefix + CommonText(name)); },
      std::visit([](const auto& item) { return item.categories; }, to_), style_);
  TryPart(main_, std::move(part));
}

// The first alarm that a handheld would take is the one; others stay.
void CalendarEditor::EditAlarm() {
  if (!Differs("Reminder")) return;
  const bool wanted = wanted_.contains("Reminder");
  const std::vector<PartRange> alarms = AlarmsOf(parts_[main_]);
  for (const PartRange& alarm : alarms) {
    for (CalendarPart& candidate :
         AlarmCandidates(parts_[main_], alarm, canonical_.front(), style_)) {
      const auto was = facts_.find("Reminder");
      const std::string old = was == facts_.end() ? "" : was->second;
      if (TryPart(main_, candidate)) return;
      // Without it the next one counts.
      if (wanted || !TryPart(main_, std::move(candidate), Needed::kNotWorse)) continue;
      if (facts_["Reminder"] != old) return;
    }
  }
  if (!wanted) return;
  CalendarPart part = parts_[main_];
  for (const PartRange& alarm : AlarmsOf(canonical_.front())) {
    for (std::size_t i = alarm.begin; i < alarm.end; ++i) {
      CalendarLine line = LineOf(RawLine::Of(canonical_.front()[i].text), style_);
      line.depth = 1;
      part.insert(part.end() - 1, std::move(line));
    }
  }
  TryPart(main_, std::move(part));
}

void CalendarEditor::NoteTime(std::chrono::sys_seconds when) {
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    if (i < before_.size() && TextOfPart(before_[i]) == TextOfPart(parts_[i])) continue;
    const auto at = FindLine(parts_[i], "LAST-MODIFIED");
    if (at) parts_[i][*at] = LineOf({{}, "LAST-MODIFIED", {}, formats::BasicUtc(when)}, style_);
  }
}

void CalendarEditor::TellLosses(std::vector<std::string>& losses) const {
  for (const std::string& field : differing_) {
    if (field == "Reminder" && !wanted_.contains(field)) continue;
    losses.push_back(field + ": cannot be said by an edit of this file");
  }
  const CalendarContext::Reading reading = context_.Read(parts_);
  if (reading.item && DifferingFields(FactsOf(*reading.item), FactsOf(to_)) != differing_) {
    losses.emplace_back(kFollows);
  }
}

EditedCalendar CalendarEditor::Edit(std::chrono::sys_seconds when) {
  EditedCalendar edited;
  if (!Begin(edited)) return edited;
  const auto* appointment = std::get_if<Appointment>(&to_);
  if (!differing_.empty()) {
    if (appointment != nullptr) {
      const auto& from = std::get<Appointment>(from_);
      SpellOutChanges();
      if (TakeOutOccurrence(from, *appointment)) {
        // Occurrences may follow what the event itself says.
        EditTexts(main_, "", canonical_.front());
        EditSeries(from, *appointment);
      }
    } else {
      EditDays();
    }
    EditTexts(main_, "", canonical_.front());
    EditCategories();
    EditAlarm();
    NoteTime(when);
  }
  for (const CalendarPart& part : parts_) edited.parts.push_back(TextOfPart(part));
  TellLosses(edited.losses);
  return edited;
}

}  // namespace

EditedCalendar EditCalendarItem(const CalendarContext& context, const CalendarParts& parts,
                                std::size_t main, const Item& from, const Item& to,
                                const LineStyle& style, std::chrono::sys_seconds when) {
  return CalendarEditor(context, parts, main, from, to, style).Edit(when);
}

EditedCalendar RemoveOccurrence(const CalendarContext& context, const CalendarParts& parts,
                                std::size_t main, const Item& item, const LineStyle& style) {
  EditedCalendar edited;
  CalendarContext::Reading reading = context.Read(parts);
  const std::optional<std::size_t> at = FindLine(parts[main], "DTSTART");
  const std::optional<TimeValue> start = at ? TimeForms::FormOf(parts[main][*at]) : std::nullopt;
  const std::optional<TimeValue> original =
      TimeForms::FormOf(formats::Property(), OriginalOf(UidOf(item), parts[main]));
  edited.losses = {"is one of several that the file says together"};
  if (!reading.item || *reading.item != item || !start) return edited;
  CalendarParts left = parts;
  if (FindLine(parts[main], "RECURRENCE-ID")) {
    left[main].clear();
  } else if (original) {
    InsertLine(left[main], LineOf(TimeForms::LineIn(*start, "EXDATE", original->time), style),
               {"DTSTART", "DTEND", "DURATION", "RRULE", "EXDATE"});
  }
  const CalendarContext::Reading now = context.Read(left);
  if (now.item || now.others != reading.others) return edited;
  edited.done = true;
  edited.losses.clear();
  for (const CalendarPart& part : left) edited.parts.push_back(TextOfPart(part));
  return edited;
}

}  // namespace desktop
