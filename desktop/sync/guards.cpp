#include "desktop/sync/guards.h"

#include <fmt/format.h>

#include "desktop/records/record_kind.h"

namespace desktop {
namespace {

constexpr std::size_t kMany = 10;
constexpr std::size_t kFewOthers = 3;

}  // namespace

void Guard::Look(ItemKind kind, const std::vector<Pairing>& pairs) {
  Side desk;
  Side handheld;
  for (const Pairing& pair : pairs) {
    if (pair.desk != nullptr) ++desk.there;
    if (pair.handheld != nullptr) ++handheld.there;
    if (pair.link == nullptr) continue;
    if (pair.desk == nullptr && pair.handheld == nullptr) continue;  // nothing is to be deleted
    ++desk.known;
    ++handheld.known;
    if (pair.desk == nullptr) ++desk.gone;
    if (pair.handheld == nullptr) ++handheld.gone;
    if (pair.handheld != nullptr) ++(IsAnother(pair) ? others_ : recognised_);
  }
  Judge(kind, "on the desk", desk);
  Judge(kind, "on the handheld", handheld);
}

void Guard::Judge(ItemKind kind, const char* where, const Side& side) {
  const bool empty = side.there == 0 && side.gone > 1;
  if (!empty && (side.known < kMany || 2 * side.gone <= side.known)) return;
  if (!losses_.empty()) losses_ += ", ";
  losses_ += fmt::format("{} of {} {} are gone {}", side.gone, side.known,
                         WordsOf(RecordKindOf(kind)).plural, where);
}

// An OID that has become another item altogether.
bool Guard::IsAnother(const Pairing& pair) const {
  if (pair.handheld->unreadable || pair.handheld->hash == pair.link->recordHash) return false;
  const Item now = ItemOf(*pair.handheld, zone_);
  return DisplayName(now) != DisplayName(ItemOfRecord(memory_.BasesOf(*pair.link).record, zone_));
}

std::string Guard::Objection() const {
  if (others_ >= kFewOthers && others_ > recognised_) {
    return fmt::format(
        "this is another handheld than the one that the folder is kept in step with: of {} items "
        "{} are others. Use a folder of its own; or move .corvane away, and what is the same on "
        "both sides is found again",
        recognised_ + others_, others_);
  }
  if (losses_.empty()) return {};
  return fmt::format("{}: nothing is done. --allow-deletions deletes them on the other side, too",
                     losses_);
}

}  // namespace desktop
