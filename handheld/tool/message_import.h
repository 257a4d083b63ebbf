// Puts messages or calls of other programs on a handheld, a file after another.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "handheld/tool/import_report.h"
#include "handheld/tool/item_import.h"
#include "handheld/tool/records.h"
#include "handheld/tool/session.h"

namespace tool {

// A record that the handheld has (formats::IdentityOf) is left alone, whatever has become of it
// there. Of records that are the same to that measure, a file adds as many as it has more than the
// handheld.
//
// New records are held back and stored some hundred at a time, each time in a transaction, so that
// messages and calls of one file do not wait for each other.
//
// `Record` is formats::TextMessage or formats::Call. Calls throw StoreFailure when the store fails,
// and as Session does; what was stored before stays.
template <typename Record>
class MessageImport {
 public:
  MessageImport(Session& session, const ImportOptions& options, ImportReport& report);

  // From here on records are of the report's file, and counted there.
  void Begin() { seen_.clear(); }
  // A record that cannot be kept is named and counted.
  void Import(const Record& record, std::size_t line);
  // Stores what is held back.
  void Finish();

 private:
  struct Pending {
    Record record;
    std::string identity;
    std::size_t line = 0;
  };

  void CountHeld();
  void StorePending();
  // False when it cannot be kept.
  bool Insert(const Pending& pending);
  std::int64_t SmsStoreForImport();
  bool FindFolder(const std::string& path, std::int64_t& folder);

  Session& session_;
  const ImportOptions options_;
  ImportReport& report_;
  bool counted_ = false;
  std::unordered_map<std::string, std::size_t> held_;  // on the handheld, by identity
  std::unordered_map<std::string, std::size_t> seen_;  // in the file
  std::vector<Pending> pending_;
  std::size_t pendingBytes_ = 0;
  std::map<std::string, std::int64_t> folders_;  // by path
};

}  // namespace tool
