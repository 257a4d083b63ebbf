#include "desktop/sync/item_fields.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

#include "common/formats/items/identity.h"
#include "desktop/merge/field_words.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::Task;

class Differences {
 public:
  template <typename T>
  void Compare(std::string_view name, const T& a, const T& b) {
    if (a != b) Add(name);
  }
  void Add(std::string_view name) {
    if (names_.empty() || names_.back() != name) names_.emplace_back(name);
  }
  std::vector<std::string> names() && { return std::move(names_); }

 private:
  std::vector<std::string> names_;
};

// As the common form has them, which takes longer to make than most contacts need.
std::string FiledAs(const Contact& contact) {
  using Field = formats::ContactField;
  std::string text = CommonText(contact[Field::kFileAs]);
  if (!text.empty()) return text;
  Contact named;
  for (const Field field : {Field::kFirstName, Field::kLastName, Field::kCompanyName}) {
    named[field] = CommonText(contact[field]);
  }
  return formats::WithFileAs(std::move(named))[Field::kFileAs];
}

std::vector<std::string> CommonCategories(std::vector<std::string> names) {
  for (std::string& name : names) name = CommonText(std::move(name));
  std::ranges::sort(names);
  return names;
}

void CompareFields(const Contact& a, const Contact& b, Differences& differences) {
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    const auto field = static_cast<formats::ContactField>(i);
    const bool same = field == formats::ContactField::kFileAs ? FiledAs(a) == FiledAs(b)
                                                              : SameText(a[field], b[field]);
    if (!same) differences.Add(FieldWords(field));
  }
  differences.Compare("Categories", CommonCategories(a.categories), CommonCategories(b.categories));
  differences.Compare("Birthday", a.birthday, b.birthday);
  differences.Compare("Anniversary", a.anniversary, b.anniversary);
}

void CompareFields(const Appointment& a, const Appointment& b, Differences& differences) {
  differences.Compare("Subject", a.subject, b.subject);
  differences.Compare("Location", a.location, b.location);
  differences.Compare("Note", a.body, b.body);
  differences.Compare("When", a.allDay, b.allDay);
  differences.Compare("When", a.start, b.start);
  differences.Compare("When", a.end, b.end);
  differences.Compare("Busy status", a.busyStatus, b.busyStatus);
  differences.Compare("Categories", a.categories, b.categories);
  differences.Compare("Private", a.isPrivate, b.isPrivate);
  differences.Compare("Reminder", a.reminderMinutes, b.reminderMinutes);
  const bool both = a.series && b.series;
  if (!both) differences.Compare("Recurrence", a.series, b.series);
  if (!both) return;
  differences.Compare("Recurrence", a.series->pattern, b.series->pattern);
  differences.Compare("Deleted occurrences", a.series->deleted, b.series->deleted);
  differences.Compare("Changed occurrences", a.series->changed, b.series->changed);
}

void CompareFields(const Task& a, const Task& b, Differences& differences) {
  differences.Compare("Subject", a.subject, b.subject);
  differences.Compare("Note", a.body, b.body);
  differences.Compare("Categories", a.categories, b.categories);
  differences.Compare("Start", a.start, b.start);
  differences.Compare("Due", a.due, b.due);
  differences.Compare("Reminder", a.reminder, b.reminder);
  differences.Compare("Private", a.isPrivate, b.isPrivate);
  differences.Compare("Complete", a.complete, b.complete);
  differences.Compare("Complete", a.completed, b.completed);
  differences.Compare("Importance", a.importance, b.importance);
  differences.Compare("Recurrence", a.pattern, b.pattern);
}

}  // namespace

std::vector<std::string> DifferentFields(const Item& a, const Item& b) {
  Differences differences;
  if (const auto* contact = std::get_if<Contact>(&a)) {
    CompareFields(*contact, std::get<Contact>(b), differences);
    return std::move(differences).names();
  }
  const Item commonA = CommonForm(a);
  const Item commonB = CommonForm(b);
  std::visit(
      [&](const auto& first) {
        using Kind = std::remove_cvref_t<decltype(first)>;
        CompareFields(first, std::get<Kind>(commonB), differences);
      },
      commonA);
  return std::move(differences).names();
}

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace desktop
