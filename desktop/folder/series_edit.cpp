#include "desktop/folder/series_edit.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "common/calendar/wall_time.h"
#include "common/text/text.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::ChangedOccurrence;
using formats::DayOf;
using formats::Occurrence;
using std::chrono::days;
using std::chrono::seconds;

constexpr const char* kOfTheValue[] = {"ENCODING", "CHARSET", "X-LINE-BREAKS", "ALTREP"};
constexpr std::string_view kOfASeries[] = {"RRULE", "RDATE", "EXDATE", "EXRULE"};

std::string SpanText(seconds length, bool inDays) {
  if (inDays) return fmt::format("P{}D", std::chrono::ceil<days>(length).count());
  const auto hours = std::chrono::floor<std::chrono::hours>(length);
  const auto minutes = std::chrono::floor<std::chrono::minutes>(length - hours);
  std::string text = "PT";
  if (hours.count() > 0) text += fmt::format("{}H", hours.count());
  if (minutes.count() > 0 || hours.count() == 0) text += fmt::format("{}M", minutes.count());
  return text;
}

using RuleParts = std::vector<std::pair<std::string, std::string>>;

RuleParts SplitRule(std::string_view rule) {
  RuleParts parts;
  while (!rule.empty()) {
    const std::string_view part = rule.substr(0, rule.find(';'));
    const std::size_t equals = part.find('=');
    parts.emplace_back(text::ToUpperAscii(text::TrimBlanks(part.substr(0, equals))),
                       equals == std::string_view::npos ? "" : part.substr(equals + 1));
    rule.remove_prefix(std::min(rule.size(), part.size() + 1));
  }
  return parts;
}

// The rule with the other's end, and all else as it is.
std::string WithEndOf(std::string_view rule, std::string_view other) {
  const auto isEnd = [](const std::string& name) { return name == "COUNT" || name == "UNTIL"; };
  std::string text;
  const auto add = [&](const std::pair<std::string, std::string>& part) {
    if (!text.empty()) text += ';';
    text += part.first + "=" + part.second;
  };
  for (const auto& part : SplitRule(rule)) {
    if (!isEnd(part.first)) add(part);
  }
  for (const auto& part : SplitRule(other)) {
    if (isEnd(part.first)) add(part);
  }
  return text;
}

const CalendarLine* Line(const CalendarPart& part, std::string_view name) {
  const std::optional<std::size_t> at = FindLine(part, name);
  return at ? &part[*at] : nullptr;
}

bool IsCancelled(const CalendarPart& part) {
  const CalendarLine* status = Line(part, "STATUS");
  return status != nullptr &&
         text::EqualsNoCase(text::TrimBlanks(status->property->value), "CANCELLED");
}

// Whether all that has changed of an occurrence has changed of its series as well.
bool IsSameOrFollows(const Occurrence& now, const Occurrence& before, const Occurrence& seriesWas,
                     const Occurrence& series) {
  const auto follows = [&](auto Occurrence::*member) {
    return now.*member == before.*member ||
           (before.*member == seriesWas.*member && now.*member == series.*member);
  };
  const auto moves = [&](std::optional<local_seconds> Occurrence::*member) {
    if (now.*member == before.*member) return true;
    return now.*member && before.*member && series.*member && seriesWas.*member &&
           *(now.*member) - *(before.*member) == *(series.*member) - *(seriesWas.*member);
  };
  return follows(&Occurrence::subject) && follows(&Occurrence::location) &&
         follows(&Occurrence::body) && follows(&Occurrence::busyStatus) &&
         follows(&Occurrence::allDay) && moves(&Occurrence::start) && moves(&Occurrence::end);
}

const ChangedOccurrence* ChangeOf(const Appointment& of, local_days day) {
  if (!of.series) return nullptr;
  for (const ChangedOccurrence& change : of.series->changed) {
    if (change.original == day) return &change;
  }
  return nullptr;
}

}  // namespace

RawLine WithValue(const CalendarLine& line, std::string value) {
  RawLine raw = RawLine::Of(line.text);
  for (const char* parameter : kOfTheValue) raw.DropParameter(parameter);
  raw.value = std::move(value);
  return raw;
}

