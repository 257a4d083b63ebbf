#include "desktop/sync/execution.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "common/text/text.h"
#include "desktop/records/record_kind.h"
#include "desktop/sync/handheld_items.h"
#include "desktop/sync/in_flight.h"
#include "desktop/sync/item_fields.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

std::string StateOfRecord(const std::string& record) {
  return StateHash(ParseRecords("<root>" + record + "</root>")[0].element);
}

constexpr std::string_view kMeanwhile =
    "it has been changed on the handheld meanwhile; the next run sees to it";

}  // namespace

Execution::Execution(const Means& means, const Plan& plan, const Sides& sides,
                     const DeskParts& parts)
    : means_(means),
      plan_(plan),
      sides_(sides),
      parts_(parts),
      progress_(plan.actions.size()),
      results_(plan.actions.size()) {}

void Execution::Run() {
  NoteIntents();
  started_ = true;
  AddToDesk();
  SendToHandheld();
  EditDesk();
  ReadBack();
  RememberAll();
  ForgetMapping();
}

bool Execution::begun() const {
  return std::ranges::any_of(progress_,
                             [](const Progress& each) { return each.desk || each.oid != 0; });
}

void Execution::Step(std::string_view what) const {
  if (means_.hook) means_.hook(what);
}

void Execution::Fail(std::size_t action, std::string problem) {
  progress_[action].failed = true;
  results_[action].problem = std::move(problem);
}

// What the mapping knows the item by.
std::string Execution::KeyOf(std::size_t action) const {
  if (progress_[action].desk) return progress_[action].desk->key;
  const DeskItem* const now = plan_.actions[action].deskNow;
  return now != nullptr ? now->key : plan_.actions[action].link.key;
}

void Execution::NoteIntents() {
  std::vector<Intent> intents;
  for (const Action& action : plan_.actions) {
    if (action.desk != Effect::kAdd) continue;
    Intent intent{action.kind, UidOf(*action.deskTo), 0, {}};
    if (action.handheldNow != nullptr) {
      intent.oid = action.handheldNow->oid;
      intent.recordHash = action.handheldNow->hash;
    }
    intents.push_back(std::move(intent));
  }
  if (intents.empty()) return;
  Step("note what becomes a file");
  Memory::Changes changes(means_.memory);
  changes.ExpectOnDesk(intents);
  changes.Commit();
}

void Execution::AddToDesk() {
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    const Action& action = plan_.actions[i];
    if (action.desk != Effect::kAdd) continue;
    Step("make a file");
    try {
      DeskOutcome outcome = means_.folder.Add(*action.deskTo);
      results_[i].losses = std::move(outcome.losses);
      if (outcome.refused) {
        Fail(i, "no file can say it");
      } else {
        progress_[i].desk = std::move(outcome.item);
      }
    } catch (const Interrupted&) {
      throw;
    } catch (const Error& problem) {
      Fail(i, problem.what());
    }
    // An item keeps both of its values until they stand in two.
    if (action.happening == Happening::kCopy && !IsOpen(i)) Fail(i + 1, results_[i].problem);
  }
}

// Deletions that the handheld has not made needless by a change.
std::vector<std::size_t> Execution::StillToDelete() {
  std::map<ItemKind, std::vector<Oid>> oids;
  for (const Action& action : plan_.actions) {
    if (action.handheld == Effect::kDelete) oids[action.kind].push_back(action.handheldNow->oid);
  }
  std::map<Oid, std::string> now;
  for (const auto& [kind, wanted] : oids) {
    for (HandheldItem& item : ReadHandheld(means_.connection, kind, means_.zone, wanted)) {
      now[item.oid] = std::move(item.hash);
    }
  }
  std::vector<std::size_t> still;
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    const Action& action = plan_.actions[i];
    if (action.handheld != Effect::kDelete) continue;
    const std::string& hash = now[action.handheldNow->oid];
    if (hash.empty() || hash == action.handheldNow->hash) {
      still.push_back(i);
    } else {
      Fail(i, std::string(kMeanwhile));
    }
  }
  return still;
}

