// The kinds of records that travel, and what each is called where.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace desktop {

// The wire's numbers.
enum class RecordKind : std::uint32_t {
  kAppointments = 0,
  kContacts = 1,
  kTasks = 2,
  kContacts2 = 3,  // contacts in their second form
};

inline constexpr std::string_view kContactKind = "contact";
inline constexpr std::string_view kAppointmentKind = "appointment";
inline constexpr std::string_view kTaskKind = "task";

struct KindWords {
  std::string_view name;         // to people, and in the mapping
  std::string_view withArticle;  // "an appointment"
  std::string_view plural;
  std::string_view element;  // of a record that is sent
};

const KindWords& WordsOf(RecordKind kind);

// The name of the kind whose records have such an element; empty for other elements.
std::string_view KindOfElement(std::string_view elementName);
// Nothing for a name that is none of those above.
std::optional<RecordKind> KindNamed(std::string_view name);

}  // namespace desktop
