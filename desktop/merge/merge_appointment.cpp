#include <functional>
#include <optional>
#include <string>

#include "common/calendar/pattern_words.h"
#include "common/calendar/wall_time.h"
#include "desktop/merge/entry_merge.h"
#include "desktop/merge/exception_merge.h"
#include "desktop/merge/field_words.h"
#include "desktop/merge/item.h"
#include "desktop/merge/item_merge.h"

namespace desktop {
namespace {

using calendar::Pattern;
using formats::Appointment;
using formats::DayOf;
using formats::local_days;
using formats::Series;

using Rule = std::optional<Pattern>;

Rule RuleOf(const Appointment& appointment) {
  return appointment.series ? Rule(appointment.series->pattern) : std::nullopt;
}

void SetRule(Appointment& appointment, const Rule& rule) {
  if (!rule) return appointment.series.reset();
  if (!appointment.series) appointment.series.emplace();
  appointment.series->pattern = *rule;
}

std::string RuleWords(const Rule& rule) {
  return rule ? PatternWords(*rule) : std::string();
}

template <typename Owner, typename Member, typename ToWords>
void MergeMember(const Versions<Appointment>& versions, const char* name, Member Owner::*member,
                 const ToWords& words, MergeConflicts& conflicts) {
  MergeField(
      versions, name, [&](const Appointment& each) { return each.*member; },
      [&](Appointment& each, const Member& value) { each.*member = value; }, std::equal_to<>(),
      std::equal_to<>(), words, conflicts);
}

void MergeText(const Versions<Appointment>& versions, const char* name,
               std::string Appointment::*member, MergeConflicts& conflicts) {
  MergeField(
      versions, name, [&](const Appointment& each) -> const std::string& { return each.*member; },
      [&](Appointment& each, const std::string& text) { each.*member = text; }, SameText, SameText,
      [](const std::string& text) { return Words(text); }, conflicts);
}

std::optional<local_days> FirstDayOf(const Appointment& appointment) {
  return appointment.start ? std::optional<local_days>(DayOf(*appointment.start)) : std::nullopt;
}

// When it begins and its rule together say on which days a series falls.
class SeriesMerge {
 public:
  explicit SeriesMerge(const Versions<Appointment>& versions)
      : versions_(versions),
        when_(FlowOfField(versions, WhenOf, std::equal_to<>(), std::equal_to<>())),
        rule_(FlowOfField(versions, RuleOf, std::equal_to<>(), std::equal_to<>())) {
    if (!versions.winner.series && !versions.loser.series) return;
    KeepTogether();
    winnerLost_ = LostExceptions(versions.winnerBase, versions.winner, versions.loser);
    loserLost_ = LostExceptions(versions.loserBase, versions.loser, versions.winner);
    if (!winnerLost_.empty()) KeepExceptions(versions.loserBase, versions.loser, Flow::kToWinner);
    if (!loserLost_.empty()) KeepExceptions(versions.winnerBase, versions.winner, Flow::kToLoser);
  }

  void Run(MergeConflicts& conflicts) const {
    LetFlow(versions_, when_, WhenOf, SetWhen);
    LetFlow(versions_, rule_, RuleOf, SetRule);
    if (when_ == Flow::kConflict) {
      Tell("When", WhenWords(versions_.winner), WhenWords(versions_.loser), conflicts);
    }
    if (rule_ == Flow::kConflict) {
      Tell("Recurrence", RuleWords(RuleOf(versions_.winner)), RuleWords(RuleOf(versions_.loser)),
           conflicts);
    }
  }

 private:
  // A first day of one side and a rule of the other would make days that nobody meant.
  void KeepTogether() {
    const bool moved = FirstDayOf(versions_.winnerBase) != FirstDayOf(versions_.winner) ||
                       FirstDayOf(versions_.loserBase) != FirstDayOf(versions_.loser);
    if (!moved || when_ == rule_ || when_ == Flow::kNone || rule_ == Flow::kNone) return;
    when_ = Flow::kConflict;
    rule_ = Flow::kConflict;
  }

  // The days that one side gives the series would travel to the other one, which has changed what
  // happens on a day that is none of them.
  void KeepExceptions(const Appointment& base, const Appointment& current, Flow fromThere) {
    if (when_ == fromThere && FirstDayOf(base) != FirstDayOf(current)) when_ = Flow::kConflict;
    if (rule_ == fromThere) rule_ = Flow::kConflict;
  }

  void Tell(const char* name, const std::string& winner, const std::string& loser,
            MergeConflicts& conflicts) const {
    const auto with = [](const std::string& words, const std::string& lost) {
      return words.empty() || lost.empty() ? words + lost : words + "; " + lost;
    };
    conflicts.push_back({name, with(winner, winnerLost_), with(loser, loserLost_)});
  }

  const Versions<Appointment>& versions_;
  Flow when_;
  Flow rule_;
  std::string winnerLost_;  // exceptions that the other side has no days for, as words
  std::string loserLost_;
};

void MergeNormalized(const Versions<Appointment>& versions, MergeConflicts& conflicts) {
  MergeText(versions, "Subject", &Appointment::subject, conflicts);
  MergeText(versions, "Location", &Appointment::location, conflicts);
  SeriesMerge(versions).Run(conflicts);
  MergeMember(versions, "Busy status", &Appointment::busyStatus, BusyWords, conflicts);
  MergeMember(versions, "Reminder", &Appointment::reminderMinutes, ReminderWords, conflicts);
  MergeMember(
      versions, "Private", &Appointment::isPrivate, [](bool value) { return Words(value); },
      conflicts);
  MergeText(versions, "Note", &Appointment::body, conflicts);
  MergeNames({versions.winnerBase.categories, versions.winner.categories,
              versions.loserBase.categories, versions.loser.categories,
              versions.winnerOut.categories, versions.loserOut.categories});
  MergeExceptions(versions, conflicts);
}

}  // namespace

void MergeAppointment(const Versions<Appointment>& versions, MergeConflicts& conflicts) {
  MergeAsNormal(versions,
                [&](const Versions<Appointment>& each) { MergeNormalized(each, conflicts); });
}

}  // namespace desktop
