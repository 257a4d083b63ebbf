// Puts the records of other programs on a handheld, one at a time, whatever their kind.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "handheld/outlook/outlook_app.h"
#include "handheld/tool/imported_items.h"
#include "handheld/tool/item_fields.h"
#include "handheld/tool/records.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

struct ImportOptions {
  bool dryRun = false;     // say what would be done, change nothing
  bool duplicate = false;  // add even what was imported before
};

struct ImportTally {
  std::size_t added = 0, changed = 0, unchanged = 0, failed = 0, notices = 0;
  std::size_t done() const { return added + changed + unchanged; }
};

// Where a record begins.
struct Place {
  const std::filesystem::path& file;
  std::size_t line;
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
  ItemImport(Session& session, const ImportOptions& options, const Report& report);

  // A record that was imported before (its UID, else its content, is known) changes its item when
  // both the record's content as it was then and the item's are others; it is left alone when not.
  // A record that cannot be kept is named and counted. Throws StoreFailure.
  template <typename Record>
  void Import(const Place& place, const Record& record, ImportTally& tally);
  void Notice(const Place& place, std::string_view text, ImportTally& tally);

  // Makes what was imported last, and only then says what was added and changed. Throws StatusError
  // when it cannot be.
  void Commit();

 private:
  template <typename Record>
  void AddOrChange(const Place& place, const Record& record, ImportTally& tally);
  template <typename Record>
  NotKept Store(const Record& record, ItemOf<Record>& item, std::uint32_t& oid);
  void Remember(ce::INT itemType, const RecordIdentity& identity, std::uint32_t oid);
  template <typename Record>
  ce::ComPtr<ItemOf<Record>> Find(std::uint32_t oid);
  ImportedItems& Imported(ce::INT itemType);
  void CommitGroup();
  void Say(const char* verb, std::uint32_t oid, const std::string& name);

  Session& session_;
  const ImportOptions options_;
  const Report report_;
  std::map<ce::INT, ImportedItems> imported_;  // by item type
  ce::host::StoreBatch batch_;
  std::size_t uncommitted_ = 0;  // records
  std::string unsaid_;           // lines about them
};

}  // namespace tool
