#include "common/formats/csv/csv.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"

namespace formats {
namespace {

using Columns = std::vector<std::string>;

const Columns& ColumnsOf(CsvKind kind) {
  static const Columns contacts = [] {
    Columns columns = {"oid"};
    for (std::size_t i = 0; i < kContactFieldCount; ++i)
      columns.emplace_back(ContactFieldName(static_cast<ContactField>(i)));
    columns.insert(columns.end(), {"categories", "Birthday", "Anniversary"});
    return columns;
  }();
  static const Columns calls = {"oid",   "number",   "name",      "type",   "start",
                                "end",   "outgoing", "connected", "missed", "roaming",
                                "ended", "callerId", "note"};
  return kind == CsvKind::kContacts ? contacts : calls;
}

std::string Quoted(std::string_view value) {
  const bool plain = value.find_first_of("\",\r\n") == value.npos && !value.starts_with(' ') &&
                     !value.ends_with(' ');
  if (plain) return std::string(value);
  std::string quoted = "\"";
  for (const char c : value) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string TextOf(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.dump();
  std::string joined;
  for (const nlohmann::json& each : value) joined += (joined.empty() ? "" : ",") + TextOf(each);
  return joined;
}

}  // namespace

std::string CsvHeader(CsvKind kind) {
  std::string line;
  for (const std::string& column : ColumnsOf(kind)) line += (line.empty() ? "" : ",") + column;
  return line + "\r\n";
}

std::string CsvRow(CsvKind kind, const std::string& json) {
  const auto object = nlohmann::json::parse(json, nullptr, false);
  std::string line;
  const char* before = "";
  for (const std::string& column : ColumnsOf(kind)) {
    line += before;
    before = ",";
    if (const auto value = object.find(column); value != object.end())
      line += Quoted(TextOf(*value));
  }
  return line + "\r\n";
}

}  // namespace formats
