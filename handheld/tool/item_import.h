// Puts the records of other programs on a handheld, one at a time, whatever their kind.
#pragma once

#include <cstddef>
#include <map>

#include "common/formats/vcard/overflow.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/tool/import_report.h"
#include "handheld/tool/imported_items.h"
#include "handheld/tool/item_fields.h"
#include "handheld/tool/records.h"
#include "handheld/tool/session.h"

namespace tool {

struct ImportOptions {
  bool dryRun = false;     // say what would be done, change nothing
  bool duplicate = false;  // add even what was imported before
  formats::Overflow overflow = formats::Overflow::kLeftOut;  // of contacts
};

// Writes come together in transactions: one that fails takes earlier records with it, so that the
// import ends there.
struct StoreFailure : StatusError {
  explicit StoreFailure(const StatusError& failure) : StatusError(failure) {}
};

// What was imported since the last commit is undone when this goes. A record is committed as a
// whole: a series with its exceptions, and with the memory of where it came from.
class ItemImport {
 public:
  // Throws StatusError.
  ItemImport(Session& session, const ImportOptions& options, ImportReport& report);

  // A record that was imported before (its UID, else its content, is known) changes its item when
  // both the record's content as it was then and the item's are others; it is left alone when not.
  // A record that cannot be kept is named and counted. It begins at the line. Throws StoreFailure.
  template <typename Record>
  void Import(std::size_t line, const Record& record);

  // Makes what was imported last, and only then says what was added and changed. Throws StatusError
  // when it cannot be.
  void Commit();

 private:
  template <typename Record>
  void AddOrChange(std::size_t line, const Record& record);
  template <typename Record>
  NotKept Store(const Record& record, ItemOf<Record>& item, std::uint32_t& oid);
  void Remember(ce::INT itemType, const RecordIdentity& identity, std::uint32_t oid);
  template <typename Record>
  ce::ComPtr<ItemOf<Record>> Find(std::uint32_t oid);
  ImportedItems& Imported(ce::INT itemType);
  void CommitGroup();

  Session& session_;
  const ImportOptions options_;
  ImportReport& report_;
  std::map<ce::INT, ImportedItems> imported_;  // by item type
  ce::host::StoreBatch batch_;
  std::size_t uncommitted_ = 0;  // records
};

}  // namespace tool
