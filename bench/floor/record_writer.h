// Writes records, one kind of them, as the rows that the agent stores.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "bench/floor/database.h"
#include "bench/floor/tree.h"

namespace floors {

class RecordWriter {
 public:
  virtual ~RecordWriter() = default;
  virtual void Write(std::int64_t oid, const xmlNode* record) = 0;
};

std::unique_ptr<RecordWriter> MakeContactWriter(const Database& store);
std::unique_ptr<RecordWriter> MakeAppointmentWriter(const Database& store);

// The OLE date of "yyyyMMddTHHmmss" in UTC, which is the handheld's zone.
double DateOf(std::string_view text);
// The number of a text in decimal.
std::int64_t NumberOf(std::string_view text);
// Appends the categories of a "CATEGORIES", with commas between them.
void JoinCategories(const xmlNode* list, std::string& names);

}  // namespace floors
