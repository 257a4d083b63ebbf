#include "desktop/commands/losses.h"

#include "common/text/text.h"

namespace desktop {

void Losses::Add(RecordKind kind, const std::string& place, const std::string& loss) {
  if (console_.verbosity == Verbosity::kAll) {
    Print(place + ": " + loss);
  } else {
    sums_.Add(loss, {WordsOf(kind).name, WordsOf(kind).plural});
  }
}

void Losses::PrintSums() {
  if (console_.verbosity == Verbosity::kErrors) return;
  for (const std::string& line : sums_.Lines()) Print(line);
}

void Losses::Print(const std::string& line) {
  progress_.Hide();
  console_.err << text::Shown(line) << '\n';
}

}  // namespace desktop
