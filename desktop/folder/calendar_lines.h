// The events of one series, or one to-do, as lines that can be edited.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/lines/vcard_property.h"
#include "desktop/folder/raw_line.h"
#include "desktop/merge/item.h"

namespace desktop {

struct CalendarLine {
  std::string bytes;  // empty lines behind it have a line of their own
  std::string text;   // unfolded
  std::optional<formats::Property> property;
  std::size_t depth = 0;  // 0 of the event's own, else of an alarm and the like within it
};

// From its BEGIN to its END.
using CalendarPart = std::vector<CalendarLine>;
using CalendarParts = std::vector<CalendarPart>;

CalendarPart LinesOfPart(std::string_view text);
std::string TextOfPart(const CalendarPart& part);
// A new line, unfolded, without a line end.
CalendarLine LineOf(const RawLine& line, const LineStyle& style);

// The position of the part's own first line of the upper-case name; none without one.
std::optional<std::size_t> FindLine(const CalendarPart& part, std::string_view name);
void RemoveLines(CalendarPart& part, std::string_view name);
// Behind the last line of these names that there is, else before what stands within the part.
void InsertLine(CalendarPart& part, CalendarLine line,
                std::initializer_list<std::string_view> behind);

struct PartRange {
  std::size_t begin = 0;
  std::size_t end = 0;  // behind its END
};
// The alarms.
std::vector<PartRange> AlarmsOf(const CalendarPart& part);

// Reads parts as the calendar that they come from has them.
class CalendarContext {
 public:
  // `frame` is what they refer to: the definitions of zones.
  CalendarContext(std::string frame, calendar::Zone zone, ItemKind kind, std::string uid)
      : frame_(std::move(frame)), zone_(std::move(zone)), kind_(kind), uid_(std::move(uid)) {}

  struct Reading {
    std::optional<Item> item;  // the one of the UID; none when there are several
    std::vector<Item> others;
  };
  Reading Read(const CalendarParts& parts) const;

  const calendar::Zone& zone() const { return zone_; }
  const std::string& frame() const { return frame_; }
  const std::string& uid() const { return uid_; }

 private:
  const std::string frame_;
  const calendar::Zone zone_;
  const ItemKind kind_;
  const std::string uid_;
};

}  // namespace desktop
