#include "common/formats/items/task.h"

#include "common/text/text.h"

namespace formats {

std::string DisplayName(const Task& task) {
  for (const std::string* text : {&task.subject, &task.body}) {
    if (std::string name = text::Excerpt(text::OnOneLine(*text)); !name.empty()) return name;
  }
  return "(no subject)";
}

}  // namespace formats
