#include "desktop/merge/three_way.h"

#include <utility>

#include "desktop/merge/item_merge.h"

namespace desktop {
namespace {

template <typename T>
const T& BaseOr(const Item* base, const T& nothing) {
  return base == nullptr ? nothing : std::get<T>(*base);
}

template <typename T, typename MergeKind>
Merged MergeAs(const MergeSides& sides, Winner winner, const MergeKind& mergeKind) {
  const T nothing{};
  const T& deskBase = BaseOr(sides.deskBase, nothing);
  const T& handheldBase = BaseOr(sides.handheldBase, nothing);
  const T& desk = std::get<T>(sides.desk);
  const T& handheld = std::get<T>(sides.handheld);
  T deskOut = desk;
  T handheldOut = handheld;
  MergeConflicts conflicts;
  const bool deskWins = winner == Winner::kDesk;
  if (deskWins) {
    mergeKind(Versions<T>{deskBase, desk, handheldBase, handheld, deskOut, handheldOut}, conflicts);
  } else {
    mergeKind(Versions<T>{handheldBase, handheld, deskBase, desk, handheldOut, deskOut}, conflicts);
  }
  Merged merged{std::move(deskOut), std::move(handheldOut), {}};
  for (MergeConflict& each : conflicts) {
    std::string& forDesk = deskWins ? each.winner : each.loser;
    std::string& forHandheld = deskWins ? each.loser : each.winner;
    merged.conflicts.push_back({std::move(each.field), std::move(forDesk), std::move(forHandheld)});
  }
  return merged;
}

}  // namespace

Merged Merge(const MergeSides& sides, Winner winner, const phone::PhoneNumbers& numbers) {
  switch (KindOf(sides.desk)) {
    case ItemKind::kContact:
      return MergeAs<formats::Contact>(
          sides, winner,
          [&](const Versions<formats::Contact>& versions, MergeConflicts& conflicts) {
            MergeContact(versions, numbers, conflicts);
          });
    case ItemKind::kAppointment:
      return MergeAs<formats::Appointment>(sides, winner, MergeAppointment);
    case ItemKind::kTask:
      break;
  }
  return MergeAs<formats::Task>(sides, winner, MergeTask);
}

}  // namespace desktop
