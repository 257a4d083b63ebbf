#include "desktop/folder/property_edit.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "common/formats/lines/category_list.h"
#include "common/formats/lines/notice_list.h"
#include "desktop/folder/line_candidates.h"
#include "desktop/folder/series_edit.h"

namespace desktop {
namespace {

CalendarLine Rewritten(const CalendarLine& line, const CalendarLine& canonical, bool whole,
                       const LineStyle& style) {
  if (whole) return LineOf(RawLine::Of(canonical.text), style);
  return LineOf(WithValue(line, RawLine::Of(canonical.text).value), style);
}

std::optional<std::size_t> FindTrigger(const CalendarPart& part, const PartRange& alarm) {
  for (std::size_t i = alarm.begin; i < alarm.end; ++i) {
    if (part[i].depth == 1 && part[i].property && part[i].property->name == "TRIGGER") return i;
  }
  return std::nullopt;
}

}  // namespace

const std::array<FieldLines, 8> kFieldLines = {{
    {"Subject", {"SUMMARY"}},
    {"Location", {"LOCATION"}},
    {"Body", {"DESCRIPTION"}},
    {"Private", {"CLASS"}},
    {"Busy", {"TRANSP", "STATUS", "X-MICROSOFT-CDO-BUSYSTATUS"}},
    {"Importance", {"PRIORITY"}},
    {"Complete", {"STATUS", "COMPLETED", "PERCENT-COMPLETE"}, true},
    {"Completed", {"COMPLETED"}},
}};

std::vector<CalendarPart> PropertyCandidates(const CalendarPart& part,
                                             const CalendarPart& canonical, const FieldLines& field,
                                             const LineStyle& style) {
  std::vector<CalendarPart> candidates;
  const auto add = [&](bool whole, bool removes) {
    CalendarPart changed = part;
    std::vector<std::size_t> missing;
    for (const std::string_view name : field.names) {
      const auto own = FindLine(part, name);
      const auto wanted = FindLine(canonical, name);
      if (own && wanted) {
        // Removals before it may have moved it.
        const auto at = FindLine(changed, name);
        changed[*at] = Rewritten(part[*own], canonical[*wanted], whole, style);
      } else if (own && removes) {
        RemoveLines(changed, name);
      } else if (wanted) {
        missing.push_back(*wanted);
      }
    }
    candidates.push_back(changed);
    for (const std::size_t wanted : missing) {
      InsertLine(changed, LineOf(RawLine::Of(canonical[wanted].text), style), {});
      candidates.push_back(changed);
    }
  };
  for (const bool whole : {false, true}) {
    add(whole, field.clears);
    add(whole, !field.clears);
  }
  return candidates;
}

void SetCategories(CalendarPart& part, const std::function<bool(const std::string&)>& stays,
                   const std::vector<std::string>& wanted, const LineStyle& style) {
  formats::NoticeList ignored;
  std::vector<std::string> missing = wanted;
  std::optional<std::size_t> last;
  for (std::size_t i = 1; i + 1 < part.size(); ++i) {
    if (part[i].depth != 0 || !part[i].property || part[i].property->name != "CATEGORIES") continue;
    last = i;
    for (const std::string& name : CategoriesOf(*part[i].property, ignored))
      std::erase(missing, name);
  }
  for (std::size_t i = part.size(); i-- > 1;) {
    if (part[i].depth != 0 || !part[i].property || part[i].property->name != "CATEGORIES") continue;
    const std::vector<std::string> old = CategoriesOf(*part[i].property, ignored);
    std::vector<std::string> names = old;
    std::erase_if(names, [&](const std::string& name) { return !stays(name); });
    if (i == last) names.insert(names.end(), missing.begin(), missing.end());
    if (names == old) continue;
    if (names.empty()) {
      part.erase(part.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      part[i] = LineOf(WithValue(part[i], CategoryValue(names)), style);
    }
  }
  if (!last && !missing.empty()) {
    InsertLine(part, LineOf({{}, "CATEGORIES", {}, CategoryValue(missing)}, style), {});
  }
}

std::vector<CalendarPart> AlarmCandidates(const CalendarPart& part, const PartRange& alarm,
                                          const CalendarPart& canonical, const LineStyle& style) {
  std::vector<CalendarPart> candidates;
  const std::vector<PartRange> wanted = AlarmsOf(canonical);
  if (wanted.empty()) {
    candidates.push_back(part);
    CalendarPart& left = candidates.back();
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(alarm.begin),
               left.begin() + static_cast<std::ptrdiff_t>(alarm.end));
    return candidates;
  }
  const auto own = FindTrigger(part, alarm);
  const auto at = FindTrigger(canonical, wanted.front());
  if (!own || !at) return candidates;
  for (const bool whole : {false, true}) {
    candidates.push_back(part);
    CalendarLine line = Rewritten(part[*own], canonical[*at], whole, style);
    line.depth = 1;
    candidates.back()[*own] = std::move(line);
  }
  return candidates;
}

}  // namespace desktop
