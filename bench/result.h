// What a row of the comparison found, as a line of a table and as JSON.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench {

struct Run {
  double figure = 0;     // in the row's unit
  double cpuMicros = 0;  // of the server, a record; 0 where it is not measured
  long peakKiB = 0;      // likewise
};

enum class Compared {
  kRatio,   // ours against the floor's, the median of the pairs
  kFigure,  // ours alone
};

struct Result {
  std::string row;  // as --only names it
  std::string what;
  int records = 0;
  std::string unit;  // of the figures: "/s", "s", "ms", "MiB", "µs"
  std::vector<Run> ours = {};
  std::vector<Run> floor = {};  // the other of each pair; empty for none
  Compared compared = Compared::kRatio;
  std::optional<double> target = {};
  bool atLeast = true;                     // the target is the least that it may be, else the most
  std::optional<long> peakKiBOf1000 = {};  // of the same with 1,000 records

  // What the target speaks of.
  double Value() const;
  std::optional<bool> IsMet() const;
};

double Median(std::vector<double> values);
// Of each figure by itself.
Run MedianRun(const std::vector<Run>& runs);
long MedianPeak(const std::vector<Run>& runs);

std::string TableHead();
std::string TableLine(const Result& result);
std::string ToJson(const std::vector<Result>& results);

}  // namespace bench
