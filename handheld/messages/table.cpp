#include "handheld/messages/table.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"

namespace ce::host {
namespace {

constexpr LONG kMostRows = std::numeric_limits<LONG>::max();

class Table final : public UnknownObject<IMAPITable> {
 public:
  Table(MessageSessionPtr session, const TableKind& kind, std::int64_t owner)
      : session_(std::move(session)), kind_(kind), owner_(owner) {}

  HRESULT SetColumns(const SPropTagArray* tags, DWORD) override {
    return Guarded("IMAPITable::SetColumns", [&] {
      if (!tags || !tags->aulPropTag || tags->cValues == 0) return E_INVALIDARG;
      columns_.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
      return S_OK;
    });
  }

  HRESULT GetRowCount(DWORD, DWORD* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    return Guarded("IMAPITable::GetRowCount", [&] {
      Store* store = nullptr;
      if (const HRESULT status = session_->Reading(store); Failed(status)) return status;
      std::int64_t rows = 0;
      const HRESULT status = CountRows(*store, kind_, owner_, rows);
      *count = static_cast<DWORD>(std::min<std::int64_t>(rows, kMostRows));
      return status;
    });
  }

  HRESULT QueryRows(LONG count, DWORD, SRowSet** rows) override {
    if (!rows) return E_POINTER;
    *rows = nullptr;
    return Guarded("IMAPITable::QueryRows", [&] {
      if (count < 1) return E_INVALIDARG;
      Store* store = nullptr;
      if (const HRESULT status = session_->Reading(store); Failed(status)) return status;
      return Read(*store, count, rows);
    });
  }

 private:
  ~Table() override = default;

  HRESULT Read(Store& store, LONG count, SRowSet** rows);
  SRow ReadRow(const Statement& row, const PropertyQuery& query, MapiBuffer& buffer) const;

  const MessageSessionPtr session_;
  const TableKind& kind_;
  const std::int64_t owner_;
  std::int64_t position_ = -1;  // the number of the last row that was read
  std::vector<DWORD> columns_;  // empty for the default ones
};

HRESULT Table::Read(Store& store, LONG count, SRowSet** rows) {
  const PropertyQuery& query = count > 1 && columns_.empty() ? kind_.severalRows : kind_.rows;
  Statement select;
  if (const HRESULT status = store.Prepare(query.sql, select); Failed(status)) return status;
  select.BindInteger(1, owner_);
  select.BindInteger(2, position_);
  select.BindInteger(3, count);

  MapiBuffer buffer;
  auto* const set = buffer.Allocate<SRowSet>();
  std::vector<SRow> read;
  std::int64_t position = position_;
  for (bool row = true; row && read.size() < static_cast<std::size_t>(count);) {
    if (const HRESULT status = select.Step("sqlite3_step:list", row); Failed(status)) return status;
    if (!row) break;
    read.push_back(ReadRow(select, query, buffer));
    position = select.Integer(0);
  }
  set->cRows = static_cast<DWORD>(read.size());
  set->aRow = buffer.Allocate<SRow>(read.size());
  std::copy(read.begin(), read.end(), set->aRow);
  position_ = position;
  buffer.HandOut();
  *rows = set;
  return S_OK;
}

SRow Table::ReadRow(const Statement& row, const PropertyQuery& query, MapiBuffer& buffer) const {
  SRow result{};
  if (columns_.empty()) {
    result.lpProps = buffer.Allocate<SPropValue>(query.tags.size());
    result.cValues = PresentProperties(row, query.tags, buffer, result.lpProps);
  } else {
    result.lpProps = buffer.Allocate<SPropValue>(columns_.size());
    result.cValues = static_cast<DWORD>(columns_.size());
    WantedProperties(row, query.tags, columns_, buffer, result.lpProps);
  }
  return result;
}

}  // namespace

IMAPITable* MakeTable(const MessageSessionPtr& session, const TableKind& kind, std::int64_t owner) {
  return new Table(session, kind, owner);
}

HRESULT CountRows(Store& store, const TableKind& kind, std::int64_t owner, std::int64_t& count) {
  Statement select;
  if (const HRESULT status = store.Prepare(kind.countSql, select); Failed(status)) return status;
  select.BindInteger(1, owner);
  bool row = false;
  const HRESULT status = select.Step("sqlite3_step:read", row);
  if (row) count = select.Integer(0);
  return status;
}

}  // namespace ce::host
