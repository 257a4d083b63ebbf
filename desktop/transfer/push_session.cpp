#include "desktop/transfer/push_session.h"

#include <algorithm>
#include <new>
#include <utility>

#include "desktop/wire/error.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

// A chunk is one document in the agent's memory.
constexpr std::size_t kMostChunkBytes = 4 * 1024 * 1024;
// Whether they need to be sent or not.
constexpr std::size_t kMostPlanned = 1000;

std::string KeyOf(const PushRecord& record) {
  if (record.ownOid) return "o" + std::to_string(*record.ownOid);
  if (!record.uid.empty()) return "u" + record.kind + "\n" + record.uid;
  return record.content.empty() ? std::string() : "c" + record.kind + "\n" + record.content;
}

std::string ToSend(const PushRecord& record, const std::optional<Oid>& oid) {
  return oid && !record.ownOid ? WithOid(record.xml, *oid) : record.xml;
}

// Without a look at the handheld only the answers tell that an OID is another item by now.
PushPolicy Careful(PushPolicy policy) {
  if (policy.force) policy.ahead = 0;
  return policy;
}

}  // namespace

PushSession::PushSession(const ConnectionOptions& connection, const PushPolicy& policy,
                         Mapping& mapping, PushHandler onResult, PushRecovery* recovery)
    : connection_(connection),
      policy_(Careful(policy)),
      mapping_(mapping),
      onResult_(std::move(onResult)),
      recovery_(recovery == nullptr ? ownRecovery_ : *recovery) {}

PushSession::Planned PushSession::Plan(const PushRecord& record) const {
  if (record.ownOid) {
    Planned planned{&record, record.ownOid};
    if (record.deletes && missing_.contains(*record.ownOid)) {
      planned.settled = PushOutcome::kNotFound;
    }
    return planned;
  }
  const MappedItem* item = FindMapped(mapping_, record);
  if (item == nullptr) return PlanUnmapped(record);
  Planned planned{&record, item->oid};
  const auto checked = checked_.find(item->oid);
  if (checked != checked_.end()) {
    planned.gone = checked->second == ItemState::kGone;
    if (planned.gone) return planned;
    if (checked->second == ItemState::kChanged) planned.settled = PushOutcome::kConflict;
    planned.verified = true;
  }
  if (!planned.settled && !policy_.force && item->hash == record.hash) {
    planned.settled = PushOutcome::kUnchanged;
  }
  return planned;
}

PushSession::Planned PushSession::PlanUnmapped(const PushRecord& record) const {
  const auto found = recognised_.find(&record);
  if (found == recognised_.end()) return {&record, std::nullopt};
  Planned planned{&record, found->second.oid};
  planned.verified = true;
  planned.recognised = &found->second;
  if (policy_.force) return planned;
  if (found->second.hash.empty()) {
    planned.settled = PushOutcome::kConflict;
  } else if (found->second.hash == record.hash) {
    planned.settled = PushOutcome::kUnchanged;
  }
  return planned;
}

void PushSession::LookAtHandheld(std::span<const PushRecord> records) {
  if (!policy_.dryRun) recovery_.AdoptExpected();
  if (!policy_.force) checked_ = CheckMapped(connection_, mapping_, records);
  missing_ = FindMissing(connection_, records, policy_.dryRun ? Named::kAtAll : Named::kToDelete);
  if (policy_.recognise) {
    recognised_ = Recognise(connection_, mapping_, records, phone::PhoneNumbers(policy_.country));
  }
}

void PushSession::Run(std::span<const PushRecord> records) {
  std::size_t next = 0;
  try {
    if (!records.empty()) LookAtHandheld(records);
    for (; policy_.dryRun && next < records.size(); ++next) ReportWould(records[next]);
    while (next < records.size()) {
      const PushRecord& record = records[next];
      // What becomes of the first of two decides what the second is.
      if (keys_.contains(KeyOf(record))) Drain();
      ++next;
      Add(record);
    }
    Drain();
  } catch (const Interrupted&) {
    TakeWhatWasAnswered(true);
    GiveUp(records.subspan(next));
    throw;
  } catch (const std::bad_alloc&) {
    // An answer may be half taken in. The journal knows what was on its way, as after a kill.
    throw;
  } catch (...) {
    TakeWhatWasAnswered(false);
    GiveUp(records.subspan(next));
    throw;
  }
  Finish();
  if (!policy_.dryRun) recovery_.DeleteLatecomers();
}

void PushSession::Finish() {
  if (!upload_) return;
  try {
    upload_->Finish();
  } catch (const Error&) {
    // Every record has been answered for: an agent that has gone since has nothing left to do.
  }
  upload_.reset();
}

