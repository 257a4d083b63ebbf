#include "bench/floor/up.h"

#include <charconv>
#include <chrono>

#include "bench/floor/record_writer.h"
#include "bench/floor/store_values.h"

namespace floors {
namespace {

int TwoDigits(std::string_view text, std::size_t at) {
  return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

std::int64_t ReadNextOid(const Database& store) {
  Query next(store, "SELECT next_oid FROM oid_counter");
  return next.Step() ? next.Integer(0) : 0;
}

}  // namespace

double DateOf(std::string_view text) {
  if (text.size() != 15) return kNoDate;
  const std::chrono::sys_days day =
      std::chrono::year{TwoDigits(text, 0) * 100 + TwoDigits(text, 2)} / TwoDigits(text, 4) /
      TwoDigits(text, 6);
  const int seconds = TwoDigits(text, 9) * 3600 + TwoDigits(text, 11) * 60 + TwoDigits(text, 13);
  return static_cast<double>((day - kOleEpoch).count()) + seconds / 86400.0;
}

std::int64_t NumberOf(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

void JoinCategories(const xmlNode* list, std::string& names) {
  for (const xmlNode* category = list->children; category; category = category->next) {
    if (!names.empty()) names += ',';
    names += TextOf(Child(category, "Name"));
  }
}

void InsertAll(Database& store, std::string_view kind, const bench::ChunkFile& chunks) {
  const std::unique_ptr<RecordWriter> writer =
      kind == "contacts" ? MakeContactWriter(store) : MakeAppointmentWriter(store);
  Query begin(store, "BEGIN IMMEDIATE");
  Query commit(store, "COMMIT");
  Query count(store, "UPDATE oid_counter SET next_oid = ?1");
  std::int64_t oid = ReadNextOid(store);
  TreeParser parser;
  for (const std::string_view chunk : chunks.chunks()) {
    const xmlNode* root = parser.Parse(bench::DocumentOf(chunk));
    begin.Run();
    for (const xmlNode* record = root->children; record; record = record->next)
      writer->Write(oid++, record);
    count.Bind(1, oid);
    count.Run();
    commit.Run();
  }
}

}  // namespace floors
