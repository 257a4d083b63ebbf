// The components of an iCalendar file: events, to-dos and time zones, cut out of its lines.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/stray_lines.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {

struct Component {
  std::string name;      // upper case
  std::size_t line = 0;  // of its BEGIN
  // The VCALENDAR that it is in, counted from 1; 0 outside any.
  std::size_t calendar = 0;
  bool cancels = false;  // METHOD:CANCEL stands before it
  std::vector<Property> properties;
  std::vector<Component> parts;  // a VALARM, or a STANDARD or DAYLIGHT of a VTIMEZONE

  // The first property of a name; null without one.
  const Property* Find(std::string_view property) const;
};

// Walks the lines once and hands over every VEVENT, VTODO and VTIMEZONE at its end, inside of a
// VCALENDAR or not. One without an END ends where the next one begins, or with the file.
class ComponentReader {
 public:
  using Sink = std::function<void(Component&&)>;

  // Components of the names in `wanted` alone are handed over; what others hold is not looked at.
  // What is odd about the file goes to `notices` unless it is null.
  ComponentReader(std::vector<std::string_view> wanted, Sink sink, NoticeList* notices);
  void Read(std::string_view text);

 private:
  void Begin(std::size_t line, const std::string& name);
  void End(std::size_t line, const std::string& name);
  void BeginCalendar();
  void BeginItem(std::size_t line, const std::string& name);
  void Skip(std::size_t line, const std::string& name);
  bool EndSkipped(const std::string& name);
  void CloseItem(bool endMissing);
  void TakeProperty(const ContentLine& line);
  void TakeCalendarProperty(const Property& property);
  void Notice(std::size_t line, std::string text);
  void ReleaseStrayLines();

  const std::vector<std::string_view> wanted_;
  const Sink sink_;
  NoticeList* const notices_;
  std::size_t calendars_ = 0;
  bool inCalendar_ = false;
  bool cancels_ = false;
  std::optional<Component> item_;
  bool itemIsWanted_ = false;
  std::optional<Component> part_;
  // Components that nothing is kept of, the innermost last, and how many are open beyond a depth
  // that no sensible file has.
  std::vector<std::string> skipped_;
  std::size_t deeper_ = 0;
  std::vector<std::string> reportedKinds_;
  bool outsideReported_ = false;
  StrayLines stray_;
};

}  // namespace formats
