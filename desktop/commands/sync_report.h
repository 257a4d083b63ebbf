// A synchronisation's plan and results for people and for programs.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/sync/sync_run.h"

namespace desktop {

// A line each; what is said of several items is said once, with how many they are, unless each is
// to be told of.
std::vector<std::string> NoticeLines(const std::vector<DeskNotice>& notices, bool each);
std::vector<std::string> LossLines(const Plan& plan, const SyncResults& results, bool each);

// "messages/2026-11.jsonl: add 12".
std::string ToText(const ArchiveAddition& addition);

// An object on one line, which names the pair where there is one.
std::string SyncToJson(const std::string& pair, const SyncPlan& plan, const SyncResults& results,
                       bool dryRun);
std::string FailureToJson(const std::string& pair, const std::string& problem);

}  // namespace desktop
