// Random edits on both sides of a merge.
#pragma once

#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/items/normal_form.h"
#include "common/formats/vcard/contact_slots.h"
#include "tests/desktop/merge/merge_support.h"

namespace desktop::testing {

using calendar::Pattern;
using calendar::PatternType;
using formats::Occurrence;
using formats::SeriesEnd;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::local_days;

// Few values, so that sides often come to have the same one.
inline std::string FewTexts() {
  return *rc::gen::element<std::string>("", "a", "b", "c", "a\r\nb", "d", "e");
}

inline bool OneIn(int count) {
  return *rc::gen::inRange(0, count) == 0;
}

inline local_days SomeDay() {
  return local_days{std::chrono::year{2008} / 2 / 1} + days{*rc::gen::inRange(0, 40)};
}

inline void EditNames(std::vector<std::string>& names) {
  const std::string name = *rc::gen::element<std::string>("a", "b", "c", "d");
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) {
    names.push_back(name);
  } else {
    names.erase(found);
  }
}

inline void Edit(Contact& contact) {
  if (OneIn(8)) return EditNames(contact.categories);
  if (OneIn(10)) {
    contact.birthday = std::chrono::year_month_day(SomeDay());
    return;
  }
  const auto field = static_cast<ContactField>(*rc::gen::weightedOneOf<std::size_t>(
      {{1, rc::gen::inRange<std::size_t>(0, formats::kContactFieldCount)},
       {1, rc::gen::inRange<std::size_t>(0, 6)}}));
  contact[field] = FewTexts();
  const auto clearRepeated = [&](std::span<const ContactField> slots) {
    for (const ContactField slot : slots) {
      if (slot != field && SameText(contact[slot], contact[field])) contact[slot].clear();
    }
  };
  if (std::ranges::find(formats::kEmailSlots, field) != formats::kEmailSlots.end()) {
    clearRepeated(formats::kEmailSlots);
  }
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) {
    if (std::ranges::find(kind.slots, field) != kind.slots.end()) clearRepeated(kind.slots);
  }
}

inline void EditOccurrence(Occurrence& occurrence) {
  switch (*rc::gen::inRange(0, 5)) {
    case 0:
      occurrence.subject = FewTexts();
      return;
    case 1:
      occurrence.location = FewTexts();
      return;
    case 2:
      occurrence.busyStatus = *rc::gen::inRange(0, 4);
      return;
    case 3:
      *occurrence.start += hours{*rc::gen::inRange(0, 3)};
      if (occurrence.allDay) occurrence.start = formats::DayOf(*occurrence.start);
      occurrence.end = *occurrence.start + hours{occurrence.allDay ? 24 : 1};
      return;
    default:
      occurrence.body = FewTexts();
  }
}

inline void EditSeries(Appointment& appointment) {
  if (!appointment.series || OneIn(4)) {
    if (appointment.series && OneIn(3)) return appointment.series.reset();
    Pattern pattern = PatternFrom(
        *rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly),
        formats::DayOf(*appointment.start));
    if (OneIn(2)) pattern.occurrences = *rc::gen::inRange(1, 12);
    if (!appointment.series) appointment.series.emplace();
    appointment.series->pattern = pattern;
    return;
  }
  formats::Series& series = *appointment.series;
  const calendar::SeriesDays all(series.pattern, formats::DayOf(*appointment.start));
  const local_days day =
      all[*rc::gen::inRange<std::int64_t>(0, std::min<std::int64_t>(5, all.size()))];
  const bool wasDeleted = std::erase(series.deleted, day) > 0;
  Occurrence occurrence = appointment;
  const auto shift = day - formats::DayOf(*appointment.start);
  *occurrence.start += shift;
  *occurrence.end += shift;
  std::erase_if(series.changed, [&](const formats::ChangedOccurrence& change) {
    if (change.original != day) return false;
    occurrence = change.occurrence;
    return true;
  });
  if (OneIn(3)) {
    if (!wasDeleted) series.deleted.push_back(day);
    std::sort(series.deleted.begin(), series.deleted.end());
    return;
  }
  EditOccurrence(occurrence);
  series.changed.push_back({day, occurrence});
  std::ranges::sort(series.changed, {}, &formats::ChangedOccurrence::original);
}