SeriesEdit::SeriesEdit(const CalendarContext& context, const LineStyle& style,
                       const CalendarParts& parts, std::size_t main, const Appointment& was,
                       const Appointment& to, const CalendarParts& canonical)
    : style_(style),
      parts_(parts),
      main_(main),
      was_(was),
      to_(to),
      canonical_(canonical),
      forms_(context) {
  const CalendarLine* start = Line(parts[main], "DTSTART");
  if (start == nullptr) return;
  oldStart_ = TimeForms::FormOf(*start);
  if (!oldStart_ || !was.start) return;
  oldShift_ = DayOf(*was.start) - DayOf(forms_.WallIn(*oldStart_, *was.start));
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const CalendarLine* id = i == main ? nullptr : Line(parts[i], "RECURRENCE-ID");
    const std::optional<TimeValue> value = id == nullptr ? std::nullopt : TimeForms::FormOf(*id);
    if (!value) continue;
    ownParts_.emplace(DayOfException(*value), i);
    ownDays_.insert(DayOfException(*value));
  }
  if (!to.series) return;
  for (const ChangedOccurrence& change : to.series->changed) {
    const ChangedOccurrence* before = ChangeOf(was, change.original);
    const bool follows =
        before != nullptr && IsSameOrFollows(change.occurrence, before->occurrence, was, to);
    if (!follows) ownDays_.insert(change.original);
  }
}

local_seconds SeriesEdit::WallOf(const TimeValue& form, local_seconds was, local_seconds to,
                                 TimeMode mode) {
  return mode == TimeMode::kMoved ? form.time + (to - was) : forms_.WallIn(form, to);
}

// Its value in the form that it has; in the handheld's zone when it has none of its own.
void SeriesEdit::SetTimes(CalendarPart& part, const Occurrence& was, const Occurrence& to,
                          const CalendarPart& canonical, TimeMode mode) {
  const std::optional<std::size_t> at = FindLine(part, "DTSTART");
  std::optional<TimeValue> form = at ? TimeForms::FormOf(part[*at]) : std::nullopt;
  const bool keepsForm = form && mode != TimeMode::kOwnZone && form->isDate == to.allDay;
  if (!keepsForm) {
    const CalendarLine* start = Line(canonical, "DTSTART");
    form = start == nullptr ? std::nullopt : TimeForms::FormOf(*start);
    mode = TimeMode::kConverted;
  }
  if (!form || !to.start || !to.end || !was.start || !was.end) return;
  form->time = WallOf(*form, *was.start, *to.start, mode);
  CalendarLine line = keepsForm ? Write(WithValue(part[*at], TimeForms::Spell(*form, form->time)))
                                : Write(TimeForms::LineIn(*form, "DTSTART", form->time));
  if (at) {
    part[*at] = std::move(line);
  } else {
    InsertLine(part, std::move(line), {"UID", "RECURRENCE-ID"});
  }
  if (!keepsForm) RemoveLines(part, "DURATION");
  if (!keepsForm) RemoveLines(part, "DTEND");
  SetEnd(part, was, to, *form, mode);
  if (const auto flag = FindLine(part, "X-MICROSOFT-CDO-ALLDAYEVENT")) {
    part[*flag] = Write(WithValue(part[*flag], to.allDay ? "TRUE" : "FALSE"));
  }
}

// As DTEND or DURATION, whichever there is.
void SeriesEdit::SetEnd(CalendarPart& part, const Occurrence& was, const Occurrence& to,
                        const TimeValue& start, TimeMode mode) {
  const seconds length = *to.end - *to.start;
  if (const auto at = FindLine(part, "DURATION")) {
    if (length != *was.end - *was.start) {
      part[*at] = Write(WithValue(part[*at], SpanText(length, start.isDate)));
    }
    return;
  }
  const auto at = FindLine(part, "DTEND");
  if (length == seconds(0)) return RemoveLines(part, "DTEND");
  std::optional<TimeValue> form = at ? TimeForms::FormOf(part[*at]) : std::nullopt;
  if (form && form->isDate == start.isDate) {
    const std::string value = TimeForms::Spell(*form, WallOf(*form, *was.end, *to.end, mode));
    part[*at] = Write(WithValue(part[*at], value));
    return;
  }
  if (start.isDate && length == days(1)) return;
  RemoveLines(part, "DTEND");
  const local_seconds wall =
      mode == TimeMode::kMoved ? start.time + length : forms_.WallIn(start, *to.end);
  InsertLine(part, Write(TimeForms::LineIn(start, "DTEND", wall)), {"DTSTART"});
}

