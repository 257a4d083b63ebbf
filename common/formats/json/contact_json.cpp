#include "common/formats/json/contact_json.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace formats {
namespace {

void PutDate(nlohmann::ordered_json& object, const char* name, const std::optional<Date>& date) {
  if (!date) return;
  object[name] = fmt::format("{:04}-{:02}-{:02}", date->year, date->month, date->day);
}

}  // namespace

std::string ContactToJson(const Contact& contact, std::uint32_t oid) {
  nlohmann::ordered_json object;
  object["oid"] = oid;
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    if (contact.fields[i].empty()) continue;
    const auto field = static_cast<ContactField>(i);
    object[std::string(ContactFieldName(field))] = contact.fields[i];
  }
  if (!contact.categories.empty()) object["categories"] = contact.categories;
  PutDate(object, "Birthday", contact.birthday);
  PutDate(object, "Anniversary", contact.anniversary);
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace formats
