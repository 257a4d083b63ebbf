#include "desktop/wire/record_kind.h"

#include <algorithm>
#include <array>

namespace desktop {
namespace {

struct Row {
  RecordKind kind;
  KindWords words;
};

// A kind's first row is the one that its name stands for.
constexpr std::array kRows = {
    Row{RecordKind::kContacts, {kContactKind, "a contact", "contacts", "CONTACT"}},
    Row{RecordKind::kContacts2, {kContactKind, "a contact", "contacts", "Contact2"}},
    Row{RecordKind::kAppointments,
        {kAppointmentKind, "an appointment", "appointments", "CALENDAR"}},
    Row{RecordKind::kTasks, {kTaskKind, "a task", "tasks", "TASK"}},
};

template <typename Test>
const Row* Find(const Test& test) {
  const auto* const row = std::find_if(kRows.begin(), kRows.end(), test);
  return row == kRows.end() ? nullptr : row;
}

}  // namespace

const KindWords& WordsOf(RecordKind kind) {
  return Find([kind](const Row& row) { return row.kind == kind; })->words;
}

std::string_view KindOfElement(std::string_view elementName) {
  const Row* const row = Find([&](const Row& each) { return each.words.element == elementName; });
  return row == nullptr ? std::string_view() : row->words.name;
}

std::optional<RecordKind> KindNamed(std::string_view name) {
  const Row* const row = Find([&](const Row& each) { return each.words.name == name; });
  return row == nullptr ? std::nullopt : std::optional(row->kind);
}

}  // namespace desktop