void SeriesEdit::SetRule(CalendarPart& part, bool whole) const {
  const CalendarLine* wanted = Line(canonical_.front(), "RRULE");
  if (wanted == nullptr) return RemoveLines(part, "RRULE");
  std::string value = wanted->property->value;
  // What floats ends at a time that floats.
  const bool floats = start_ && !start_->isDate && !start_->isUtc && start_->tzid.empty();
  const std::size_t until = value.find("UNTIL=");
  if (floats && until != std::string::npos && to_.series && to_.series->pattern.until) {
    value.resize(until);
    const seconds clock = *to_.start - DayOf(*to_.start);
    value += "UNTIL=" + formats::BasicDateTime(*to_.series->pattern.until + clock);
  }
  const auto at = FindLine(part, "RRULE");
  if (!at)
    return InsertLine(part, Write({{}, "RRULE", {}, value}), {"DTSTART", "DTEND", "DURATION"});
  const std::string own = part[*at].property->value;
  part[*at] = Write(WithValue(part[*at], whole ? value : WithEndOf(own, value)));
}

local_days SeriesEdit::DayOfException(const TimeValue& value) {
  // A time that names an exception of whole days has its date, whatever its zone.
  if (oldStart_->isDate) return DayOf(value.time) + oldShift_;
  if (value.isDate) return DayOf(value.time);
  return DayOf(forms_.Convert(value, *oldStart_)) + oldShift_;
}

local_seconds SeriesEdit::WallOfDay(local_days day) const {
  return day - shift_ + (start_->time - DayOf(start_->time));
}

local_seconds SeriesEdit::TimeOfException(local_days day, const TimeValue& like) {
  const local_seconds wall = WallOfDay(day);
  if (start_->isDate) return wall + (like.time - DayOf(like.time));
  return forms_.Convert({wall, start_->isDate, start_->isUtc, start_->tzid}, like);
}

void SeriesEdit::SetDeletedDays(CalendarPart& part) {
  const std::vector<local_days> none;
  const std::vector<local_days>& deleted = was_.series ? was_.series->deleted : none;
  const std::set<local_days> old(deleted.begin(), deleted.end());
  std::set<local_days> missing(to_.series->deleted.begin(), to_.series->deleted.end());
  for (std::size_t i = part.size(); i-- > 0;) {
    const CalendarLine& line = part[i];
    if (line.depth != 0 || !line.property || line.property->name != "EXDATE") continue;
    std::string values;
    bool changed = false;
    for (const std::string_view value : formats::SplitValue(line.property->value, ',')) {
      const std::optional<TimeValue> form = TimeForms::FormOf(*line.property, value);
      const local_days day = form ? DayOfException(*form) : local_days();
      std::string spelled(value);
      if (form && old.contains(day)) {
        const bool stays = missing.erase(day) > 0;
        changed = changed || !stays;
        if (!stays) continue;
        const local_seconds wall = TimeOfException(day, *form);
        if (!form->isDate && form->time != wall) spelled = TimeForms::Spell(*form, wall);
        changed = changed || spelled != value;
      }
      values += (values.empty() ? "" : ",") + spelled;
    }
    if (values.empty()) {
      part.erase(part.begin() + static_cast<std::ptrdiff_t>(i));
    } else if (changed) {
      part[i] = Write(WithValue(line, values));
    }
  }
  for (const local_days day : cancelled_) missing.erase(day);
  for (const local_days day : missing) {
    InsertLine(part, Write(TimeForms::LineIn(*start_, "EXDATE", WallOfDay(day))),
               {"DTSTART", "DTEND", "DURATION", "RRULE", "EXDATE"});
  }
}

