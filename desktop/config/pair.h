// Pairs of a folder and a handheld, under names that a person gave them.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/records/record_kind.h"
#include "desktop/wire/target.h"

namespace desktop {

struct Pair {
  std::string name;  // of letters, digits, "-" and "_"
  Target address;
  std::filesystem::path folder;     // absolute
  std::string zone;                 // the handheld's, one that calendar::Zone knows
  std::string country = {};         // of PhoneNumbers; empty for the locale's
  std::set<RecordKind> kinds = {};  // empty for all
  std::string policy = {};          // one of kPairPolicies; empty for the usual one
  friend bool operator==(const Pair&, const Pair&) = default;
};

inline constexpr std::string_view kPairPolicies[] = {"keep-both", "desk", "handheld", "ask"};
inline constexpr RecordKind kPairKinds[] = {RecordKind::kContacts, RecordKind::kAppointments,
                                            RecordKind::kTasks, RecordKind::kMessages,
                                            RecordKind::kCalls};

bool IsPairName(std::string_view name);

// $XDG_CONFIG_HOME/corvane/config.toml, by default below ~/.config; nothing when neither that nor
// HOME is known.
std::optional<std::filesystem::path> ConfigPath();

// As the file has them, by their names; none without a file. Throw Error, with the line, when it
// cannot be understood: a key of a pair that is not known, too. Other tables are not looked at.
std::vector<Pair> AllPairs();
std::optional<Pair> FindPair(std::string_view name);
// Of several the first by name.
std::optional<Pair> FindPairAt(const Target& address);

// Adds the pair or writes its table anew; the rest of the file stays as it is, with its comments.
// Throws Error when that cannot be done, and has then changed nothing.
void WritePair(const Pair& pair);

}  // namespace desktop
