#include <sqlite3.h>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"
#include "handheld/store/store.h"
#include "handheld/store/store_error.h"

namespace ce::host {

Statement::~Statement() {
  GiveBack();
}

void Statement::GiveBack() {
  if (!statement_) return;
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
  *lent_ = nullptr;
  statement_ = nullptr;
  bindResult_ = 0;
}

void Statement::BindInteger(int parameter, std::int64_t value) {
  Note(sqlite3_bind_int64(statement_, parameter, value));
}

void Statement::Bind(int parameter, double value) {
  Note(sqlite3_bind_double(statement_, parameter, value));
}

void Statement::Bind(int parameter, std::string_view stored) {
  const char* bytes = stored.data() ? stored.data() : "";  // a null pointer would bind NULL
  Note(
      sqlite3_bind_text64(statement_, parameter, bytes, stored.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::Bind(int parameter, std::u16string_view value) {
  std::string stored;
  text::AppendWtf8(stored, value);
  Note(sqlite3_bind_text64(statement_, parameter, stored.data(), stored.size(), SQLITE_TRANSIENT,
                           SQLITE_UTF8));
}

void Statement::Bind(int parameter, const std::vector<BYTE>& bytes) {
  // A null pointer would bind NULL.
  BindBlob(parameter, bytes.empty() ? "" : static_cast<const void*>(bytes.data()), bytes.size());
}

void Statement::BindBlob(int parameter, const void* bytes, std::size_t count) {
  Note(sqlite3_bind_blob64(statement_, parameter, bytes, count, SQLITE_STATIC));
}

void Statement::BindNull(int parameter) {
  Note(sqlite3_bind_null(statement_, parameter));
}

void Statement::Note(int result) {
  if (bindResult_ == SQLITE_OK) bindResult_ = result;
}

HRESULT Statement::Step(const char* faultPoint, bool& row) {
  row = false;
  RETURN_IF_FAILED(FaultStatus(faultPoint));
  if (bindResult_ != SQLITE_OK) return StoreStatus(bindResult_);
  const int result = sqlite3_step(statement_);
  row = result == SQLITE_ROW;
  return StoreStatus(result);
}

HRESULT Statement::Run(const char* faultPoint) {
  bool row = false;
  return Step(faultPoint, row);
}

bool Statement::IsNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

double Statement::Real(int column) const {
  return sqlite3_column_double(statement_, column);
}

std::string_view Statement::Text(int column) const {
  // One look for both, by the connection's only thread.
  sqlite3_value* const value = sqlite3_column_value(statement_, column);
  const int bytes = sqlite3_value_bytes(value);
  if (bytes == 0) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text ? std::string_view{text, static_cast<std::size_t>(bytes)} : std::string_view{};
}

std::pair<const BYTE*, std::size_t> Statement::Blob(int column) const {
  const auto* bytes = static_cast<const BYTE*>(sqlite3_column_blob(statement_, column));
  return {bytes, bytes ? static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)) : 0};
}

void Statement::Load(int column, std::u16string& value) const {
  value = text::FromWtf8(Text(column));
}

void Statement::Load(int column, std::vector<BYTE>& bytes) const {
  const auto [first, count] = Blob(column);
  bytes.assign(first, first + count);
}

}  // namespace ce::host
