// Random edits on both sides, random ends of runs, and a model of a few lines that tells what both
// sides are to have then.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <set>

#include "desktop/wire/error.h"
#include "tests/desktop/sync/sync_model.h"

namespace desktop::testing {
namespace {

enum class What {
  kAddOnDesk,
  kAddOnHandheld,
  kAddOnBoth,
  kEditOnDesk,
  kEditOnHandheld,
  kEditBoth,
  kDeleteOnDesk,
  kDeleteOnHandheld,
  kRenameFile,
  kSync,
};

struct Doing {
  What what = What::kSync;
  std::size_t kind = 0;
  std::size_t target = 0;
  bool second = false;
  ConflictPolicy policy = ConflictPolicy::kKeepBoth;
};

void showValue(const Doing& doing, std::ostream& stream) {
  stream << "{" << static_cast<int>(doing.what) << " of " << doing.kind << "/" << doing.target
         << (doing.second ? " second" : "") << " policy " << static_cast<int>(doing.policy) << "}";
}

rc::Gen<std::vector<Doing>> Doings(bool anyPolicy) {
  using rc::gen::inRange;
  const auto what = rc::gen::weightedElement<What>({{3, What::kAddOnDesk},
                                                    {3, What::kAddOnHandheld},
                                                    {2, What::kAddOnBoth},
                                                    {4, What::kEditOnDesk},
                                                    {4, What::kEditOnHandheld},
                                                    {2, What::kEditBoth},
                                                    {2, What::kDeleteOnDesk},
                                                    {2, What::kDeleteOnHandheld},
                                                    {1, What::kRenameFile},
                                                    {3, What::kSync}});
  const auto policy = anyPolicy ? rc::gen::element(ConflictPolicy::kKeepBoth, ConflictPolicy::kDesk,
                                                   ConflictPolicy::kHandheld, ConflictPolicy::kAsk)
                                : rc::gen::just(ConflictPolicy::kKeepBoth);
  return rc::gen::container<std::vector<Doing>>(rc::gen::build<Doing>(
      rc::gen::set(&Doing::what, what),
      rc::gen::set(&Doing::kind, inRange<std::size_t>(0, std::size(kItemKinds))),
      rc::gen::set(&Doing::target, inRange<std::size_t>(0, 6)),
      rc::gen::set(&Doing::second, rc::gen::arbitrary<bool>()),
      rc::gen::set(&Doing::policy, policy)));
}

// The same done to a world and to a model of it.
class Play {
 public:
  Play() {
    world.options_.allowDeletions = true;
    // An hour ahead of the files, so that they are known by their stamps; or not yet.
    if (*rc::gen::arbitrary<bool>()) {
      world.options_.clock = [] {
        return std::chrono::system_clock::now() + std::chrono::hours(1);
      };
    }
    for (const ItemKind kind : kItemKinds) models.emplace_back(kind);
  }

  void Do(const Doing& doing) {
    const ItemKind kind = kItemKinds[doing.kind];
    switch (doing.what) {
      case What::kAddOnDesk:
        return Add(doing.kind, true, false);
      case What::kAddOnHandheld:
        return Add(doing.kind, false, true);
      case What::kAddOnBoth:
        return Add(doing.kind, true, true);
      case What::kEditOnDesk:
      case What::kEditOnHandheld:
      case What::kEditBoth:
        if (ModelItem* item = Target(doing)) Edit(doing, *item);
        return;
      case What::kDeleteOnDesk:
        if (ModelItem* item = Target(doing); item != nullptr && item->desk) {
          world.RemoveFromDesk(kind, *item->desk);
          Forget(*item->desk);
          item->desk.reset();
        }
        return;
      case What::kDeleteOnHandheld:
        if (ModelItem* item = Target(doing); item != nullptr && item->handheld) {
          world.RemoveFromHandheld(kind, *item->handheld);
          Forget(*item->handheld);
          item->handheld.reset();
        }
        return;
      case What::kRenameFile:
        if (ModelItem* item = Target(doing); item != nullptr && item->desk) {
          world.RenameFileOnDesk(kind, *item->desk);
        }
        return;
      case What::kSync:
        return;
    }
  }

  SyncSeen Sync(ConflictPolicy policy, std::size_t mostAnswers = SIZE_MAX) {
    world.options_.conflict = policy;
    return world.Sync(mostAnswers);
  }

  void SyncModels(ConflictPolicy policy) {
    for (SyncModel& model : models) model.Sync(policy);
  }

  void Compare() const {
    for (std::size_t i = 0; i < models.size(); ++i) {
      RC_ASSERT(world.Desk(kItemKinds[i]) == models[i].Side(&ModelItem::desk));
      RC_ASSERT(world.Handheld(kItemKinds[i]) == models[i].Side(&ModelItem::handheld));
    }
  }

  // Makes the models what the world is.
  void Forget() {
    for (std::size_t i = 0; i < models.size(); ++i) {
      models[i].items.clear();
      for (const TestItem& item : world.Desk(kItemKinds[i])) {
        models[i].items.push_back({item, {}, item});
      }
      for (const TestItem& item : world.Handheld(kItemKinds[i])) {
        models[i].items.push_back({{}, item, item});
      }
    }
  }

  SyncWorld world;
  std::vector<SyncModel> models;
  std::set<std::string> typed;  // that have been neither overwritten nor deleted since

 private:
  std::string NewText() { return "text " + std::to_string(++texts_); }

