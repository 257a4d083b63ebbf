#include "handheld/tool/message_import.h"

#include <fmt/core.h>

#include <utility>

#include "common/formats/items/identity.h"
#include "common/text/unicode.h"
#include "handheld/tool/message_records.h"

namespace tool {
namespace {

using formats::Call;
using formats::TextMessage;

constexpr std::size_t kMessagesPerCommit = 1000;
constexpr std::size_t kBytesPerCommit = 4 << 20;

ce::host::MessageStores& BoxOf(Session& session, const TextMessage&) {
  return session.Messages();
}
ce::host::CallLog& BoxOf(Session& session, const Call&) {
  return session.Calls();
}

std::size_t SizeOf(const TextMessage& message) {
  return message.text.size();
}
std::size_t SizeOf(const Call& call) {
  return call.note.size();
}

// As the handheld will tell of it, so that it is known again.
std::string KeptIdentity(const TextMessage& message) {
  return formats::IdentityOf(ToRecord(ToStored(message), u""));
}
std::string KeptIdentity(const Call& call) {
  return formats::IdentityOf(ToRecord(ToStored(call)));
}

std::string WhyNot(const TextMessage& message) {
  return fmt::format("folder: a handheld cannot have one of this path: \"{}\"", message.folder);
}
std::string WhyNot(const Call&) {
  return "a handheld cannot keep this call";
}

void CheckStore(ce::HRESULT status) {
  if (ce::Failed(status)) throw StoreFailure(StatusError("storing", status));
}

// Undoes at its end what has not been committed.
template <typename Box>
class Transaction {
 public:
  explicit Transaction(Box& box) : box_(box) { box_.Begin(); }
  ~Transaction() { box_.Abandon(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit() { CheckStore(box_.Commit()); }

 private:
  Box& box_;
};

}  // namespace

template <typename Record>
MessageImport<Record>::MessageImport(Session& session, const ImportOptions& options,
                                     ImportReport& report)
    : session_(session), options_(options), report_(report) {}

template <typename Record>
void MessageImport<Record>::CountHeld() {
  ForEachRecord<Record>(
      session_, [&](std::int64_t, const Record& record) { ++held_[formats::IdentityOf(record)]; });
  counted_ = true;
}

template <typename Record>
void MessageImport<Record>::Import(const Record& record, std::size_t line) {
  if (!counted_) CountHeld();
  report_.Step();
  std::string identity = KeptIdentity(record);
  std::size_t& held = held_[identity];
  if (++seen_[identity] <= held && !options_.duplicate) {
    ++report_.tally().unchanged;
    return;
  }
  ++held;
  pendingBytes_ += SizeOf(record);
  pending_.push_back({record, std::move(identity), line});
  if (pending_.size() >= kMessagesPerCommit || pendingBytes_ >= kBytesPerCommit) StorePending();
}

template <typename Record>
void MessageImport<Record>::Finish() {
  if (!pending_.empty()) StorePending();
}

template <typename Record>
void MessageImport<Record>::StorePending() {
  std::vector<Pending> pending = std::exchange(pending_, {});
  pendingBytes_ = 0;
  std::size_t added = 0;
  Transaction transaction(BoxOf(session_, Record{}));
  for (const Pending& one : pending) {
    if (Insert(one)) {
      ++added;
      continue;
    }
    --held_[one.identity];
    report_.Failed(one.line, WhyNot(one.record));
  }
  if (options_.dryRun)
    folders_.clear();  // they go with the transaction
  else
    transaction.Commit();
  report_.tally().added += added;
}

template <typename Record>
std::int64_t MessageImport<Record>::SmsStoreForImport() {
  if (const auto store = SmsStore(session_)) return *store;
  std::int64_t made = 0;
  CheckStore(session_.Messages().CreateStore(ce::host::kSmsStoreName, made));
  return made;
}

template <typename Record>
bool MessageImport<Record>::FindFolder(const std::string& path, std::int64_t& folder) {
  if (const auto known = folders_.find(path); known != folders_.end()) {
    folder = known->second;
    return true;
  }
  const ce::HRESULT status =
      session_.Messages().EnsureFolder(SmsStoreForImport(), text::FromUtf8Lossy(path), folder);
  if (status == ce::E_INVALIDARG) return false;
  CheckStore(status);
  folders_[path] = folder;
  return true;
}

template <>
bool MessageImport<TextMessage>::Insert(const Pending& pending) {
  std::int64_t folder = 0;
  if (!FindFolder(pending.record.folder, folder)) return false;
  CheckStore(session_.Messages().Insert(folder, ToStored(pending.record)));
  return true;
}

template <>
bool MessageImport<Call>::Insert(const Pending& pending) {
  CheckStore(session_.Calls().Insert(ToStored(pending.record)));
  return true;
}

template class MessageImport<TextMessage>;
template class MessageImport<Call>;

}  // namespace tool