bool PushSession::IsFull(const Chunk& chunk) const {
  return chunk.toSend >= policy_.chunk || chunk.bytes >= kMostChunkBytes ||
         chunk.planned.size() >= std::max(policy_.chunk, kMostPlanned);
}

// Half of what may be on the way: while the handheld works on it, the other half is made ready.
bool PushSession::IsGroup() const {
  std::size_t toSend = 0;
  std::size_t bytes = 0;
  std::size_t planned = 0;
  for (const Chunk& chunk : group_) {
    toSend += chunk.toSend;
    bytes += chunk.bytes;
    planned += chunk.planned.size();
  }
  return 2 * toSend >= policy_.ahead || bytes >= kMostChunkBytes || planned >= kMostPlanned;
}

void PushSession::Add(const PushRecord& record) {
  if (group_.empty() || IsFull(group_.back())) group_.emplace_back();
  Chunk& chunk = group_.back();
  chunk.planned.push_back(Plan(record));
  if (std::string key = KeyOf(record); !key.empty()) keys_.insert(std::move(key));
  if (!chunk.planned.back().settled) {
    ++chunk.toSend;
    chunk.bytes += record.xml.size();
  }
  if (IsFull(chunk) && IsGroup()) SendGroup();
}

// What it may add lies on the disk by then, at the cost of one synchronisation for all of it.
void PushSession::SendGroup() {
  for (Chunk& chunk : group_) RememberWhatMayBeAdded(chunk);
  mapping_.SaveChanges();
  while (!group_.empty()) {
    const std::size_t after = recordsOnTheWay_ + group_.front().toSend;
    if (recordsOnTheWay_ > 0 && after > policy_.ahead) {
      FinishChunk();
    } else {
      SendChunk();
    }
  }
  while (!onTheWay_.empty() && onTheWay_.front().toSend == 0) FinishChunk();
}

void PushSession::SendChunk() {
  std::vector<std::string> records;
  for (const Planned& each : group_.front().planned) {
    // An OID that is gone may by now be that of a record sent before.
    if (!each.settled) records.push_back(ToSend(*each.record, each.gone ? std::nullopt : each.oid));
  }
  if (!records.empty()) {
    if (!upload_) upload_.emplace(connection_);
    upload_->ThrowIfInterrupted();
  }
  onTheWay_.push_back(std::move(group_.front()));
  group_.pop_front();
  recordsOnTheWay_ += records.size();
  if (!records.empty()) upload_->Send(records);
}

void PushSession::RememberWhatMayBeAdded(Chunk& chunk) {
  for (Planned& each : chunk.planned) {
    const PushRecord& record = *each.record;
    if (each.settled || each.verified || record.ownOid) continue;
    each.state = StateOf(record);
    mapping_.Expect({0, record.kind, record.uid, record.content, record.hash, each.state,
                     recovery_.IsMissing(each.state)});
  }
}

// False when it would have to wait for an answer and is not to.
bool PushSession::FinishChunk(bool wait) {
  Chunk& chunk = onTheWay_.front();
  for (; chunk.answered < chunk.planned.size(); ++chunk.answered) {
    const Planned& each = chunk.planned[chunk.answered];
    if (each.settled) {
      results_.push_back(ResultOf(each));
      continue;
    }
    if (!wait && !upload_->HasAnswer()) return false;
    results_.push_back(Apply(each, upload_->Receive()));
    --recordsOnTheWay_;
  }
  Tell();
  for (const Planned& each : chunk.planned) keys_.erase(KeyOf(*each.record));
  onTheWay_.pop_front();
  return true;
}

void PushSession::Drain() {
  SendGroup();
  while (!onTheWay_.empty()) FinishChunk();
}

PushResult PushSession::ResultOf(const Planned& settled) {
  const PushRecord& record = *settled.record;
  if (settled.settled == PushOutcome::kNotFound) mapping_.Remove(*settled.oid);
  if (settled.settled == PushOutcome::kUnchanged && settled.recognised != nullptr) {
    mapping_.Put({*settled.oid, record.kind, record.uid, record.content, record.hash,
                  settled.recognised->state});
  }
  return {settled.record, *settled.settled, settled.oid.value_or(0), 0, {}};
}

// Whether that is an item that was there before.
bool PushSession::IsAnothers(Oid oid) const {
  const auto checked = checked_.find(oid);
  return added_.contains(oid) || (checked != checked_.end() && checked->second != ItemState::kGone);
}

