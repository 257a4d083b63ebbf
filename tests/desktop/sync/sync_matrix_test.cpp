// Every cell of what may have become of an item on the desk and on the handheld, for each kind and
// each way of dealing with conflicts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/desktop/sync/sync_fixture.h"

namespace desktop::testing {
namespace {

// What has become of an item on the desk and on the handheld since both had it with the value 0,
// and which values the desk and the handheld have after a synchronisation. "new" stands for an item
// of the same name that takes the place of the one before, if there was one; D and H are values
// that the desk and the handheld gave it.
constexpr char kCells[] = R"(
  none     new      | H | H
  new      none     | D | D
  same     same     | 0 | 0
  same     changed  | H | H
  same     deleted  | - | -
  same     new      | 0 | 0
  changed  same     | D | D
  changed  changed  | conflict
  changed  deleted  | D | D
  changed  new      | D | D
  deleted  same     | - | -
  deleted  changed  | H | H
  deleted  deleted  | - | -
  deleted  new      | 0 | 0
  new      same     | 0 | 0
  new      changed  | H | H
  new      deleted  | 0 | 0
  new      new      | conflict
)";

struct Cell {
  std::string desk, handheld;            // what became of it there
  std::string deskAfter, handheldAfter;  // nothing for a conflict
};

std::vector<Cell> Cells() {
  std::vector<Cell> cells;
  std::istringstream lines(kCells);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    Cell cell;
    std::string bar;
    words >> cell.desk >> cell.handheld >> bar >> cell.deskAfter >> bar >> cell.handheldAfter;
    if (cell.deskAfter == "conflict") cell.deskAfter.clear();
    if (!cell.desk.empty()) cells.push_back(cell);
  }
  return cells;
}

struct PolicyCase {
  const char* name;
  ConflictPolicy policy;
  std::vector<std::string> desk, handheld;  // after a conflict
};
const std::vector<PolicyCase>& Policies() {
  static const std::vector<PolicyCase> policies = {
      {"KeepBoth", ConflictPolicy::kKeepBoth, {"D", "H"}, {"D", "H"}},
      {"Desk", ConflictPolicy::kDesk, {"D"}, {"D"}},
      {"Handheld", ConflictPolicy::kHandheld, {"H"}, {"H"}},
      {"Ask", ConflictPolicy::kAsk, {"D"}, {"H"}}};
  return policies;
}

constexpr const char* kKindNames[] = {"Contact", "Appointment", "Task"};

class SyncMatrix : public ::testing::TestWithParam<std::tuple<ItemKind, std::size_t, std::size_t>> {
 protected:
  SyncMatrix()
      : kind_(std::get<0>(GetParam())),
        policy_(Policies()[std::get<1>(GetParam())]),
        cell_(Cells()[std::get<2>(GetParam())]) {
    world_.options_.conflict = policy_.policy;
  }

  bool IsKnown() const {
    return cell_.desk != "none" && cell_.handheld != "none" &&
           (cell_.desk != "new" || cell_.handheld != "new");
  }

  // On the side that it is new on, an item that was known is another one with the same content.
  void Become(bool onDesk, const std::string& what) {
    const TestItem known{"Ada", "0", {}};
    const TestItem changed{"Ada", onDesk ? "D" : "H", {}};
    const TestItem added = IsKnown() ? known : changed;
    const bool removed = what == "deleted" || (what == "new" && IsKnown());
    if (onDesk) {
      if (what == "changed") world_.ChangeOnDesk(kind_, known, changed);
      if (removed) world_.RemoveFromDesk(kind_, known);
      if (what == "new") world_.AddOnDesk(kind_, added);
    } else {
      if (what == "changed") world_.ChangeOnHandheld(kind_, known, changed);
      if (removed) world_.RemoveFromHandheld(kind_, known);
      if (what == "new") world_.AddOnHandheld(kind_, added);
    }
  }

  std::vector<std::string> Values(const std::vector<TestItem>& items) const {
    std::vector<std::string> values;
    for (const TestItem& item : items) {
      // The second of two is marked in its note, which is all that a task has.
      if (item.name == "Ada") values.push_back(item.first.substr(0, 1));
    }
    return values;
  }

  const ItemKind kind_;
  const PolicyCase& policy_;
  const Cell cell_;
  SyncWorld world_;
};

TEST_P(SyncMatrix, Agrees) {
  world_.AddOnDesk(kind_, {"Ben", "stays", {}});
  if (IsKnown()) world_.AddOnDesk(kind_, {"Ada", "0", {}});
  const SyncSeen first = world_.Sync();
  ASSERT_EQ(first.problem, "");
  Become(true, cell_.desk);
  Become(false, cell_.handheld);

  const SyncSeen seen = world_.Sync();
  EXPECT_EQ(seen.problem, "");
  const bool conflict = cell_.deskAfter.empty();
  const auto expected = [&](const std::string& after, const std::vector<std::string>& both) {
    if (conflict) return both;
    return after == "-" ? std::vector<std::string>() : std::vector{after};
  };
  EXPECT_EQ(Values(world_.Desk(kind_)), expected(cell_.deskAfter, policy_.desk));
  EXPECT_EQ(Values(world_.Handheld(kind_)), expected(cell_.handheldAfter, policy_.handheld));
  EXPECT_EQ(seen.results.counts.conflicts, conflict ? 1u : 0u);
  const bool left = conflict && policy_.policy == ConflictPolicy::kAsk;
  EXPECT_EQ(seen.results.whole, !left);

  const auto bytes = world_.Bytes();
  const SyncSeen again = world_.Sync();
  EXPECT_EQ(again.problem, "");
  EXPECT_EQ(world_.Bytes(), bytes) << "a second one changes no byte";
  EXPECT_EQ(again.results.counts.desk + again.results.counts.handheld, 0u);
}

std::string CellName(const ::testing::TestParamInfo<SyncMatrix::ParamType>& info) {
  const auto& [kind, policy, cell] = info.param;
  const Cell each = Cells()[cell];
  return std::string(kKindNames[static_cast<std::size_t>(kind)]) + "_" + each.desk + "_" +
         each.handheld + "_" + Policies()[policy].name;
}

INSTANTIATE_TEST_SUITE_P(Cell, SyncMatrix,
                         ::testing::Combine(::testing::ValuesIn(kItemKinds),
                                            ::testing::Range(std::size_t{0}, Policies().size()),
                                            ::testing::Range(std::size_t{0}, Cells().size())),
                         CellName);

}  // namespace
}  // namespace desktop::testing
