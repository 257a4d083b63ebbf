// Sends records in chunks, and keeps the mapping in step with what the agent answers.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_check.h"
#include "desktop/transfer/push_recognition.h"
#include "desktop/transfer/push_records.h"
#include "desktop/transfer/push_recovery.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/upload.h"

namespace desktop {

enum class PushOutcome {
  kAdded,
  kAddedAnew,  // its item was gone
  kChanged,
  kDeleted,
  kNotFound,         // a deletion of an item that is not there: not sent
  kNothingToDelete,  // a deletion that names no item
  kUnchanged,        // not sent: the same as when it was last sent or received
  kConflict,         // not sent: the handheld has something else there than the mapping remembers
  kFailed,
  kWrongAnswer,  // an OID that is another item's: nothing is known of the record
  kUnanswered,   // sent, but the connection failed before the answer: it may have been done
  kNotSent,
  kWouldAdd,
  kWouldAddAnew,
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
  std::size_t chunk = 20;    // records to a document, at least 1
  std::size_t ahead = 2000;  // records that may be on the way; 0 for one chunk after the other
  bool force = false;        // send unchanged ones too, whatever the handheld has there
  bool dryRun = false;       // look at the handheld, but send nothing and change no mapping
  // Look for what the handheld has already though the mapping does not know it. Numbers are those
  // of this country, by PhoneNumbers.
  bool recognise = false;
  std::string country = {};
  std::chrono::milliseconds quiet{1000};  // of PushRecovery
};

using PushHandler = std::function<void(const PushResult&)>;

class PushSession {
 public:
  // The mapping must outlive the session; so must a recovery that has looked for what is expected
  // already, with the same mapping.
  PushSession(const ConnectionOptions& connection, const PushPolicy& policy, Mapping& mapping,
              PushHandler onResult, PushRecovery* recovery = nullptr);
  PushSession(const PushSession&) = delete;
  PushSession& operator=(const PushSession&) = delete;

  // Hands out one result a record, in their order. Looks first at what the handheld has under the
  // OIDs that the mapping gives, and for what a push before this one may have added. A record that
  // is there already is unchanged, and remembered; one that is there with other content, too, is a
  // conflict. What a chunk
  // may add is on the disk before it is sent, and what was answered is remembered before it is
  // handed out; the mapping itself is left to the caller to save. When the connection or the
  // mapping's file fails, or the person interrupts (chunks on the way are brought to their end),
  // the results of the records concerned say so before it throws Error. Call it once.
  void Run(std::span<const PushRecord> records);

  // Items that a push before this one added late, and that were deleted as they are there twice.
  [[nodiscard]] std::size_t deletedLatecomers() const { return recovery_.deleted(); }

 private:
  struct Planned {
    const PushRecord* record;
    std::optional<Oid> oid;
    std::optional<PushOutcome> settled = {};  // known without sending it
    bool verified = false;                    // the handheld has its item
    bool gone = false;                        // the handheld has it no more
    std::string state = {};                   // StateOf the record, of one that may be added
    const Recognised* recognised = nullptr;   // the item, if the mapping does not know it
  };
  // Records that travel in one document, and those between them that need not.
  struct Chunk {
    std::vector<Planned> planned;
    std::size_t toSend = 0;    // of these
    std::size_t bytes = 0;     // of what is sent
    std::size_t answered = 0;  // of the planned ones, in their order
  };

  [[nodiscard]] Planned Plan(const PushRecord& record) const;
  [[nodiscard]] Planned PlanUnmapped(const PushRecord& record) const;
  void LookAtHandheld(std::span<const PushRecord> records);
  void Add(const PushRecord& record);
  [[nodiscard]] bool IsFull(const Chunk& chunk) const;
  [[nodiscard]] bool IsGroup() const;
  void SendGroup();
  void SendChunk();
  void RememberWhatMayBeAdded(Chunk& chunk);
  bool FinishChunk(bool wait = true);
  void Drain();
  void Finish();
  PushResult ResultOf(const Planned& settled);
  PushResult Apply(const Planned& planned, const RecordAnswer& answer);
  [[nodiscard]] bool IsAnothers(Oid oid) const;
  void Tell();
  void TakeWhatWasAnswered(bool wait);
  void GiveUp(std::span<const PushRecord> notPlanned);
  void ReportWould(const PushRecord& record);
  [[nodiscard]] PushOutcome WouldBe(const Planned& planned, const std::string& key) const;

  ConnectionOptions connection_;
  PushPolicy policy_;
  Mapping& mapping_;
  PushHandler onResult_;
  PushRecovery ownRecovery_{connection_, mapping_, policy_.quiet};
  PushRecovery& recovery_;
  std::map<Oid, ItemState> checked_;
  RecognisedItems recognised_;
  std::set<Oid> missing_;  // named by records, and not there: for deletion, in a dry run all
  std::set<Oid> added_;    // by this session
  std::optional<Upload> upload_;
  std::deque<Chunk> onTheWay_;  // sent, in part at least, and not answered for to the end
  std::size_t recordsOnTheWay_ = 0;
  std::deque<Chunk> group_;                   // not sent
  std::unordered_set<std::string> keys_;      // of the records of both
  std::map<std::string, std::string> would_;  // hashes of what a dry run would send, by key
  std::vector<PushResult> results_;           // not handed out yet
};

}  // namespace desktop
