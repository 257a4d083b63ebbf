#include "handheld/store/series.h"

#include <algorithm>
#include <limits>

namespace ce::host {
namespace {

using calendar::Pattern;
using calendar::PatternType;

// A damaged store can hold anything; nothing is computed with that.
std::optional<Pattern> WholePattern(const Series& series) {
  Pattern pattern = series.pattern;
  if (series.ends) {
    if (!series.until) return std::nullopt;
    pattern.until = series.until;
  }
  if (!calendar::IsValid(pattern)) return std::nullopt;
  return pattern;
}

int ToInt(std::int64_t value) {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

}  // namespace

Series FreshSeries(local_days start) {
  Series series;
  series.pattern = calendar::PatternFrom(PatternType::kWeekly, start);
  series.startDay = start;
  return series;
}

bool FinishSeries(Series& series, local_days start) {
  Pattern pattern = series.pattern;
  if (series.ends) {
    if (series.occurrences > 0) {
      pattern.occurrences = series.occurrences;
    } else if (series.until) {
      pattern.until = series.until;
    } else {
      return false;
    }
  }
  if (!calendar::IsValid(pattern) || !calendar::NextDayOf(pattern, start, start)) return false;
  if (series.ends) {
    // A series that would go on beyond the last day there is ends with it.
    series.until = calendar::LastDayOf(pattern, start);
    series.occurrences = calendar::CountDaysOf(pattern, start).value_or(0);
  }
  series.startDay = start;
  return true;
}

bool HasDay(const Series& series, local_days start, local_days day) {
  const std::optional<Pattern> pattern = WholePattern(series);
  return pattern && calendar::IsDayOf(*pattern, start, day);
}

void BindSeries(Statement& statement, int parameter, const std::optional<Series>& series) {
  if (!series) {
    for (std::size_t i = 0; i < kSeriesColumns.size(); ++i) statement.BindNull(parameter++);
    return;
  }
  const Pattern& pattern = series->pattern;
  for (const int value :
       {static_cast<int>(pattern.type), pattern.interval, pattern.daysOfWeek, pattern.dayOfMonth,
        pattern.instance, pattern.monthOfYear, series->ends ? series->occurrences : 0}) {
    statement.Bind(parameter++, value);
  }
  const bool hasEnd = series->ends && series->until;
  statement.Bind(parameter++, hasEnd ? OleDate(*series->until) : kNoDate);
  statement.Bind(parameter++, OleDate(series->startDay));
}

void LoadSeries(const Statement& statement, int column, std::optional<Series>& series) {
  series.reset();
  if (statement.IsNull(column)) return;
  series.emplace();
  Pattern& pattern = series->pattern;
  const auto next = [&] { return ToInt(statement.Integer(column++)); };
  pattern.type = static_cast<PatternType>(next());
  pattern.interval = next();
  pattern.daysOfWeek = next();
  pattern.dayOfMonth = next();
  pattern.instance = next();
  pattern.monthOfYear = next();
  series->occurrences = std::max(next(), 0);
  series->until = DayOfDate(statement.Real(column++));
  series->ends = series->occurrences > 0 || series->until;
  series->startDay = DayOfDate(statement.Real(column++)).value_or(kFirstItemDay);
}

}  // namespace ce::host
