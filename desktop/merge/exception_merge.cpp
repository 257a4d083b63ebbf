#include "desktop/merge/exception_merge.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "common/calendar/wall_time.h"
#include "desktop/merge/field_words.h"
#include "desktop/merge/item.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::DayOf;
using formats::local_days;
using formats::Occurrence;
using formats::Series;

// What an occurrence has otherwise than its series; nothing where it is the same.
struct Difference {
  bool deleted = false;
  std::optional<std::string> subject;
  std::optional<std::string> location;
  std::optional<std::string> body;
  std::optional<When> when;
  std::optional<int> busyStatus;

  [[nodiscard]] bool none() const {
    return !deleted && !subject && !location && !body && !when && !busyStatus;
  }
};
using Differences = std::map<local_days, Difference>;

bool SameOptionalText(const std::optional<std::string>& a, const std::optional<std::string>& b) {
  return a.has_value() == b.has_value() && (!a || SameText(*a, *b));
}

bool SameDifference(const Difference& a, const Difference& b) {
  return a.deleted == b.deleted && SameOptionalText(a.subject, b.subject) &&
         SameOptionalText(a.location, b.location) && SameOptionalText(a.body, b.body) &&
         a.when == b.when && a.busyStatus == b.busyStatus;
}

Occurrence UsualOn(const Appointment& appointment, local_days day) {
  Occurrence usual = appointment;
  if (!usual.start) return usual;
  const auto shift = day - DayOf(*usual.start);
  *usual.start += shift;
  if (usual.end) *usual.end += shift;
  return usual;
}

Difference DifferenceOf(const Occurrence& occurrence, const Occurrence& usual) {
  Difference difference;
  const auto text = [](const std::string& own, const std::string& other) {
    return SameText(own, other) ? std::nullopt : std::optional(own);
  };
  difference.subject = text(occurrence.subject, usual.subject);
  difference.location = text(occurrence.location, usual.location);
  difference.body = text(occurrence.body, usual.body);
  if (WhenOf(occurrence) != WhenOf(usual)) difference.when = WhenOf(occurrence);
  if (occurrence.busyStatus != usual.busyStatus) difference.busyStatus = occurrence.busyStatus;
  return difference;
}

Occurrence WithDifference(Occurrence usual, const Difference& difference) {
  if (difference.subject) usual.subject = *difference.subject;
  if (difference.location) usual.location = *difference.location;
  if (difference.body) usual.body = *difference.body;
  if (difference.when) SetWhen(usual, *difference.when);
  if (difference.busyStatus) usual.busyStatus = *difference.busyStatus;
  return usual;
}

Differences DifferencesOf(const Appointment& appointment) {
  Differences differences;
  if (!appointment.series) return differences;
  for (const local_days day : appointment.series->deleted) differences[day].deleted = true;
  for (const formats::ChangedOccurrence& change : appointment.series->changed) {
    differences[change.original] =
        DifferenceOf(change.occurrence, UsualOn(appointment, change.original));
  }
  return differences;
}

const Difference& On(const Differences& differences, local_days day) {
  static const Difference none;
  const auto found = differences.find(day);
  return found == differences.end() ? none : found->second;
}

bool HasDay(const Appointment& appointment, local_days day) {
  return appointment.series && appointment.start && IsValid(appointment.series->pattern) &&
         IsDayOf(appointment.series->pattern, DayOf(*appointment.start), day);
}

void SetDifferences(Appointment& appointment, const Differences& differences) {
  if (!appointment.series) return;
  Series& series = *appointment.series;
  series.deleted.clear();
  series.changed.clear();
  for (const auto& [day, difference] : differences) {
    if (difference.none() || !HasDay(appointment, day)) continue;
    if (difference.deleted) {
      series.deleted.push_back(day);
    } else {
      series.changed.push_back({day, WithDifference(UsualOn(appointment, day), difference)});
    }
  }
}

std::string DifferenceWords(const Difference& difference) {
  if (difference.deleted) return "deleted";
  std::string words;
  const auto add = [&](const char* name, const std::string& value) {
    words += fmt::format("{}{}: {}", words.empty() ? "" : ", ", name, value);
  };
  if (difference.subject) add("Subject", Words(*difference.subject));
  if (difference.location) add("Location", Words(*difference.location));
  if (difference.when) {
    Occurrence occurrence;
    SetWhen(occurrence, *difference.when);
    add("When", WhenWords(occurrence));
  }
  if (difference.busyStatus) add("Busy status", BusyWords(*difference.busyStatus));
  if (difference.body) add("Note", Words(*difference.body));
  return words.empty() ? "as the series" : words;
}

