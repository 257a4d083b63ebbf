// A vCard or iCalendar file in which items are changed or removed, and nothing else.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/calendar_edit.h"
#include "desktop/folder/calendar_lines.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/file_text.h"
#include "desktop/folder/raw_line.h"
#include "desktop/merge/item.h"

namespace desktop {

struct TextChange {
  // Whether the item was edited at all; else the text is as it was.
  bool done = false;
  std::vector<std::string> losses;  // what the text cannot say; why it was not edited
  // An edit before has changed the lines that say the item: it is to be edited in the bytes that
  // come of this.
  bool later = false;
};

class TextEdit {
 public:
  // `when` is the time of the edit. Bytes that are no UTF-16 must not be edited.
  TextEdit(std::string_view bytes, calendar::Zone zone, std::chrono::sys_seconds when);

  // The item that begins at the line of the file as it was reads as `from`, and then as `to`, as
  // far as the file can say it.
  TextChange Change(std::size_t line, const Item& from, const Item& to);
  TextChange Remove(std::size_t line, const Item& item);

  // The item's own bytes as they were, as a file of their own.
  std::string CutOut(std::size_t line) const;
  // Whether nothing but a frame is left.
  bool IsEmpty() const;
  std::string bytes() const;

 private:
  struct Splice {
    std::size_t end = 0;
    std::string text;
  };
  // The parts that say the item: a card, or the events of a series.
  std::vector<std::size_t> PartsOf(std::size_t line) const;
  // Whether an edit has changed any of the parts, or has put others behind them.
  bool AreTouched(const std::vector<std::size_t>& parts) const;
  std::string UidOfPart(std::size_t index) const;
  // The value of the part's first line of the upper-case name; empty without one.
  std::string TextOfLine(std::size_t index, std::string_view name) const;
  std::size_t BeginOf(std::size_t part) const;
  std::size_t EndOf(std::size_t part) const;
  std::optional<std::string> Obstacle(const std::vector<std::size_t>& parts) const;
  std::string_view TextAt(std::size_t part) const;
  CalendarContext ContextOf(const std::vector<std::size_t>& parts, const Item& item) const;
  CalendarParts LinesOf(const std::vector<std::size_t>& parts) const;
  TextChange ChangeCalendar(const std::vector<std::size_t>& parts, std::size_t main,
                            const Item& from, const Item& to);
  std::optional<TextChange> ChangeOccurrence(const std::vector<std::size_t>& parts,
                                             std::size_t main, const Item& from, const Item& to);
  EditedCalendar EditIn(const std::vector<std::size_t>& parts, std::size_t part, const Item& from,
                        const Item& to) const;
  void Apply(const std::vector<std::size_t>& parts, EditedCalendar edited);
  void DefineZoneOf(const std::vector<std::string>& texts, const std::vector<std::size_t>& parts,
                    const Item& written);
  void DefineZone(std::size_t part, const Item& written);
  struct ZonedItems {
    LineStyle style;
    std::vector<formats::Appointment> appointments;
  };
  std::string DefinitionFor(const ZonedItems& zoned) const;
  LineStyle StyleOfPart(std::size_t part) const;
  void Replace(std::size_t begin, std::size_t end, std::string text);

  const calendar::Zone zone_;
  const std::chrono::sys_seconds when_;
  const FileText file_;
  const FileParts parts_;
  const bool western_;
  std::unordered_map<std::size_t, std::size_t> partAt_;                 // of an item, by its line
  std::unordered_map<std::string, std::vector<std::size_t>> seriesOf_;  // by kind and UID
  std::map<std::size_t, Splice> splices_;                               // by where they begin
  std::map<std::size_t, std::string> insertions_;                       // before what stands there
  // By where the definition of their zone goes.
  std::map<std::size_t, ZonedItems> zoned_;
  std::unordered_set<std::size_t> changes_;   // parts that change an occurrence
  std::unordered_set<std::size_t> touched_;   // parts
  std::unordered_set<std::size_t> extended_;  // parts, the last of a series, that others are behind
};

}  // namespace desktop
