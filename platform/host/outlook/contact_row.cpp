#include "platform/host/outlook/contact_row.h"

#include "platform/host/outlook/store_error.h"
#include "platform/host/outlook/store_schema.h"
#include "platform/host/outlook/stored_text.h"

namespace ce::host {
namespace {

constexpr std::size_t kSlack = 4096;  // bytes of replaced text that are not worth moving

// Birthday, Anniversary, BodyInk, then the texts in their order.
constexpr int kFixedColumns = 3;

enum class Form { kNames, kPlaceholders, kAssignments };

// The columns, the first at parameter 2: parameter 1 is always the identifier.
std::string Columns(Form form) {
  std::string list;
  int parameter = 2;
  const auto add = [&](const char* name) {
    const std::string placeholder = "?" + std::to_string(parameter++);
    if (!list.empty()) list += ", ";
    if (form == Form::kNames) list += name;
    if (form == Form::kPlaceholders) list += placeholder;
    if (form == Form::kAssignments) list += name + (" = " + placeholder);
  };
  for (const char* name : {"Birthday", "Anniversary", "BodyInk"}) add(name);
  for (const ContactTextRow& row : kContactTexts) add(row.name);
  return list;
}

void BindContact(Statement& statement, std::uint32_t oid, const ContactRow& row) {
  statement.BindInteger(1, oid);
  statement.BindReal(2, row.birthday);
  statement.BindReal(3, row.anniversary);
  if (row.ink.empty()) {
    statement.BindNull(4);
  } else {
    statement.BindBlob(4, row.ink.data(), row.ink.size());
  }
  for (std::size_t i = 0; i < kContactTextCount; ++i) {
    const int parameter = 2 + kFixedColumns + static_cast<int>(i);
    if (kContactTexts[i].kind == TextKind::kFileAs && !row.fileAsSet) {
      statement.BindNull(parameter);
    } else {
      statement.BindText(parameter, row.texts.View(i));
    }
  }
}

void LoadContact(const Statement& statement, ContactRow& row) {
  row.birthday = statement.Real(0);
  row.anniversary = statement.Real(1);
  const auto [ink, inkBytes] = statement.Blob(2);
  row.ink.assign(ink, ink + inkBytes);
  row.texts.Reserve(1024);
  for (std::size_t i = 0; i < kContactTextCount; ++i) {
    const int column = kFixedColumns + static_cast<int>(i);
    const std::string_view stored = statement.Text(column);
    if (!stored.empty()) row.texts.SetStored(i, stored);
    if (kContactTexts[i].kind == TextKind::kFileAs) row.fileAsSet = !statement.IsNull(column);
  }
}

HRESULT TakeOid(Store& store, std::uint32_t& oid) {
  static constexpr char kSql[] =
      "UPDATE oid_counter SET next_oid = next_oid + 1"
      " WHERE next_oid BETWEEN 1 AND 4294967295 RETURNING next_oid - 1";
  static_assert(kLastOid == 4294967295);
  Statement take;
  if (const HRESULT status = store.Prepare(kSql, take); Failed(status)) return status;
  bool row = false;
  if (const HRESULT status = take.Step("sqlite3_step:write", row); Failed(status)) return status;
  if (!row) return kStoreNoMoreOids;
  oid = static_cast<std::uint32_t>(take.Integer(0));
  return take.Run("sqlite3_step:write");
}

}  // namespace

std::string_view ContactTexts::View(std::size_t index) const {
  const Span& span = spans_[index];
  return {block_.data() + span.offset, span.bytes};
}

void ContactTexts::Set(std::size_t index, std::u16string_view text) {
  const std::size_t offset = block_.size();
  AppendStored(block_, text);
  Replaced(index, offset);
}

void ContactTexts::SetStored(std::size_t index, std::string_view stored) {
  const std::size_t offset = block_.size();
  block_.append(stored);
  Replaced(index, offset);
}

void ContactTexts::Replaced(std::size_t index, std::size_t offset) {
  used_ -= spans_[index].bytes;
  spans_[index] = {static_cast<std::uint32_t>(offset),
                   static_cast<std::uint32_t>(block_.size() - offset)};
  used_ += spans_[index].bytes;
  if (block_.size() > 2 * used_ + kSlack) Compact();
}

void ContactTexts::Compact() {
  std::string block;
  block.reserve(used_);
  auto spans = spans_;
  for (Span& span : spans) {
    const auto offset = static_cast<std::uint32_t>(block.size());
    block.append(block_, span.offset, span.bytes);
    span.offset = offset;
  }
  block_ = std::move(block);
  spans_ = spans;
}

std::size_t LongestText(const ItemLimits& limits, TextKind kind) {
  return kind == TextKind::kBody ? limits.body / sizeof(WCHAR) : limits.text;
}

HRESULT ReadContact(Store& store, std::uint32_t oid, ContactRow& row, bool& found) {
  static const std::string kSql =
      "SELECT " + Columns(Form::kNames) + " FROM contacts WHERE oid = ?1";
  found = false;
  Statement select;
  if (const HRESULT status = store.Prepare(kSql.c_str(), select); Failed(status)) return status;
  select.BindInteger(1, oid);
  const HRESULT status = select.Step("sqlite3_step:read", found);
  if (found) LoadContact(select, row);
  return status;
}

HRESULT InsertContact(Store& store, const ContactRow& row, std::uint32_t& oid) {
  static const std::string kSql = "INSERT INTO contacts (oid, " + Columns(Form::kNames) +
                                  ") VALUES (?1, " + Columns(Form::kPlaceholders) + ")";
  if (const HRESULT status = TakeOid(store, oid); Failed(status)) return status;
  Statement insert;
  if (const HRESULT status = store.Prepare(kSql.c_str(), insert); Failed(status)) return status;
  BindContact(insert, oid, row);
  return insert.Run("sqlite3_step:write");
}

HRESULT UpdateContact(Store& store, std::uint32_t oid, const ContactRow& row, bool& found) {
  static const std::string kSql =
      "UPDATE contacts SET " + Columns(Form::kAssignments) + " WHERE oid = ?1";
  Statement update;
  if (const HRESULT status = store.Prepare(kSql.c_str(), update); Failed(status)) return status;
  BindContact(update, oid, row);
  const HRESULT status = update.Run("sqlite3_step:write");
  found = Succeeded(status) && store.Changes() > 0;
  return status;
}

HRESULT ContactExists(Store& store, std::uint32_t oid, bool& found) {
  static constexpr char kSql[] = "SELECT 1 FROM contacts WHERE oid = ?1";
  Statement select;
  if (const HRESULT status = store.Prepare(kSql, select); Failed(status)) return status;
  select.BindInteger(1, oid);
  return select.Step("sqlite3_step:read", found);
}

}  // namespace ce::host