template <typename Value, typename Same, typename ToWords>
void MergeDifferenceField(const Versions<Difference>& versions, const std::string& name,
                          std::optional<Value> Difference::*member, const Same& same,
                          const ToWords& words, MergeConflicts& conflicts) {
  using Field = std::optional<Value>;
  MergeField(
      versions, name, [&](const Difference& each) { return each.*member; },
      [&](Difference& each, const Field& value) { each.*member = value; }, same, same,
      [&](const Field& value) { return value ? words(*value) : "as the series"; }, conflicts);
}

void MergeDifference(const Versions<Difference>& versions, local_days day,
                     MergeConflicts& conflicts) {
  const std::string name = formats::IsoDate(day);
  const auto whole = [](const Difference& each) -> const Difference& { return each; };
  if (versions.winner.deleted || versions.loser.deleted || versions.winnerBase.deleted ||
      versions.loserBase.deleted) {
    return MergeField(
        versions, name, whole, [](Difference& out, const Difference& from) { out = from; },
        SameDifference, SameDifference, DifferenceWords, conflicts);
  }
  const auto words = [](const std::string& text) { return Words(text); };
  const auto equal = [](const auto& a, const auto& b) { return a == b; };
  MergeDifferenceField(versions, name + " Subject", &Difference::subject, SameOptionalText, words,
                       conflicts);
  MergeDifferenceField(versions, name + " Location", &Difference::location, SameOptionalText, words,
                       conflicts);
  MergeDifferenceField(
      versions, name + " When", &Difference::when, equal,
      [](const When& when) {
        Occurrence occurrence;
        SetWhen(occurrence, when);
        return WhenWords(occurrence);
      },
      conflicts);
  MergeDifferenceField(versions, name + " Busy status", &Difference::busyStatus, equal, BusyWords,
                       conflicts);
  MergeDifferenceField(versions, name + " Note", &Difference::body, SameOptionalText, words,
                       conflicts);
}

// What only one side has otherwise than its series, and did not change, the other one may have as
// well, where that is as its own series was: there it must not follow the series.
void KeepValues(const Appointment& own, local_days day, const Difference& other, Difference& out) {
  if (!own.series || out.deleted || other.deleted) return;
  const Occurrence usual = UsualOn(own, day);
  if (other.subject && !out.subject) out.subject = usual.subject;
  if (other.location && !out.location) out.location = usual.location;
  if (other.body && !out.body) out.body = usual.body;
  if (other.when && !out.when) out.when = WhenOf(usual);
  if (other.busyStatus && !out.busyStatus) out.busyStatus = usual.busyStatus;
}

}  // namespace

When WhenOf(const Occurrence& occurrence) {
  return {occurrence.allDay, occurrence.start, occurrence.end};
}

void SetWhen(Occurrence& occurrence, const When& when) {
  occurrence.allDay = when.allDay;
  occurrence.start = when.start;
  occurrence.end = when.end;
}

void MergeExceptions(const Versions<Appointment>& versions, MergeConflicts& conflicts) {
  const Differences winnerBase = DifferencesOf(versions.winnerBase);
  const Differences winner = DifferencesOf(versions.winner);
  const Differences loserBase = DifferencesOf(versions.loserBase);
  const Differences loser = DifferencesOf(versions.loser);
  Differences winnerOut = winner;
  Differences loserOut = loser;
  std::set<local_days> days;
  for (const Differences* each : {&winnerBase, &winner, &loserBase, &loser}) {
    for (const auto& [day, difference] : *each) days.insert(day);
  }
  for (const local_days day : days) {
    MergeDifference({On(winnerBase, day), On(winner, day), On(loserBase, day), On(loser, day),
                     winnerOut[day], loserOut[day]},
                    day, conflicts);
    KeepValues(versions.winner, day, loserOut[day], winnerOut[day]);
    KeepValues(versions.loser, day, winnerOut[day], loserOut[day]);
  }
  SetDifferences(versions.winnerOut, winnerOut);
  SetDifferences(versions.loserOut, loserOut);
}

std::string LostExceptions(const Appointment& ownBase, const Appointment& own,
                           const Appointment& other) {
  const Differences before = DifferencesOf(ownBase);
  const Differences others = DifferencesOf(other);
  std::string words;
  for (const auto& [day, difference] : DifferencesOf(own)) {
    if (difference.none() || SameDifference(difference, On(before, day)) || others.contains(day) ||
        HasDay(other, day)) {
      continue;
    }
    words += fmt::format("{}{} {}", words.empty() ? "" : "; ", formats::IsoDate(day),
                         DifferenceWords(difference));
  }
  return words;
}

}  // namespace desktop
