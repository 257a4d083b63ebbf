#include "common/formats/icalendar/event_series.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "common/formats/icalendar/event_fields.h"
#include "common/formats/icalendar/event_rules.h"
#include "common/formats/icalendar/exception_table.h"
#include "common/formats/icalendar/zone_alignment.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

constexpr long long kUnitsADate = 1'000;
constexpr std::string_view kOutside = "outside of the years 1900 to 2999, left out";

long long SizeOf(const Event& event) {
  std::size_t size = 500 + event.fields.subject.size() + event.fields.location.size() +
                     event.fields.body.size() + event.fields.uid.size();
  for (const std::string& category : event.fields.categories) size += category.size() + 50;
  return static_cast<long long>(size);
}

std::string Shown(local_seconds wall) {
  return wall == DayOf(wall) ? IsoDate(DayOf(wall)) : IsoDateTime(wall);
}

// A changed occurrence whose series is not there.
void AddOrphan(Event& change, const ZoneTable& zones, CalendarFile& file) {
  if (!change.start) change.start = change.recurrenceId;
  const Times times = TimesOf(change, zones);
  if (!AreKeepable(times)) {
    change.notices.Add(change.line, "DTSTART: " + std::string(kOutside));
    return;
  }
  const Moment& original = *change.recurrenceId;
  file.appointments.push_back(
      {AppointmentAt(change, times,
                     UidOfOccurrence(change.fields.uid, original.wall, original.isDate), zones),
       change.line});
}

void AddOrphans(std::vector<Event>& changes, const ZoneTable& zones, CalendarFile& file) {
  for (Event& change : changes) {
    if (change.isCancelled) {
      change.notices.Add(change.line,
                         "STATUS: a cancelled occurrence of a series that is not here");
      continue;
    }
    change.notices.Add(change.line,
                       "RECURRENCE-ID: the series is not here, kept as an appointment of its own");
    AddOrphan(change, zones, file);
  }
}

class SeriesBuilder {
 public:
  SeriesBuilder(Event& master, std::vector<Event>& changes, const ZoneTable& zones,
                WorkBudget& budget, CalendarFile& file)
      : master_(master),
        zones_(zones),
        budget_(budget),
        file_(file),
        rules_(master, budget),
        exceptions_(master, changes),
        start_(master.start->wall),
        clock_(start_ - DayOf(start_)) {}
  void Build();

 private:
  bool BuildSeries();
  void BuildSingles();
  Series SeriesOf(local_days firstDay, const Alignment& alignment);
  std::size_t MostCopies() const;
  void AddExtras(local_days firstDay);
  // Whether it is one that can be kept.
  bool AddOccurrence(local_seconds wall, const ListedDate* listed);
  void AddUnusedChanges();
  bool Add(Appointment appointment, const Times& times, std::size_t line);
  std::map<local_seconds, const ListedDate*> ListedDates() const;
  bool IsOfPattern(local_days firstDay, local_seconds wall) const;
  void NoticeStart(local_seconds first);
  void NoticeAlignment(const Alignment& alignment);
  void NoticeSingles(std::size_t count, local_seconds from, const RuleTimes& times);

  Event& master_;
  const ZoneTable& zones_;
  WorkBudget& budget_;
  CalendarFile& file_;
  EventRules rules_;
  ExceptionTable exceptions_;
  const local_seconds start_;  // on the event's own clock
  const seconds clock_;        // its time of day
  calendar::Pattern lookup_;   // the series' days, its end a day
};

void SeriesBuilder::Build() {
  if (!rules_.IsRecurring() && master_.dates.empty()) {
    const Times times = TimesOf(master_, zones_);
    Add(AppointmentAt(master_, times, master_.fields.uid, zones_), times, master_.line);
  } else {
    if (master_.alarm && master_.alarm->at) {
      master_.notices.Add(master_.alarm->line,
                          "TRIGGER: taken as so long before every occurrence as before the first");
    }
    if (!BuildSeries()) BuildSingles();
  }
  for (const auto& [wall, line] : exceptions_.UnusedDates()) {
    master_.notices.Add(line, "EXDATE: there is no occurrence on " + Shown(wall));
  }
  AddUnusedChanges();
}

