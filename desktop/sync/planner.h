// Compares what both sides have with what they had, and says what is to be done. It changes nothing
// and asks nobody but the person, of a conflict.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "common/phone/phone_numbers.h"
#include "desktop/sync/in_flight.h"
#include "desktop/sync/memory.h"
#include "desktop/sync/plan.h"
#include "desktop/sync/sides.h"

namespace desktop {

enum class ConflictPolicy { kKeepBoth, kDesk, kHandheld, kAsk };

enum class ConflictAnswer { kKeepBoth, kDesk, kHandheld, kLeave };
struct ConflictQuestion {
  ItemKind kind;
  const std::string& name;
  const std::vector<FieldConflict>& conflicts;
};
using AskPerson = std::function<ConflictAnswer(const ConflictQuestion& question)>;

struct PlanPolicy {
  ConflictPolicy conflict = ConflictPolicy::kKeepBoth;
  AskPerson ask;  // nothing where nobody can be asked: then the item is left alone
  bool allowDeletions = false;
  calendar::Zone zone = calendar::Zone::OfHost();
  phone::PhoneNumbers numbers{""};
};

// The last line in the note of the second of two that were one before a conflict.
inline constexpr std::string_view kCopyMark =
    "(As it was on the handheld, when it had been changed there and on the desk.)";

// Of the kinds that the handheld's side has. The sides must outlive the plan.
Plan MakePlan(const Sides& sides, const Memory& memory, const std::vector<InFlight>& inFlight,
              const PlanPolicy& policy);

}  // namespace desktop