inline void Edit(Appointment& appointment) {
  switch (*rc::gen::inRange(0, 6)) {
    case 0:
      appointment.allDay = OneIn(3);
      appointment.start = SomeDay() + hours{appointment.allDay ? 0 : *rc::gen::inRange(8, 11)};
      appointment.end = *appointment.start + hours{appointment.allDay ? 24 : 1};
      break;
    case 1:
      EditNames(appointment.categories);
      break;
    case 2:
      appointment.reminderMinutes =
          OneIn(3) ? std::nullopt : std::optional(*rc::gen::inRange(0, 3));
      break;
    case 3:
      EditOccurrence(appointment);
      break;
    default:
      EditSeries(appointment);
  }
  appointment = Normalized(appointment, SeriesEnd::kCount);
}

inline void Edit(Task& task) {
  const auto maybeDay = [] { return OneIn(3) ? std::nullopt : std::optional(SomeDay()); };
  switch (*rc::gen::inRange(0, 8)) {
    case 0:
      task.subject = FewTexts();
      break;
    case 1:
      EditNames(task.categories);
      break;
    case 2:
      task.start = maybeDay();
      break;
    case 3:
      task.due = maybeDay();
      break;
    case 4:
      task.complete = OneIn(2);
      task.completed = task.complete ? maybeDay() : std::nullopt;
      break;
    case 5:
      task.pattern = OneIn(3) ? std::nullopt : std::optional(Pattern());
      break;
    case 6:
      task.isPrivate = OneIn(2);
      break;
    default:
      task.body = FewTexts();
  }
  if (!task.start && !task.due) task.pattern.reset();
  task = Normalized(task, SeriesEnd::kCount);
}

template <typename T>
T Begun() {
  return T{};
}
template <>
inline Appointment Begun() {
  Appointment appointment;
  appointment.start = SomeDay() + hours{9};
  appointment.end = *appointment.start + hours{1};
  return appointment;
}

template <typename T>
T AfterEdits(T item, int most) {
  for (int i = *rc::gen::inRange(0, most + 1); i > 0; --i) Edit(item);
  return item;
}

// What a handheld makes of an item: it has no room for some of it.
inline Contact AsKept(Contact contact) {
  for (const ContactField field :
       {ContactField::kYomiLastName, ContactField::kYomiFirstName, ContactField::kYomiCompanyName,
        ContactField::kCarTelephoneNumber, ContactField::kOfficeLocation,
        ContactField::kAssistantTelephoneNumber}) {
    contact[field].clear();
  }
  return contact;
}
inline Appointment AsKept(Appointment appointment) {
  appointment.location = appointment.location.substr(0, 1);
  if (appointment.series) {
    for (formats::ChangedOccurrence& change : appointment.series->changed) {
      change.occurrence.location = change.occurrence.location.substr(0, 1);
    }
  }
  return Normalized(appointment, SeriesEnd::kCount);
}
inline Task AsKept(Task task) {
  task.body = task.body.substr(0, 1);
  return task;
}

struct Case {
  Item base;
  Item desk;
  Item handheldBase;
  Item handheld;

  [[nodiscard]] Merged Run(Winner winner) const {
    return Merge({&base, desk, &handheldBase, handheld}, winner, phone::PhoneNumbers("DE"));
  }
};

template <typename T>
Case AnyCase(bool lossy) {
  const T base = AfterEdits(Begun<T>(), 12);
  const T kept = lossy ? AsKept(base) : base;
  const T desk = AfterEdits(base, 4);
  const T handheld = AfterEdits(kept, 4);
  return {base, desk, kept, lossy ? AsKept(handheld) : handheld};
}

inline void Log(const Case& each) {
  RC_LOG() << "base     " << Shown(each.base) << "\ndesk     " << Shown(each.desk) << "\nkept     "
           << Shown(each.handheldBase) << "\nhandheld " << Shown(each.handheld) << "\n";
}

inline void Log(const Merged& merged) {
  RC_LOG() << "-> desk     " << Shown(merged.desk) << "\n-> handheld " << Shown(merged.handheld)
           << "\n";
  for (const FieldConflict& conflict : merged.conflicts) RC_LOG() << conflict << "\n";
}

inline Winner AnyWinner() {
  return *rc::gen::element(Winner::kDesk, Winner::kHandheld);
}

}  // namespace desktop::testing