// The days of which something is said are known on the event's own clock, so the series is looked
// at there, and what is found is moved.
bool SeriesBuilder::BuildSeries() {
  const std::optional<RulePattern> rule = rules_.Pattern();
  if (!rule) return false;
  const local_days firstDay = DayOf(rule->first);
  const auto isChanged = [&](local_days day) { return exceptions_.Has(day + clock_); };
  const std::optional<Alignment> alignment =
      Align(master_, rule->pattern, firstDay, DayOf(rules_.WindowBegin(rule->first)), MostCopies(),
            isChanged, zones_, budget_);
  if (!alignment || !AreKeepable(alignment->first)) return false;
  budget_.bytes -= SizeOf(master_) * static_cast<long long>(alignment->differing.size());
  lookup_ = rule->pattern;
  if (lookup_.occurrences) {
    lookup_.until = calendar::LastDayOf(lookup_, firstDay);
    lookup_.occurrences.reset();
  }
  Appointment appointment = AppointmentAt(master_, alignment->first, master_.fields.uid, zones_);
  appointment.series = SeriesOf(firstDay, *alignment);
  NoticeStart(rule->first);
  NoticeAlignment(*alignment);
  Add(std::move(appointment), alignment->first, master_.line);
  AddExtras(firstDay);
  return true;
}

// As many as are followed, and as the budget has room for.
std::size_t SeriesBuilder::MostCopies() const {
  const long long room = std::max<long long>(1, budget_.bytes / SizeOf(master_));
  return static_cast<std::size_t>(std::min<long long>(room, kMostFollowed));
}

bool SeriesBuilder::IsOfPattern(local_days firstDay, local_seconds wall) const {
  const local_days day = DayOf(wall);
  return wall == day + clock_ && calendar::IsDayOf(lookup_, firstDay, day);
}

Series SeriesBuilder::SeriesOf(local_days firstDay, const Alignment& alignment) {
  std::map<local_days, Occurrence> changed;
  std::set<local_days> deleted;
  for (const auto& [day, times] : alignment.differing) {
    Occurrence occurrence = master_.fields;
    occurrence.start = times.start;
    occurrence.end = times.end;
    changed[day + alignment.shift] = std::move(occurrence);
  }
  for (const local_seconds wall : exceptions_.Times()) {
    if (budget_.isUsedUp()) {
      master_.notices.Add(master_.line, "EXDATE: from " + Shown(wall) +
                                            " on exceptions are left out, the file has too many");
      break;
    }
    budget_.units -= kUnitsADate;
    if (!IsOfPattern(firstDay, wall)) continue;
    const local_days day = DayOf(wall) + alignment.shift;
    const bool excluded = exceptions_.Excludes(wall);
    Event* change = exceptions_.ChangeOf(wall);
    if (change == nullptr || change->isCancelled) {
      if (excluded || change != nullptr) deleted.insert(day);
      continue;
    }
    const Occurrence occurrence =
        OccurrenceOf(*change, master_, TimesAt(master_, wall, zones_), zones_);
    if (AreKeepable({*occurrence.start, *occurrence.end})) {
      NoticeUnkeptChanges(*change, master_, zones_);
      changed[day] = occurrence;
    } else {
      change->notices.Add(change->line, "DTSTART: " + std::string(kOutside));
    }
  }
  Series series;
  series.pattern = alignment.pattern;
  series.deleted.assign(deleted.begin(), deleted.end());
  for (auto& [day, occurrence] : changed) series.changed.push_back({day, std::move(occurrence)});
  return series;
}

std::map<local_seconds, const ListedDate*> SeriesBuilder::ListedDates() const {
  std::map<local_seconds, const ListedDate*> dates;
  for (const ListedDate& date : master_.dates) {
    dates.try_emplace(SeriesTimeOf(master_, date.moment), &date);
  }
  return dates;
}

// A DTSTART that its rule does not give, and RDATEs, beside the series.
void SeriesBuilder::AddExtras(local_days firstDay) {
  std::map<local_seconds, const ListedDate*> extras = ListedDates();
  const std::size_t listed = extras.size();
  if (start_ < firstDay + clock_ && IsKeepableDay(DayOf(start_))) {
    extras.try_emplace(start_, nullptr);
    master_.notices.Add(master_.line, "DTSTART: no day of its rule, an appointment of its own");
  }
  if (listed > 0) {
    master_.notices.Add(master_.line,
                        "RDATE: a series has no additional dates, each is an "
                        "appointment of its own");
  }
  for (const auto& [wall, date] : extras) {
    if (budget_.isUsedUp()) {
      master_.notices.Add(master_.line, "RDATE: from " + Shown(wall) +
                                            " on dates are left out, the file has too many");
      break;
    }
    budget_.units -= kUnitsADate;
    if (!IsOfPattern(firstDay, wall)) AddOccurrence(wall, date);
  }
}