void Execution::SendToHandheld() {
  std::vector<PushRecord> records;
  std::vector<std::size_t> actionOf;
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    const Action& action = plan_.actions[i];
    const bool sends = action.handheld == Effect::kAdd || action.handheld == Effect::kChange;
    if (!sends || !IsOpen(i)) continue;
    const bool adds = action.handheld == Effect::kAdd;
    const std::string key = (adds ? kAddition : kAlteration) + KeyOf(i);
    const std::string kind(NameOf(action.kind));
    records.push_back(RecordFor(*action.handheldTo, key, means_.zone));
    actionOf.push_back(i);
    const MappedItem* const known = means_.mapping.FindUid(kind, key);
    if (known != nullptr) means_.mapping.Remove(known->oid);
    if (!adds) {
      // Its hash is that of no record, so that it is sent.
      means_.mapping.Put(
          {action.handheldNow->oid, kind, key, {}, {}, StateOfRecord(action.handheldNow->record)});
    }
  }
  for (const std::size_t i : StillToDelete()) {
    const Action& action = plan_.actions[i];
    records.push_back(DeletionOf(RecordKindOf(action.kind), action.handheldNow->oid));
    actionOf.push_back(i);
  }
  if (records.empty()) return;
  Step("send to the handheld");
  std::size_t next = 0;
  PushSession session(
      means_.connection, {}, means_.mapping,
      [&](const PushResult& result) { TakeSent(actionOf[next++], result); }, &means_.recovery);
  session.Run(records);
}

void Execution::TakeSent(std::size_t action, const PushResult& result) {
  switch (result.outcome) {
    case PushOutcome::kAdded:
    case PushOutcome::kAddedAnew:
    case PushOutcome::kChanged:
    case PushOutcome::kUnchanged:
      progress_[action].oid = result.oid;
      return;
    case PushOutcome::kDeleted:
    case PushOutcome::kNotFound:
    case PushOutcome::kNothingToDelete:
      return;
    case PushOutcome::kConflict:
      return Fail(action, std::string(kMeanwhile));
    case PushOutcome::kUnanswered:
    case PushOutcome::kWrongAnswer:
      return Fail(action, "sent, but not answered; the next run sees what has become of it");
    case PushOutcome::kFailed:
      return Fail(action,
                  fmt::format("the handheld does not take it: {}",
                              result.code == 0 ? "no reason given" : StatusText(result.code)));
    default:
      return Fail(action, "not sent");
  }
}

void Execution::EditDesk() {
  std::vector<DeskEdit> edits;
  std::vector<std::size_t> actionOf;
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    const Action& action = plan_.actions[i];
    const bool edits_it = action.desk == Effect::kChange || action.desk == Effect::kDelete;
    if (!edits_it || !IsOpen(i)) continue;
    DeskEdit edit{*action.deskNow, {}};
    if (action.deskTo != nullptr) edit.to = *action.deskTo;
    edits.push_back(std::move(edit));
    actionOf.push_back(i);
  }
  if (edits.empty()) return;
  Step("change files");
  std::vector<DeskOutcome> outcomes = means_.folder.Edit(edits, means_.trash);
  for (std::size_t n = 0; n < outcomes.size(); ++n) {
    const std::size_t i = actionOf[n];
    if (outcomes[n].refused) {
      Fail(i, outcomes[n].losses.empty() ? "its file has been changed meanwhile"
                                         : outcomes[n].losses.front());
      continue;
    }
    progress_[i].desk = std::move(outcomes[n].item);
    for (std::string& loss : outcomes[n].losses) results_[i].losses.push_back(std::move(loss));
  }
}

void Execution::ReadBack() {
  std::map<ItemKind, std::vector<Oid>> oids;
  std::unordered_map<Oid, std::size_t> actionOf;
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    if (progress_[i].oid == 0 || !IsOpen(i)) continue;
    oids[plan_.actions[i].kind].push_back(progress_[i].oid);
    actionOf.emplace(progress_[i].oid, i);
  }
  if (oids.empty()) return;
  Step("read back");
  for (const auto& [kind, wanted] : oids) {
    for (HandheldItem& item : ReadHandheld(means_.connection, kind, means_.zone, wanted)) {
      const auto action = actionOf.find(item.oid);
      if (action != actionOf.end()) TakeBack(action->second, std::move(item));
    }
  }
  for (const auto& [oid, action] : actionOf) {
    if (!progress_[action].handheld && IsOpen(action)) {
      Fail(action, "the handheld does not tell what it has made of it");
    }
  }
}

void Execution::TakeBack(std::size_t action, HandheldItem item) {
  if (item.unreadable) {
    return Fail(action, "the handheld does not tell what it has made of it");
  }
  for (const std::string& field : DifferentFields(*plan_.actions[action].handheldTo, *item.item)) {
    results_[action].losses.push_back(field + ": the handheld does not keep it as it was sent");
  }
  progress_[action].handheld = std::move(item);
}

