// Puts storage cards into a handheld and takes them out: entries of its files' root that are links
// to directories of the host.
#pragma once

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

struct Card {
  std::string name;
  std::filesystem::path target;  // empty for a volume that is mounted there
  bool present = false;          // whether the target is a directory; else the card is taken out
};
// In the order in which the handheld counts them. Throws files::Error.
std::vector<Card> ListCards(ce::host::Handheld& handheld);
// An object of "name", "directory" and "present".
nlohmann::ordered_json AsJson(const Card& card);

// Throws UsageError for a name that no file of a handheld can have or that is taken, letter case
// aside, for a target that is no directory, and for one that holds the handheld's own files.
Outcome AddCard(Session& session, const std::string& name, const std::filesystem::path& target,
                const Report& report);
// Only the link goes; what is on the card stays where it is. kFailed when there is no such card.
Outcome RemoveCard(Session& session, const std::string& name, const Report& report);
Outcome ShowCards(Session& session, const Report& report);

}  // namespace tool
