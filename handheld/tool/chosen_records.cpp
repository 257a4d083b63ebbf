#include "handheld/tool/chosen_records.h"

#include <set>
#include <utility>

#include "handheld/tool/imported_items.h"
#include "handheld/tool/records.h"

namespace tool {
namespace {

std::uint32_t OidOfKind(Session& session, ce::INT itemType, const std::string& uid) {
  const auto known = ImportedItems(session, itemType).Find(RecordIdentity(uid, {}));
  return known ? known->oid : 0;
}

}  // namespace

template <typename Record>
Outcome ChooseRecords(Session& session, const ChosenRecords& chosen, const Report& report) {
  std::vector<std::string> missing;
  std::set<std::int64_t> wanted(chosen.numbers.begin(), chosen.numbers.end());
  if constexpr (kIsItem<Record>) {
    for (const std::string& uid : chosen.uids) {
      const std::uint32_t oid = OidOfKind(session, KindOf<Record>::kItemType, uid);
      oid == 0 ? missing.push_back(uid) : static_cast<void>(wanted.insert(oid));
    }
  } else if (!chosen.uids.empty()) {
    throw UsageError("--uid: messages and calls have none");
  }
  session.Choose(wanted);
  std::set<std::int64_t> there;
  ForEachRecord<Record>(session, [&](std::int64_t number, const Record&) { there.insert(number); });
  for (const std::int64_t number : wanted)
    if (!there.contains(number)) missing.push_back(std::to_string(number));
  for (const std::string& each : missing)
    Tell(report.err, "corvane-device: {}: no such {}\n", each, kRecordName<Record>);
  session.Choose(there);
  if (missing.empty()) return Outcome::kDone;
  return there.empty() ? Outcome::kFailed : Outcome::kPartlyDone;
}

template Outcome ChooseRecords<formats::Contact>(Session&, const ChosenRecords&, const Report&);
template Outcome ChooseRecords<formats::Appointment>(Session&, const ChosenRecords&, const Report&);
template Outcome ChooseRecords<formats::Task>(Session&, const ChosenRecords&, const Report&);
template Outcome ChooseRecords<formats::TextMessage>(Session&, const ChosenRecords&, const Report&);
template Outcome ChooseRecords<formats::Call>(Session&, const ChosenRecords&, const Report&);

std::uint32_t OidOfUid(Session& session, const std::string& uid) {
  for (const ce::INT itemType : {ce::olContactItem, ce::olAppointmentItem, ce::olTaskItem})
    if (const std::uint32_t oid = OidOfKind(session, itemType, uid); oid != 0) return oid;
  return 0;
}

}  // namespace tool
