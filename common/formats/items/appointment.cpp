#include "common/formats/items/appointment.h"

#include "common/text/text.h"

namespace formats {

std::string DisplayName(const Appointment& appointment) {
  for (const std::string* text : {&appointment.subject, &appointment.location, &appointment.body}) {
    if (std::string name = text::Excerpt(text::OnOneLine(*text)); !name.empty()) return name;
  }
  return "(no subject)";
}

}  // namespace formats
