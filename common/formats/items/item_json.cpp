#include "common/formats/items/item_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/text/text.h"

namespace formats {
namespace {

enum class LineBreaks { kAsTheyAre, kAsLf };

// What is empty, zero or false is not written, where a member does not say otherwise.
class ObjectWriter {
 public:
  ObjectWriter(const PieceSink& sink, LineBreaks breaks) : sink_(sink), breaks_(breaks) {}

  void Open(std::string_view bracket) {
    sink_(bracket);
    first_ = true;
  }
  void Close(std::string_view bracket) {
    sink_(bracket);
    first_ = false;
  }
  // Before each element of an array.
  void Next() {
    if (!first_) sink_(",");
    first_ = false;
  }
  // Its value is to follow.
  void Name(std::string_view name) {
    Next();
    Quote(name);
    sink_(":");
  }

  // Zero as well.
  void Number(std::string_view name, std::int64_t number) {
    Name(name);
    sink_(std::to_string(number));
  }
  void NumberUnlessZero(std::string_view name, int number) {
    if (number != 0) Number(name, number);
  }
  void True(std::string_view name, bool value) {
    if (!value) return;
    Name(name);
    sink_("true");
  }
  void Text(std::string_view name, const std::string& text) {
    if (text.empty()) return;
    Name(name);
    Value(text);
  }
  void Texts(std::string_view name, const std::vector<std::string>& texts) {
    if (texts.empty()) return;
    Name(name);
    Open("[");
    for (const std::string& text : texts) {
      Next();
      Value(text);
    }
    Close("]");
  }
  // A local_days or a year_month_day.
  template <typename Date>
  void Day(std::string_view name, const std::optional<Date>& day) {
    if (day) Text(name, IsoDate(*day));
  }
  void Time(std::string_view name, const std::optional<local_seconds>& time) {
    if (time) Text(name, IsoDateTime(*time));
  }

 private:
  void Value(const std::string& text) {
    Quote(breaks_ == LineBreaks::kAsLf ? text::NormalizeLineBreaks(text) : text);
  }
  void Quote(std::string_view text) {
    sink_("\"");
    while (!text.empty()) {
      const auto* const escaped = std::ranges::find_if(text, [](char c) {
        return c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ';
      });
      const auto plain = static_cast<std::size_t>(escaped - text.begin());
      sink_(text.substr(0, plain));
      if (escaped == text.end()) break;
      sink_(Escape(*escaped));
      text.remove_prefix(plain + 1);
    }
    sink_("\"");
  }
  static std::string Escape(char c) {
    constexpr std::string_view kShort = "\"\"\\\\\bb\ff\nn\rr\tt";
    for (std::size_t i = 0; i < kShort.size(); i += 2) {
      if (kShort[i] == c) return {'\\', kShort[i + 1]};
    }
    return fmt::format("\\u{:04x}", static_cast<unsigned>(c));
  }