void SeriesBuilder::BuildSingles() {
  const local_seconds from =
      rules_.WindowBegin(std::max<local_seconds>(start_, calendar::kFirstDay));
  const std::size_t most = MostCopies();
  std::map<local_seconds, const ListedDate*> dates = ListedDates();
  RuleTimes times = rules_.Times(from, from + kFollowedDays, most);
  for (const local_seconds wall : times.times) dates.try_emplace(wall, nullptr);
  if (start_ >= from && !rules_.TakesAway(start_)) dates.try_emplace(start_, nullptr);
  std::size_t count = 0;
  for (const auto& [wall, date] : dates) {
    if (count == most) {
      times.cut = true;
      times.end = std::min(times.end, wall);
      break;
    }
    if (AddOccurrence(wall, date)) ++count;
  }
  NoticeSingles(count, from, times);
}

bool SeriesBuilder::AddOccurrence(local_seconds wall, const ListedDate* listed) {
  const bool excluded = exceptions_.Excludes(wall);
  Event* change = exceptions_.ChangeOf(wall);
  if ((excluded && change == nullptr) || (change != nullptr && change->isCancelled)) return false;
  budget_.bytes -= SizeOf(master_);
  Times times =
      listed == nullptr ? TimesAt(master_, wall, zones_) : TimesOf(master_, *listed, zones_);
  Appointment appointment = AppointmentAt(
      master_, times, UidOfOccurrence(master_.fields.uid, wall, master_.start->isDate), zones_);
  if (change != nullptr) {
    NoticeUnkeptChanges(*change, master_, zones_);
    static_cast<Occurrence&>(appointment) = OccurrenceOf(*change, master_, times, zones_);
    times = {*appointment.start, *appointment.end};
  }
  return Add(std::move(appointment), times, change != nullptr ? change->line : master_.line);
}

void SeriesBuilder::AddUnusedChanges() {
  for (Event* change : exceptions_.UnusedChanges()) {
    const std::string day = Shown(change->recurrenceId->wall);
    if (change->isCancelled) {
      change->notices.Add(change->line, "RECURRENCE-ID: there is no occurrence on " + day);
      continue;
    }
    change->notices.Add(change->line, "RECURRENCE-ID: there is no occurrence on " + day +
                                          ", kept as an appointment of its own");
    AddOrphan(*change, zones_, file_);
  }
}

bool SeriesBuilder::Add(Appointment appointment, const Times& times, std::size_t line) {
  if (AreKeepable(times)) {
    file_.appointments.push_back({std::move(appointment), line});
    return true;
  }
  master_.notices.Add(line, "DTSTART: " + std::string(kOutside));
  return false;
}

void SeriesBuilder::NoticeStart(local_seconds first) {
  if (IsKeepableDay(DayOf(start_))) return;
  master_.notices.Add(master_.line,
                      "DTSTART: before 1900, the series is kept from " + Shown(first) + " on");
}

void SeriesBuilder::NoticeAlignment(const Alignment& alignment) {
  if (alignment.differing.empty() && !alignment.differsAfter) return;
  const std::size_t count = alignment.differing.size();
  std::string text =
      "RRULE: at another time in this zone and kept as changed: " + std::to_string(count) +
      (count == 1 ? " occurrence" : " occurrences");
  if (alignment.differsAfter) {
    text += "; from " + Shown(*alignment.differsAfter) + " on all have the time of the others";
  }
  master_.notices.Add(master_.rules.front().line, std::move(text));
}

void SeriesBuilder::NoticeSingles(std::size_t count, local_seconds from, const RuleTimes& times) {
  const bool byRule = rules_.IsRecurring();
  std::string text = byRule ? "RRULE: no pattern of a handheld says this"
                            : "RDATE: a handheld has no lists of dates";
  if (count == 0) text += ", and no occurrence of it is left";
  if (count == 1) text += "; kept as 1 appointment of its own";
  if (count > 1) text += "; kept as " + std::to_string(count) + " appointments of their own";
  if (from > start_) text += ", from " + Shown(from);
  if (times.cut) text += ", until " + Shown(times.end);
  master_.notices.Add(byRule ? master_.rules.front().line : master_.dates.front().line,
                      std::move(text));
}

}  // namespace

void AddAppointments(EventGroup group, const ZoneTable& zones, WorkBudget& budget,
                     CalendarFile& file) {
  std::vector<Event*> events;
  if (group.master) events.push_back(&*group.master);
  for (Event& change : group.changes) events.push_back(&change);

  if (!group.master) {
    AddOrphans(group.changes, zones, file);
  } else if (group.master->isCancelled) {
    group.master->notices.Add(group.master->line, "STATUS: the event is cancelled, left out");
  } else if (!group.master->start) {
    group.master->notices.Add(group.master->line, "DTSTART: an event without a start, left out");
  } else {
    SeriesBuilder(*group.master, group.changes, zones, budget, file).Build();
  }
  for (Event* event : events) {
    for (Notice& notice : event->notices.Release()) file.notices.push_back(std::move(notice));
  }
}

}  // namespace formats