// An edit of one item of a file moves those behind it.
void Execution::RememberPlaces(Memory::Changes& changes, const DeskFiles& desk) const {
  std::unordered_map<std::string_view, const DeskItem*> places;
  places.reserve(means_.memory.links().size());
  for (const auto& [name, file] : desk) {
    for (const DeskItem& item : file.items) places.emplace(item.key, &item);
  }
  for (const Link& link : means_.memory.links()) {
    const auto place = places.find(link.key);
    if (place == places.end()) continue;
    const DeskItem& now = *place->second;
    if (now.file.native() == link.file && now.line == link.line) continue;
    Link moved = link;
    moved.file = now.file.string();
    moved.line = now.line;
    changes.Touch(moved);
  }
}

void Execution::RememberAction(Memory::Changes& changes, std::size_t i) {
  const Action& action = plan_.actions[i];
  const bool forget =
      action.happening == Happening::kForget || action.happening == Happening::kDelete;
  if (forget) {
    if (action.link.number != 0) changes.Remove(action.link);
    return;
  }
  const DeskItem& desk = progress_[i].desk ? *progress_[i].desk : *action.deskNow;
  const HandheldItem& handheld =
      progress_[i].handheld ? *progress_[i].handheld : *action.handheldNow;
  Link link = action.link;
  link.kind = action.kind;
  link.key = desk.key;
  link.file = desk.file.string();
  link.line = desk.line;
  link.oid = handheld.oid;
  link.recordHash = handheld.hash;
  changes.Put(link, desk.item, handheld.record);
}

void Execution::RememberAll() {
  const bool touched = std::ranges::any_of(
      plan_.actions, [](const Action& action) { return action.desk != Effect::kNone; });
  DeskFiles readBack;
  if (touched) readBack = means_.folder.Read(parts_, sides_.desk).files;
  const DeskFiles& desk = touched ? readBack : sides_.desk;
  Step("remember");
  Memory::Changes changes(means_.memory);
  RememberPlaces(changes, desk);
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    if (plan_.actions[i].happening == Happening::kLeave || !IsOpen(i)) continue;
    RememberAction(changes, i);
    results_[i].done = true;
  }
  changes.ForgetIntents();
  for (const auto& [name, value] : notes_) changes.SetNote(name, value);
  changes.SetStamps(StampsOf(desk));
  changes.Commit();
}

// Of the files of which every item is remembered as it stands there.
FileStamps Execution::StampsOf(const DeskFiles& desk) const {
  const FileStamps& before = means_.memory.stamps();
  const auto isAsBefore = [&](const std::string& name, const DeskFile& file) {
    const auto known = before.find(name);
    return known != before.end() && known->second == file.stamp;
  };
  std::unordered_map<std::string_view, const Item*> expected;  // by key; null for what is open
  for (const auto& [name, file] : sides_.desk) {
    if (isAsBefore(name, file)) continue;
    for (const DeskItem& item : file.items) expected[item.key] = &item.item;
  }
  for (std::size_t i = 0; i < plan_.actions.size(); ++i) {
    const Action& action = plan_.actions[i];
    const bool open = !IsOpen(i) || action.happening == Happening::kLeave;
    if (progress_[i].desk) expected[progress_[i].desk->key] = &progress_[i].desk->item;
    if (open && action.deskNow != nullptr) expected[action.deskNow->key] = nullptr;
  }
  FileStamps stamps;
  for (const auto& [name, file] : desk) {
    if (isAsBefore(name, file)) {
      stamps.emplace_hint(stamps.end(), name, file.stamp);
      continue;
    }
    bool asRemembered = !file.stamp.empty();
    for (const DeskItem& item : file.items) {
      const auto found = expected.find(item.key);
      const bool wanted = sides_.handheld.contains(KindOf(item.item));
      asRemembered = asRemembered && wanted && found != expected.end() &&
                     found->second != nullptr && *found->second == item.item;
    }
    if (asRemembered) stamps.emplace_hint(stamps.end(), name, file.stamp);
  }
  return stamps;
}

// What is remembered needs no mapping any more.
void Execution::ForgetMapping() {
  for (const Link& link : means_.memory.links()) means_.mapping.Remove(link.oid);
  Step("close the mapping");
  means_.mapping.Save();
}

}  // namespace desktop