  const PieceSink& sink_;
  const LineBreaks breaks_;
  bool first_ = true;
};

// The days that an all-day occurrence covers, if its times are midnights as they are to be.
bool CoversDays(const Occurrence& occurrence) {
  const auto isMidnight = [](local_seconds time) { return time == DayOf(time); };
  return occurrence.allDay && occurrence.start && occurrence.end && isMidnight(*occurrence.start) &&
         isMidnight(*occurrence.end) && *occurrence.end > *occurrence.start;
}

void PutOccurrence(ObjectWriter& object, const Occurrence& occurrence) {
  object.Text("Subject", occurrence.subject);
  object.Text("Location", occurrence.location);
  object.True("AllDayEvent", occurrence.allDay);
  if (CoversDays(occurrence)) {
    object.Day("Start", std::optional(DayOf(*occurrence.start)));
    object.Day("End", std::optional(DayOf(*occurrence.end) - std::chrono::days(1)));
  } else {
    object.Time("Start", occurrence.start);
    object.Time("End", occurrence.end);
  }
  object.Number("BusyStatus", occurrence.busyStatus);
  object.Text("Body", occurrence.body);
}

// Leaves the object open.
void OpenPattern(ObjectWriter& object, const calendar::Pattern& pattern) {
  object.Name("recurrence");
  object.Open("{");
  object.Number("RecurrenceType", static_cast<int>(pattern.type));
  object.Number("Interval", pattern.interval);
  object.NumberUnlessZero("DayOfWeekMask", pattern.daysOfWeek);
  object.NumberUnlessZero("DayOfMonth", pattern.dayOfMonth);
  object.NumberUnlessZero("Instance", pattern.instance);
  object.NumberUnlessZero("MonthOfYear", pattern.monthOfYear);
  object.True("NoEndDate", !pattern.occurrences && !pattern.until);
  if (pattern.occurrences) object.Number("Occurrences", *pattern.occurrences);
  object.Day("PatternEndDate", pattern.until);
}

void PutSeries(ObjectWriter& object, const Series& series) {
  OpenPattern(object, series.pattern);
  std::vector<std::string> deleted;
  for (const local_days day : series.deleted) deleted.push_back(IsoDate(day));
  object.Texts("deleted", deleted);
  if (!series.changed.empty()) {
    object.Name("changed");
    object.Open("[");
    for (const ChangedOccurrence& change : series.changed) {
      object.Next();
      object.Open("{");
      object.Day("OriginalDate", std::optional(change.original));
      PutOccurrence(object, change.occurrence);
      object.Close("}");
    }
    object.Close("]");
  }
  object.Close("}");
}

void PutProperties(ObjectWriter& object, const Contact& contact) {
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    object.Text(ContactFieldName(static_cast<ContactField>(i)), contact.fields[i]);
  }
  object.Texts("categories", contact.categories);
  object.Day("Birthday", contact.birthday);
  object.Day("Anniversary", contact.anniversary);
}

void PutProperties(ObjectWriter& object, const Appointment& appointment) {
  PutOccurrence(object, appointment);
  if (appointment.reminderMinutes) {
    object.True("ReminderSet", true);
    object.Number("ReminderMinutesBeforeStart", *appointment.reminderMinutes);
  }
  if (appointment.isPrivate) object.Number("Sensitivity", 2);
  object.Texts("categories", appointment.categories);
  if (appointment.series) PutSeries(object, *appointment.series);
}

void PutProperties(ObjectWriter& object, const Task& task) {
  object.Text("Subject", task.subject);
  object.Day("StartDate", task.start);
  object.Day("DueDate", task.due);
  object.True("Complete", task.complete);
  object.Day("DateCompleted", task.completed);
  object.Number("Importance", static_cast<int>(task.importance));
  object.True("ReminderSet", task.reminder.has_value());
  object.Time("ReminderTime", task.reminder);
  if (task.isPrivate) object.Number("Sensitivity", 2);
  object.Text("Body", task.body);
  object.Texts("categories", task.categories);
  if (!task.pattern) return;
  OpenPattern(object, *task.pattern);
  object.Close("}");
}

template <typename Item>
void PutObject(ObjectWriter object, const Item& item, std::uint32_t oid, const std::string& uid) {
  object.Open("{");
  object.Number("oid", oid);
  object.Text("uid", uid);
  PutProperties(object, item);
  object.Close("}");
}

template <typename Item>
std::string Line(const Item& item, std::uint32_t oid, const std::string& uid) {
  std::string line;
  const PieceSink sink = [&](std::string_view piece) { line += piece; };
  PutObject({sink, LineBreaks::kAsTheyAre}, item, oid, uid);
  return line;
}

}  // namespace

std::string ContactToJson(const Contact& contact, std::uint32_t oid) {
  return Line(contact, oid, {});
}

std::string AppointmentToJson(const Appointment& appointment, std::uint32_t oid) {
  return Line(appointment, oid, appointment.uid);
}

std::string TaskToJson(const Task& task, std::uint32_t oid) {
  return Line(task, oid, task.uid);
}

void AddContent(const Contact& contact, const PieceSink& sink) {
  PutObject({sink, LineBreaks::kAsTheyAre}, contact, 0, {});
}

void AddContent(const Appointment& appointment, const PieceSink& sink) {
  PutObject({sink, LineBreaks::kAsLf}, appointment, 0, {});
}

void AddContent(const Task& task, const PieceSink& sink) {
  PutObject({sink, LineBreaks::kAsLf}, task, 0, {});
}

}  // namespace formats