PushResult PushSession::Apply(const Planned& planned, const RecordAnswer& answer) {
  const PushRecord& record = *planned.record;
  PushResult result{&record, PushOutcome::kFailed, planned.oid.value_or(0), answer.result, {}};
  const bool isNew = !record.deletes && answer.result >= 0 && answer.oid != 0 &&
                     (planned.gone || planned.oid != answer.oid);
  if (isNew && IsAnothers(answer.oid)) {
    // What was to be added is expected on: it may be there under another OID.
    return {&record, PushOutcome::kWrongAnswer, answer.oid, answer.result, {}};
  }
  if (!record.ownOid) mapping_.Settle({0, record.kind, record.uid, record.content, {}});
  if (answer.result < 0) return result;
  if (record.deletes) {
    result.outcome = planned.oid ? PushOutcome::kDeleted : PushOutcome::kNothingToDelete;
    if (!planned.oid) return result;
    mapping_.Remove(*planned.oid);
    missing_.insert(*planned.oid);
    added_.erase(*planned.oid);
    return result;
  }
  if (answer.oid == 0) return result;
  result.oid = answer.oid;
  if (isNew) added_.insert(answer.oid);
  if (!planned.oid) {
    result.outcome = PushOutcome::kAdded;
  } else if (!isNew) {
    result.outcome = PushOutcome::kChanged;
  } else {
    result.outcome = PushOutcome::kAddedAnew;
    mapping_.Move(*planned.oid, answer.oid);
  }
  // With a code the item is there, but not all of it as it was sent.
  std::string state;
  if (answer.result == 0) state = planned.state.empty() ? StateOf(record) : planned.state;
  mapping_.Put(
      {answer.oid, record.kind, record.uid, record.content, record.hash, std::move(state)});
  return result;
}

// What was told of is recognised after the process has been killed.
void PushSession::Tell() {
  mapping_.NoteChanges();
  for (const PushResult& result : results_) onResult_(result);
  results_.clear();
}

// What Run would make of it, after those before it.
PushOutcome PushSession::WouldBe(const Planned& planned, const std::string& key) const {
  const PushRecord& record = *planned.record;
  const auto before = record.ownOid ? would_.end() : would_.find(key);
  if (before != would_.end()) {
    return !policy_.force && before->second == record.hash ? PushOutcome::kUnchanged
                                                           : PushOutcome::kWouldChange;
  }
  if (planned.settled) return *planned.settled;
  if (record.deletes) {
    return planned.oid ? PushOutcome::kWouldDelete : PushOutcome::kNothingToDelete;
  }
  const bool gone = planned.gone || (record.ownOid && missing_.contains(*record.ownOid));
  if (gone) return PushOutcome::kWouldAddAnew;
  return planned.oid ? PushOutcome::kWouldChange : PushOutcome::kWouldAdd;
}

void PushSession::ReportWould(const PushRecord& record) {
  const Planned planned = Plan(record);
  const std::string key = KeyOf(record);
  PushResult result{&record, WouldBe(planned, key), planned.oid.value_or(0), 0, {}};
  switch (result.outcome) {
    case PushOutcome::kWouldDelete:
      missing_.insert(*planned.oid);
      [[fallthrough]];
    case PushOutcome::kWouldAdd:
    case PushOutcome::kWouldAddAnew:
    case PushOutcome::kWouldChange:
      result.xml = ToSend(record, planned.gone ? std::nullopt : planned.oid);
      if (!key.empty()) would_[key] = record.hash;
      break;
    default:
      break;
  }
  onResult_(result);
}

void PushSession::TakeWhatWasAnswered(bool wait) {
  try {
    while (!onTheWay_.empty() && FinishChunk(wait)) {
    }
  } catch (const Error&) {
    // The failure that brought us here is the one to hear about.
  }
}

void PushSession::GiveUp(std::span<const PushRecord> notPlanned) {
  try {
    mapping_.SaveChanges();
  } catch (const Error&) {
    // As above.
  }
  for (const PushResult& result : results_) onResult_(result);
  const auto giveUp = [&](const std::deque<Chunk>& chunks, PushOutcome outcome) {
    for (const Chunk& chunk : chunks) {
      for (std::size_t i = chunk.answered; i < chunk.planned.size(); ++i) {
        const Planned& each = chunk.planned[i];
        onResult_({each.record, each.settled.value_or(outcome), each.oid.value_or(0), 0, {}});
      }
    }
  };
  giveUp(onTheWay_, PushOutcome::kUnanswered);
  giveUp(group_, PushOutcome::kNotSent);
  for (const PushRecord& record : notPlanned) {
    onResult_({&record, PushOutcome::kNotSent, record.ownOid.value_or(0), 0, {}});
  }
}

}  // namespace desktop
