#include "handheld/phone/call_rows.h"

#include "common/text/unicode.h"

namespace ce::host {
namespace {

constexpr char kStep[] = "sqlite3_step:calls";

std::optional<std::u16string> TextOf(const Statement& row, int column) {
  if (row.IsNull(column)) return std::nullopt;
  return text::FromWtf8(row.Text(column));
}

}  // namespace

HRESULT ReadCallBehind(Store& store, const CallPosition& position, NumberedCall& call,
                       bool& found) {
  // Each half is one look into the index, however many calls there are at one time.
  static constexpr char kSql[] = R"sql(
SELECT id, start_time, end_time, kind, flags, caller_id_type, number, name, name_type, note FROM (
  SELECT * FROM (SELECT * FROM calls WHERE start_time = ?1 AND id < ?2 ORDER BY id DESC LIMIT 1)
  UNION ALL
  SELECT * FROM (
    SELECT * FROM calls WHERE start_time < ?1 ORDER BY start_time DESC, id DESC LIMIT 1)
) ORDER BY start_time DESC, id DESC LIMIT 1
)sql";
  found = false;
  Statement read;
  if (const HRESULT status = store.Prepare(kSql, read); Failed(status)) return status;
  read.BindInteger(1, position.startTime);
  read.BindInteger(2, position.id);
  const HRESULT status = read.Step(kStep, found);
  if (found) {
    call.id = read.Integer(0);
    call.call = {read.Integer(1),
                 read.Integer(2),
                 static_cast<DWORD>(read.Integer(3)),
                 static_cast<DWORD>(read.Integer(4)),
                 static_cast<DWORD>(read.Integer(5)),
                 TextOf(read, 6),
                 TextOf(read, 7),
                 TextOf(read, 8),
                 TextOf(read, 9)};
  }
  return status;
}

HRESULT FindCallPosition(Store& store, std::int64_t offset, CallPosition& position, bool& found) {
  static constexpr char kSql[] =
      "SELECT start_time, id FROM calls ORDER BY start_time DESC, id DESC LIMIT 1 OFFSET ?1";
  found = false;
  Statement find;
  if (const HRESULT status = store.Prepare(kSql, find); Failed(status)) return status;
  find.BindInteger(1, offset);
  const HRESULT status = find.Step(kStep, found);
  if (found) position = {find.Integer(0), find.Integer(1)};
  return status;
}

HRESULT CountCalls(Store& store, std::int64_t& count) {
  static constexpr char kSql[] = "SELECT count(*) FROM calls";
  Statement find;
  if (const HRESULT status = store.Prepare(kSql, find); Failed(status)) return status;
  bool row = false;
  const HRESULT status = find.Step(kStep, row);
  if (row) count = find.Integer(0);
  return status;
}

}  // namespace ce::host
