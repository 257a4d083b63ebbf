// What became of the records that were sent, for people and for programs.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "desktop/transfer/push_session.h"

namespace desktop {

// "added with OID 12", "failed: 0x80040066 (text too long)".
std::string OutcomeText(const PushResult& result);

bool IsFailure(PushOutcome outcome);

// Whether the handheld now has the record, or would have it: what it loses is worth telling.
bool IsTakenIn(PushOutcome outcome);

// A line with an object a record: "source", "name", "outcome", "oid", "code", "meaning", and of
// a dry run "record".
std::string ResultsToJson(std::span<const PushResult> results);

struct PushSummary {
  std::size_t done = 0;
  std::size_t failed = 0;
  bool notFound = false;  // a deletion came too late: that is no failure of the push
  void Count(PushOutcome outcome);
  [[nodiscard]] int exitCode() const;
};

// "2 added, 1 failed".
std::string SummaryText(std::span<const PushResult> results);

}  // namespace desktop
