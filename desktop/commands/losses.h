// What is lost on the way, for people.
#pragma once

#include <string>

#include "common/terminal/progress.h"
#include "common/terminal/tally.h"
#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"

namespace desktop {

// Said on the error output: each by itself at once with Verbosity::kAll, else at the end how many
// records have lost the same; nothing with kErrors.
class Losses {
 public:
  // Both must outlive it. The progress is hidden while it speaks.
  Losses(terminal::Progress& progress, const Console& console)
      : progress_(progress), console_(console) {}

  // The record has lost what `loss` says, such as "Pager: the wire does not carry it". Its place is
  // a name, or where it stands.
  void Add(RecordKind kind, const std::string& place, const std::string& loss);
  void PrintSums();

 private:
  void Print(const std::string& line);

  terminal::Progress& progress_;
  const Console& console_;
  terminal::Tally sums_;
};

}  // namespace desktop
