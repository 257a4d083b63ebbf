// What a folder's synchronisation remembers from one run to the next: which item of the desk is
// which of the handheld, what each side had when both last agreed, and what a run that is under way
// is about to put on the desk.
//
// It holds what people wrote: for its owner alone. Every failure throws Error; a file that cannot
// be understood is never written over.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/folder/desk_item.h"
#include "desktop/merge/item.h"
#include "desktop/sync/database.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// One item, as both sides have it. What each had (the desk's item, the handheld's record) is asked
// for by the number: most runs need neither.
struct Link {
  std::int64_t number = 0;  // 0 for one that is not remembered yet
  ItemKind kind = ItemKind::kContact;
  std::string key;         // the desk's
  std::string file;        // where it stood there, below the folder
  std::size_t line = 0;    // of that file
  Oid oid = 0;             // the handheld's
  std::string recordHash;  // of the handheld's record
};

struct Bases {
  Item desk;
  std::string record;  // as it came from the handheld
};

// An item that a run is about to make a file of: one of the handheld's, or the second of two of a
// conflict, which has no OID.
struct Intent {
  ItemKind kind = ItemKind::kContact;
  std::string uid;  // that it will have there
  Oid oid = 0;
  std::string recordHash;
};

// By the name of the file.
using FileStamps = std::map<std::string, std::string>;

class Memory {
 public:
  // Makes it when there is none, unless there must have been one.
  Memory(const std::filesystem::path& path, bool mustExist);

  [[nodiscard]] const std::vector<Link>& links() const { return links_; }
  [[nodiscard]] const std::vector<Intent>& intents() const { return intents_; }
  [[nodiscard]] const FileStamps& stamps() const { return stamps_; }
  [[nodiscard]] Bases BasesOf(const Link& link) const;
  // The desk, as far as it is remembered.
  [[nodiscard]] DeskFiles Desk() const;
  // Empty for what has not been noted.
  [[nodiscard]] std::string Note(std::string_view name) const;
  [[nodiscard]] const std::filesystem::path& path() const { return database_.path(); }

  // What follows is remembered, all of it or nothing, once Commit has returned.
  class Changes {
   public:
    explicit Changes(Memory& memory);
    void SetNote(std::string_view name, std::string_view value);
    void Put(const Link& link, const Item& desk, std::string_view record);
    // The same item at another place, or otherwise told by the handheld.
    void Touch(const Link& link);
    void Remove(const Link& link);
    void ExpectOnDesk(const std::vector<Intent>& intents);
    void ForgetIntents();
    void SetStamps(const FileStamps& stamps);
    // Looks at what is remembered afresh, where anything is otherwise.
    void Commit();

   private:
    void BindPlace(Query& query, const Link& link) const;

    Memory& memory_;
    Transaction transaction_;
    const std::int64_t changesBefore_;
    Query add_, change_, touch_, remove_, addBases_;
  };

 private:
  void Load();

  Database database_;
  std::vector<Link> links_;
  std::vector<Intent> intents_;
  FileStamps stamps_;
};

}  // namespace desktop