// Parts of changes that are there stay, as far as the changes do.
void SeriesEdit::SetChanges(CalendarParts& parts, const SeriesPlan& plan) {
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto at = FindLine(parts[i], "RECURRENCE-ID");
    const std::optional<TimeValue> id =
        at && i != main_ ? TimeForms::FormOf(parts[i][*at]) : std::nullopt;
    if (!id) continue;
    const local_days day = DayOfException(*id);
    const ChangedOccurrence* change = ChangeOf(to_, day);
    const std::vector<local_days>& deleted = to_.series->deleted;
    const bool off =
        IsCancelled(parts[i]) && std::find(deleted.begin(), deleted.end(), day) != deleted.end();
    if ((change == nullptr || IsCancelled(parts[i])) && !off) {
      // One of an occurrence that the series does not have says nothing of it.
      const bool was = ChangeOf(was_, day) != nullptr || IsCancelled(parts[i]);
      if (was) parts[i].clear();
      continue;
    }
    const local_seconds wall = TimeOfException(day, *id);
    if (!id->isDate && wall != id->time) {
      parts[i][*at] = Write(WithValue(parts[i][*at], TimeForms::Spell(*id, wall)));
    }
    if (off) {
      cancelled_.insert(day);
      continue;
    }
    changes_[day] = i;
    const ChangedOccurrence* before = ChangeOf(was_, day);
    const Occurrence& occurrence = change->occurrence;
    const bool same = before != nullptr && before->occurrence.start == occurrence.start &&
                      before->occurrence.end == occurrence.end &&
                      before->occurrence.allDay == occurrence.allDay;
    if (!same) {
      const Occurrence& was = before == nullptr ? occurrence : before->occurrence;
      SetTimes(parts[i], was, occurrence, canonical_.front(),
               plan.mode == TimeMode::kMoved ? TimeMode::kConverted : plan.mode);
    }
  }
  for (std::size_t i = 0; i < to_.series->changed.size(); ++i) {
    const ChangedOccurrence& change = to_.series->changed[i];
    if (changes_.contains(change.original) || !ownDays_.contains(change.original)) continue;
    CalendarPart part = OccurrenceOf(parts[main_], WallOfDay(change.original));
    // A day of a series of times, or the other way round, is written as the writer does.
    const CalendarPart& like = i + 1 < canonical_.size() ? canonical_[i + 1] : canonical_.front();
    SetTimes(part, change.occurrence, change.occurrence, like,
             plan.mode == TimeMode::kMoved ? TimeMode::kConverted : plan.mode);
    changes_[change.original] = parts.size();
    parts.push_back(std::move(part));
  }
}

CalendarPart SeriesEdit::OccurrenceOf(const CalendarPart& event, local_seconds original) const {
  CalendarPart part = event;
  for (const std::string_view name : kOfASeries) RemoveLines(part, name);
  const std::optional<TimeValue> form = start_ ? start_ : oldStart_;
  InsertLine(part, Write(TimeForms::LineIn(*form, "RECURRENCE-ID", original)), {"UID"});
  return part;
}

CalendarParts SeriesEdit::Build(const SeriesPlan& plan) {
  CalendarParts parts = parts_;
  changes_.clear();
  cancelled_.clear();
  start_ = oldStart_;
  shift_ = oldShift_;
  if (!oldStart_) return parts;
  CalendarPart& event = parts[main_];
  if (plan.times) {
    SetTimes(event, was_, to_, canonical_.front(), plan.mode);
    const CalendarLine* line = Line(event, "DTSTART");
    start_ = line == nullptr ? oldStart_ : TimeForms::FormOf(*line);
    if (!start_) start_ = oldStart_;
    if (to_.start && plan.mode != TimeMode::kMoved) {
      shift_ = DayOf(*to_.start) - DayOf(forms_.WallIn(*start_, *to_.start));
    }
  }
  if (plan.rule) SetRule(event, plan.wholeRule);
  if (!plan.exceptions) return parts;
  if (to_.series) {
    SetChanges(parts, plan);
    SetDeletedDays(parts[main_]);
    return parts;
  }
  for (const std::string_view name : kOfASeries) RemoveLines(event, name);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i != main_ && FindLine(parts[i], "RECURRENCE-ID")) parts[i].clear();
  }
  return parts;
}

}  // namespace desktop
