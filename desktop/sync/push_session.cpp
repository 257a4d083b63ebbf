#include "desktop/sync/push_session.h"

#include <utility>

#include "desktop/wire/error.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

// A chunk is one document in the agent's memory.
constexpr std::size_t kMostChunkBytes = 4 * 1024 * 1024;

std::string KeyOf(const PushRecord& record) {
  if (record.ownOid) return "o" + std::to_string(*record.ownOid);
  if (!record.uid.empty()) return "u" + record.kind + "\n" + record.uid;
  return record.content.empty() ? std::string() : "c" + record.kind + "\n" + record.content;
}

std::string ToSend(const PushRecord& record, const std::optional<Oid>& oid) {
  return oid && !record.ownOid ? WithOid(record.xml, *oid) : record.xml;
}

}  // namespace

PushSession::PushSession(const ConnectionOptions& connection, const PushPolicy& policy,
                         Mapping& mapping, PushHandler onResult)
    : connection_(connection), policy_(policy), mapping_(mapping), onResult_(std::move(onResult)) {}

PushSession::Planned PushSession::Plan(const PushRecord& record) const {
  if (record.ownOid) return {&record, record.ownOid, std::nullopt};
  const MappedItem* item = FindMapped(mapping_, record);
  if (item == nullptr) return {&record, std::nullopt, std::nullopt};
  Planned planned{&record, item->oid, std::nullopt};
  const auto checked = checked_.find(item->oid);
  if (checked != checked_.end()) {
    if (checked->second == ItemState::kGone) return planned;
    if (checked->second == ItemState::kChanged) planned.settled = PushOutcome::kConflict;
    planned.verified = true;
  }
  if (!planned.settled && !policy_.force && item->hash == record.hash) {
    planned.settled = PushOutcome::kUnchanged;
  }
  return planned;
}

void PushSession::LookAtHandheld(std::span<const PushRecord> records) {
  AdoptExpected(connection_, mapping_);
  mapping_.SaveChanges();
  if (!policy_.force) checked_ = CheckMapped(connection_, mapping_, records);
}

void PushSession::Run(std::span<const PushRecord> records) {
  std::size_t next = 0;
  if (policy_.dryRun) {
    for (const PushRecord& record : records) ReportWould(record);
    return;
  }
  try {
    if (!records.empty()) LookAtHandheld(records);
    while (next < records.size()) {
      const PushRecord& record = records[next];
      // What becomes of the first of two decides what the second is.
      if (keys_.contains(KeyOf(record))) Flush();
      ++next;
      Add(record);
    }
    Flush();
  } catch (...) {
    GiveUp(records.subspan(next));
    throw;
  }
  if (!upload_) return;
  try {
    upload_->Finish();
  } catch (const Error&) {
    // Every record has been answered for: an agent that has gone since has nothing left to do.
  }
}

void PushSession::Add(const PushRecord& record) {
  pending_.push_back(Plan(record));
  if (const std::string key = KeyOf(record); !key.empty()) keys_.insert(key);
  if (pending_.back().settled) return;
  ++toSend_;
  bytesToSend_ += record.xml.size();
  if (toSend_ >= policy_.chunk || bytesToSend_ >= kMostChunkBytes) Flush();
}

void PushSession::Flush() {
  if (toSend_ > 0) SendPending();
  ReportSettled();
  pending_.clear();
  keys_.clear();
  reported_ = toSend_ = bytesToSend_ = 0;
  mapping_.SaveChanges();
}

void PushSession::SendPending() {
  std::vector<std::string> chunk;
  for (const Planned& each : pending_) {
    if (!each.settled) chunk.push_back(ToSend(*each.record, each.oid));
  }
  if (!upload_) upload_.emplace(connection_);
  RememberWhatMayBeAdded();
  try {
    upload_->Send(chunk, [this](const RecordAnswer& answer) { TakeAnswer(answer); });
  } catch (const Interrupted&) {
    throw;
  } catch (...) {
    mayHaveArrived_ = true;
    throw;
  }
}

void PushSession::RememberWhatMayBeAdded() {
  for (const Planned& each : pending_) {
    const PushRecord& record = *each.record;
    if (each.settled || each.verified || record.ownOid || record.state.empty()) continue;
    mapping_.Expect({0, record.kind, record.uid, record.content, record.hash, record.state});
  }
  mapping_.SaveChanges();
}

void PushSession::ReportSettled() {
  while (reported_ < pending_.size() && pending_[reported_].settled) {
    const Planned& each = pending_[reported_++];
    onResult_({each.record, *each.settled, *each.oid, 0, {}});
  }
}

void PushSession::TakeAnswer(const RecordAnswer& answer) {
  ReportSettled();
  onResult_(Apply(pending_[reported_++], answer));
}

PushResult PushSession::Apply(const Planned& planned, const RecordAnswer& answer) {
  const PushRecord& record = *planned.record;
  PushResult result{&record, PushOutcome::kFailed, planned.oid.value_or(0), answer.result, {}};
  if (!record.ownOid) mapping_.Settle({0, record.kind, record.uid, record.content, {}});
  if (answer.result < 0) return result;
  if (record.deletes) {
    result.outcome = planned.oid ? PushOutcome::kDeleted : PushOutcome::kNothingToDelete;
    if (planned.oid) mapping_.Remove(*planned.oid);
    return result;
  }
  if (answer.oid == 0) return result;
  result.oid = answer.oid;
  if (!planned.oid) {
    result.outcome = PushOutcome::kAdded;
  } else if (*planned.oid == answer.oid) {
    result.outcome = PushOutcome::kChanged;
  } else {
    result.outcome = PushOutcome::kAddedAnew;
    mapping_.Move(*planned.oid, answer.oid);
  }
  // With a code the item is there, but not all of it as it was sent.
  mapping_.Put({answer.oid, record.kind, record.uid, record.content, record.hash,
                answer.result == 0 ? record.state : std::string()});
  return result;
}

void PushSession::ReportWould(const PushRecord& record) {
  const Planned planned = Plan(record);
  PushResult result{&record, PushOutcome::kWouldAdd, planned.oid.value_or(0), 0, {}};
  const std::string key = KeyOf(record);
  const bool again = !key.empty() && !keys_.insert(key).second;
  if (planned.settled || (again && !planned.oid && !record.content.empty())) {
    result.outcome = PushOutcome::kUnchanged;
  } else {
    result.xml = ToSend(record, planned.oid);
    if (record.deletes) {
      result.outcome = PushOutcome::kWouldDelete;
    } else if (planned.oid || again) {
      result.outcome = PushOutcome::kWouldChange;
    }
  }
  onResult_(result);
}

void PushSession::GiveUp(std::span<const PushRecord> notPlanned) {
  ReportSettled();
  for (; reported_ < pending_.size(); ++reported_) {
    const Planned& each = pending_[reported_];
    const PushOutcome outcome = each.settled      ? *each.settled
                                : mayHaveArrived_ ? PushOutcome::kUnanswered
                                                  : PushOutcome::kNotSent;
    onResult_({each.record, outcome, each.oid.value_or(0), 0, {}});
  }
  for (const PushRecord& record : notPlanned) {
    onResult_({&record, PushOutcome::kNotSent, record.ownOid.value_or(0), 0, {}});
  }
  try {
    mapping_.SaveChanges();
  } catch (const Error&) {
    // The failure that brought us here is the one to hear about.
  }
}

}  // namespace desktop
