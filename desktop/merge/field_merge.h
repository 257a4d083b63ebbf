// One field of an item, three ways. The two sides are told apart by who wins, so that which of them
// the desk is makes no difference.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace desktop {

struct MergeConflict {
  std::string field;
  std::string winner;  // as people read it; empty for none
  std::string loser;
};
using MergeConflicts = std::vector<MergeConflict>;

// The four versions of an item, or of a part of it, and what becomes of the two current ones.
template <typename T>
struct Versions {
  const T& winnerBase;
  const T& winner;
  const T& loserBase;
  const T& loser;
  T& winnerOut;
  T& loserOut;
};

enum class Flow {
  kNone,      // each keeps its own
  kToLoser,   // the winner's value goes to both
  kToWinner,  // the loser's
  kConflict,  // the winner's, and that is to be told
};

// Which way a value goes. `same` decides whether a side has changed it, `agree` whether two that
// did mean the same.
template <typename T, typename Same, typename Agree>
Flow FlowOf(const T& winnerBase, const T& winner, const T& loserBase, const T& loser,
            const Same& same, const Agree& agree) {
  const bool byWinner = !same(winnerBase, winner);
  const bool byLoser = !same(loserBase, loser);
  if (byWinner && byLoser) return agree(winner, loser) ? Flow::kNone : Flow::kConflict;
  if (byWinner) return Flow::kToLoser;
  return byLoser ? Flow::kToWinner : Flow::kNone;
}

// A field is read by get(item), which gives a value, and written by set(item, value).
template <typename T, typename Get, typename Same, typename Agree>
Flow FlowOfField(const Versions<T>& versions, const Get& get, const Same& same,
                 const Agree& agree) {
  return FlowOf(get(versions.winnerBase), get(versions.winner), get(versions.loserBase),
                get(versions.loser), same, agree);
}

template <typename T, typename Get, typename Set>
void LetFlow(const Versions<T>& versions, Flow flow, const Get& get, const Set& set) {
  if (flow == Flow::kToLoser || flow == Flow::kConflict) {
    set(versions.loserOut, get(versions.winner));
  } else if (flow == Flow::kToWinner) {
    set(versions.winnerOut, get(versions.loser));
  }
}

template <typename T, typename Get, typename Words>
void TellConflict(const Versions<T>& versions, std::string_view name, const Get& get,
                  const Words& words, MergeConflicts& conflicts) {
  conflicts.push_back({std::string(name), words(get(versions.winner)), words(get(versions.loser))});
}

template <typename T, typename Get, typename Set, typename Same, typename Agree, typename Words>
void MergeField(const Versions<T>& versions, std::string_view name, const Get& get, const Set& set,
                const Same& same, const Agree& agree, const Words& words,
                MergeConflicts& conflicts) {
  const Flow flow = FlowOfField(versions, get, same, agree);
  LetFlow(versions, flow, get, set);
  if (flow == Flow::kConflict) TellConflict(versions, name, get, words, conflicts);
}

}  // namespace desktop