  void Forget(const TestItem& item) {
    typed.erase(item.first);
    typed.erase(item.second);
  }

  void Add(std::size_t which, bool onDesk, bool onHandheld) {
    const ItemKind kind = kItemKinds[which];
    ModelItem item;
    const std::string name = "Name" + std::to_string(++names_);
    if (onDesk) {
      item.desk = TestItem{name, NewText(), {}};
      typed.insert(item.desk->first);
      world.AddOnDesk(kind, *item.desk);
    }
    if (onHandheld) {
      item.handheld = TestItem{name, NewText(), {}};
      if (onDesk && names_ % 2 == 0) item.handheld->first = item.desk->first;
      if (HasSecond(kind)) item.handheld->second = NewText();
      typed.insert(item.handheld->first);
      world.AddOnHandheld(kind, *item.handheld);
    }
    models[which].items.push_back(std::move(item));
  }

  ModelItem* Target(const Doing& doing) {
    std::vector<ModelItem>& items = models[doing.kind].items;
    return items.empty() ? nullptr : &items[doing.target % items.size()];
  }

  void Edit(const Doing& doing, ModelItem& item) {
    const ItemKind kind = kItemKinds[doing.kind];
    const auto field = doing.second && HasSecond(kind) ? &TestItem::second : &TestItem::first;
    const std::string text = NewText();
    const bool both = doing.what == What::kEditBoth;
    if ((both || doing.what == What::kEditOnDesk) && item.desk) {
      TestItem to = *item.desk;
      typed.erase(to.*field);
      to.*field = text;
      typed.insert(text);
      world.ChangeOnDesk(kind, *item.desk, to);
      item.desk = to;
    }
    if ((both || doing.what == What::kEditOnHandheld) && item.handheld) {
      TestItem to = *item.handheld;
      typed.erase(to.*field);
      to.*field = text;
      typed.insert(text);
      world.ChangeOnHandheld(kind, *item.handheld, to);
      item.handheld = to;
    }
  }

  int names_ = 0;
  int texts_ = 0;
};

void RequireQuiet(Play& play, ConflictPolicy policy) {
  const auto bytes = play.world.Bytes();
  const SyncSeen again = play.Sync(policy);
  RC_ASSERT(again.problem == "");
  RC_ASSERT(play.world.Bytes() == bytes);
  RC_ASSERT(again.results.counts.desk + again.results.counts.handheld == 0u);
}

RC_GTEST_PROP(SyncProperty, BothSidesComeToWhatTheModelSays, ()) {
  Play play;
  std::vector<Doing> doings = *Doings(true);
  doings.push_back({});
  for (const Doing& doing : doings) {
    play.Do(doing);
    if (doing.what != What::kSync) continue;
    const SyncSeen seen = play.Sync(doing.policy);
    RC_ASSERT(seen.problem == "");
    play.SyncModels(doing.policy);
    play.Compare();
    RequireQuiet(play, doing.policy);
  }
}

RC_GTEST_PROP(SyncProperty, ARunThatWasCutOffAnywhereIsFinishedByTheNext, ()) {
  Play play;
  std::vector<Doing> doings = *Doings(true);
  doings.push_back({});
  for (const Doing& doing : doings) {
    play.Do(doing);
    if (doing.what != What::kSync) continue;
    int left = *rc::gen::inRange(0, 12);
    play.world.options_.hook = [&](std::string_view) {
      if (left-- == 0) throw Error("cut off");
    };
    const auto answers =
        *rc::gen::oneOf(rc::gen::just(SIZE_MAX), rc::gen::inRange<std::size_t>(0, 6));
    play.Sync(doing.policy, answers);
    play.world.options_.hook = {};
    const SyncSeen seen = play.Sync(doing.policy);
    RC_ASSERT(seen.problem == "");
    play.SyncModels(doing.policy);
    play.Compare();
    RequireQuiet(play, doing.policy);
  }
}

std::set<std::string> TextsOf(const std::vector<TestItem>& items) {
  std::set<std::string> texts;
  for (const TestItem& item : items) {
    for (const std::string& text : {item.first, item.second}) {
      texts.insert(text.substr(0, text.find('\n')));
    }
  }
  return texts;
}

RC_GTEST_PROP(SyncProperty, WhatWasTypedIsThereWhateverWasCutOffBefore, ()) {
  Play play;
  for (const Doing& doing : *Doings(false)) play.Do(doing);
  int left = *rc::gen::inRange(0, 12);
  play.world.options_.hook = [&](std::string_view) {
    if (left-- == 0) throw Error("cut off");
  };
  play.Sync(ConflictPolicy::kKeepBoth);
  play.world.options_.hook = {};
  play.Forget();
  play.typed.clear();
  for (const Doing& doing : *Doings(false)) {
    if (doing.what != What::kEditBoth) play.Do(doing);
  }
  RC_ASSERT(play.Sync(ConflictPolicy::kKeepBoth).problem == "");
  RequireQuiet(play, ConflictPolicy::kKeepBoth);
  std::set<std::string> there;
  for (const ItemKind kind : kItemKinds) {
    RC_ASSERT(play.world.Desk(kind) == play.world.Handheld(kind));
    there.merge(TextsOf(play.world.Desk(kind)));
  }
  for (const std::string& text : play.typed) RC_ASSERT(there.contains(text));
}

}  // namespace
}  // namespace desktop::testing
