// Sends records in chunks, and keeps the mapping in step with what the agent answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "desktop/sync/mapping.h"
#include "desktop/sync/push_check.h"
#include "desktop/sync/push_records.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/upload.h"

namespace desktop {

enum class PushOutcome {
  kAdded,
  kAddedAnew,  // its item was gone
  kChanged,
  kDeleted,
  kNothingToDelete,  // a deletion that names no item
  kUnchanged,        // not sent: the same as when it was last sent or received
  kConflict,         // not sent: the handheld has something else there than the mapping remembers
  kFailed,
  kUnanswered,  // sent, but the connection failed before the answer: it may have been done
  kNotSent,
  kWouldAdd,
  kWouldChange,
  kWouldDelete,
};

struct PushResult {
  const PushRecord* record = nullptr;
  PushOutcome outcome = PushOutcome::kNotSent;
  Oid oid = 0;            // 0 when there is none
  std::int32_t code = 0;  // as answered
  std::string xml;        // what would be sent, of a dry run
};

struct PushPolicy {
  std::size_t chunk = 20;  // records to a document, at least 1
  bool force = false;      // send unchanged ones too, whatever the handheld has there
  bool dryRun = false;     // connect to nobody, change no mapping
};

using PushHandler = std::function<void(const PushResult&)>;

class PushSession {
 public:
  // The mapping must outlive the session.
  PushSession(const ConnectionOptions& connection, const PushPolicy& policy, Mapping& mapping,
              PushHandler onResult);

  // Hands out one result a record, in their order. Looks first at what the handheld has under the
  // OIDs that the mapping gives, and for what a push before this one may have added. The mapping's
  // changes are saved after every chunk, the mapping itself is left to the caller to save. When the
  // connection or the mapping's file fails, or the person interrupts (between chunks), the results
  // of the records concerned say so before it throws Error. Call it once.
  void Run(std::span<const PushRecord> records);

 private:
  struct Planned {
    const PushRecord* record;
    std::optional<Oid> oid;
    std::optional<PushOutcome> settled;  // known without sending it
    bool verified = false;               // the handheld has its item
  };

  [[nodiscard]] Planned Plan(const PushRecord& record) const;
  void LookAtHandheld(std::span<const PushRecord> records);
  void Add(const PushRecord& record);
  void Flush();
  void SendPending();
  void RememberWhatMayBeAdded();
  void TakeAnswer(const RecordAnswer& answer);
  PushResult Apply(const Planned& planned, const RecordAnswer& answer);
  void ReportSettled();
  void ReportWould(const PushRecord& record);
  void GiveUp(std::span<const PushRecord> notPlanned);

  ConnectionOptions connection_;
  PushPolicy policy_;
  Mapping& mapping_;
  PushHandler onResult_;
  std::map<Oid, ItemState> checked_;
  std::optional<Upload> upload_;
  std::vector<Planned> pending_;
  std::size_t reported_ = 0;  // of the pending ones
  std::size_t toSend_ = 0;
  std::size_t bytesToSend_ = 0;
  bool mayHaveArrived_ = false;  // the chunk whose sending or answers failed
  std::set<std::string> keys_;   // of the pending ones; of all in a dry run
};

}  // namespace desktop
