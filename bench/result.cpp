#include "bench/result.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace bench {
namespace {

using nlohmann::ordered_json;

template <typename Member>
double MedianOf(const std::vector<Run>& runs, Member member) {
  std::vector<double> values;
  for (const Run& run : runs) values.push_back(static_cast<double>(run.*member));
  return Median(std::move(values));
}

// With thousands apart.
std::string Grouped(double value) {
  std::string digits = fmt::format("{:.0f}", value);
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

std::string Figure(const std::vector<Run>& runs, const std::string& unit) {
  if (runs.empty()) return "";
  const double value = MedianOf(runs, &Run::figure);
  return (value >= 1000 ? Grouped(value) : fmt::format("{:.2f}", value)) + " " + unit;
}

std::string Cpu(const std::vector<Run>& runs) {
  const double micros = runs.empty() ? 0 : MedianOf(runs, &Run::cpuMicros);
  return micros > 0 ? fmt::format("{:.1f}", micros) : "";
}

std::string Peak(const Result& result) {
  const long peak = MedianPeak(result.ours);
  if (peak == 0) return "";
  const std::string text = fmt::format("{:.1f}", static_cast<double>(peak) / 1024);
  if (!result.peakKiBOf1000) return text;
  return text + fmt::format(" ({:.2f}x)",
                            static_cast<double>(peak) / static_cast<double>(*result.peakKiBOf1000));
}

std::string Value(const Result& result) {
  const double value = result.Value();
  return fmt::format("{:.{}f}", value, value < 0.1 ? 3 : 2);
}

std::string Target(const Result& result) {
  if (!result.target) return "";
  return fmt::format("{} {:g}", result.atLeast ? ">=" : "<=", *result.target);
}

std::string Met(const Result& result) {
  const std::optional<bool> met = result.IsMet();
  return !met ? "" : *met ? "yes" : "no";
}

constexpr const char* kLine = "{:<17} {:>9} {:>13} {:>13} {:>7} {:>8} {:<4} {:>8} {:>8} {:>14}\n";

ordered_json RunsToJson(const std::vector<Run>& runs) {
  ordered_json list = ordered_json::array();
  for (const Run& run : runs) {
    list.push_back({{"figure", run.figure}, {"cpu_us", run.cpuMicros}, {"peak_kib", run.peakKiB}});
  }
  return {{"median", MedianOf(runs, &Run::figure)},
          {"cpu_us", MedianOf(runs, &Run::cpuMicros)},
          {"peak_kib", MedianPeak(runs)},
          {"runs", list}};
}

ordered_json ResultToJson(const Result& result) {
  ordered_json json = {{"row", result.row},
                       {"what", result.what},
                       {"records", result.records},
                       {"unit", result.unit},
                       {"ours", RunsToJson(result.ours)}};
  if (!result.floor.empty()) json["floor"] = RunsToJson(result.floor);
  json["compared"] = result.compared == Compared::kRatio ? "ratio" : "figure";
  json["value"] = result.Value();
  if (result.target) {
    json[result.atLeast ? "at_least" : "at_most"] = *result.target;
    json["met"] = *result.IsMet();
  }
  if (result.peakKiBOf1000) json["peak_kib_of_1000"] = *result.peakKiBOf1000;
  return json;
}

}  // namespace

double Result::Value() const {
  if (compared == Compared::kFigure) return MedianOf(ours, &Run::figure);
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i)
    ratios.push_back(ours[i].figure / floor.at(i).figure);
  return Median(std::move(ratios));
}

std::optional<bool> Result::IsMet() const {
  if (!target) return std::nullopt;
  return atLeast ? Value() >= *target : Value() <= *target;
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Run MedianRun(const std::vector<Run>& runs) {
  return {MedianOf(runs, &Run::figure), MedianOf(runs, &Run::cpuMicros), MedianPeak(runs)};
}

long MedianPeak(const std::vector<Run>& runs) {
  return static_cast<long>(MedianOf(runs, &Run::peakKiB));
}

std::string TableHead() {
  return fmt::format(kLine, "row", "records", "ours", "floor", "value", "target", "met", "CPU us",
                     "floor's", "MiB (of 1000)");
}

std::string TableLine(const Result& result) {
  return fmt::format(kLine, result.row, result.records > 0 ? Grouped(result.records) : "",
                     Figure(result.ours, result.unit), Figure(result.floor, result.unit),
                     Value(result), Target(result), Met(result), Cpu(result.ours),
                     Cpu(result.floor), Peak(result));
}

std::string ToJson(const std::vector<Result>& results) {
  ordered_json list = ordered_json::array();
  for (const Result& result : results) list.push_back(ResultToJson(result));
  return ordered_json{{"rows", list}}.dump(2) + "\n";
}

}  // namespace bench
