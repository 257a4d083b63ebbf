// Which item of a handheld a record of this computer is, remembered from one run to the next.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desktop/transfer/journal.h"
#include "desktop/wire/target.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

struct MappedItem {
  Oid oid = 0;
  std::string kind;        // its name: "contact", "appointment", "task"
  std::string uid;         // the identity that people's programs know it by; empty for none
  std::string content;     // stands in for a UID that the record does not have; empty for none
  std::string hash;        // of what carries it, as it was last sent or received
  std::string state = {};  // StateHash of that; empty when it is not known
  // Of an expected one: it was before, and none of its state was there when it was sent again.
  bool again = false;
};

// For its owner alone: it holds what people are called. Held by one process at a time: a lock file
// beside it says so. Throws Error where it cannot go on; a file that cannot be understood is never
// written over. While a command is under way its changes are in a journal beside the file; the
// journal of one that did not come to its end is taken in.
class Mapping {
 public:
  // A file that does not exist is an empty mapping; its directory is made.
  explicit Mapping(std::filesystem::path path);
  ~Mapping();
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  // Null when there is none. The pointers hold until the next change.
  [[nodiscard]] const MappedItem* FindOid(Oid oid) const;
  [[nodiscard]] const MappedItem* FindUid(std::string_view kind, std::string_view uid) const;
  [[nodiscard]] const MappedItem* FindContent(std::string_view kind,
                                              std::string_view content) const;
  [[nodiscard]] const std::map<Oid, MappedItem>& items() const { return items_; }

  // Takes the place of the item of that OID, whose UID and content key it keeps where it has none,
  // and of items that had its UID or its content key.
  void Put(MappedItem item);
  // The item is now another one: keeps all but the OID.
  void Move(Oid from, Oid to);
  void Remove(Oid oid);
  void RemoveKind(std::string_view kind);

  // Items, with an OID of 0, that were about to be sent and whose answer has not come. Put and
  // Settle end that for an item with the same UID or content key.
  void Expect(MappedItem item);
  void Settle(const MappedItem& item);
  [[nodiscard]] const std::map<std::string, MappedItem>& expected() const { return expected_; }

  // Remembers what has changed since the last time, at the cost of the changes alone. A process
  // that ends any moment later leaves it behind, a computer only once SaveChanges has returned.
  void NoteChanges();
  void SaveChanges();
  // Writes the file if anything has changed, whole or not at all, and ends the journal. When it
  // fails, what has been remembered is not lost.
  void Save();

 private:
  void Lock();
  void Load();
  void LoadFile();
  void LoadJournal();
  void LoadLine(std::string_view line);
  [[noreturn]] static void Refuse(const std::filesystem::path& path, const std::string& why);

  std::filesystem::path path_;
  int lock_ = -1;
  Journal journal_;
  bool changed_ = false;                        // since the file was written
  std::set<Oid> unsaved_;                       // changed since the journal was written
  std::map<std::string, MappedItem> expected_;  // by key
  std::string unsavedExpected_;                 // lines that the journal does not have yet
  std::map<Oid, MappedItem> items_;
  std::unordered_map<std::string, Oid> byKey_;
};

// The OIDs of items of the kind. Throws Error for a UID that is not known.
std::vector<Oid> OidsOf(const Mapping& mapping, std::string_view kind,
                        const std::vector<std::string>& uids);

// The one chosen, else $XDG_STATE_HOME/corvane/<host>_<port>.json, by default below ~/.local/state.
// Throws Error when neither of these is known.
std::filesystem::path MappingPath(const std::optional<std::filesystem::path>& chosen,
                                  const Target& target);

}  // namespace desktop
