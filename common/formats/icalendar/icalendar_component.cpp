#include "common/formats/icalendar/icalendar_component.h"

#include <algorithm>
#include <utility>

#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

constexpr std::size_t kDeepest = 32;

// Components of which nothing is kept, and why.
struct UnkeptKind {
  std::string_view name;
  std::string_view why;
};
constexpr UnkeptKind kUnkeptKinds[] = {
    {"VJOURNAL", "a handheld keeps no journal"},
    {"VFREEBUSY", "a handheld keeps no free and busy times"},
    {"VAVAILABILITY", "a handheld keeps no free and busy times"},
    {"VPOLL", "a handheld keeps no polls"},
    {"VCARD", "contacts are read from a file of their own"},
};

bool IsItem(std::string_view name) {
  return name == "VEVENT" || name == "VTODO" || name == "VTIMEZONE";
}

bool IsPartOf(std::string_view item, std::string_view name) {
  if (item == "VTIMEZONE") return name == "STANDARD" || name == "DAYLIGHT";
  return name == "VALARM";
}

// "BEGIN:VEVENT": the name behind the marker, in upper case; empty for another line.
std::string MarkedName(std::string_view line, std::string_view marker) {
  if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);  // of a file that was appended
  if (line.size() > 200 || !text::StartsWithNoCase(line, marker)) return {};
  line = text::TrimBlanks(line.substr(marker.size()));
  if (!line.starts_with(':')) return {};
  return text::RepairUtf8(text::ToUpperAscii(text::TrimBlanks(line.substr(1))));
}

}  // namespace

const Property* Component::Find(std::string_view property) const {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const Property& each) { return each.name == property; });
  return found == properties.end() ? nullptr : &*found;
}

ComponentReader::ComponentReader(std::vector<std::string_view> wanted, Sink sink,
                                 NoticeList* notices)
    : wanted_(std::move(wanted)), sink_(std::move(sink)), notices_(notices) {}

void ComponentReader::Notice(std::size_t line, std::string text) {
  if (notices_ != nullptr) notices_->Add(line, std::move(text));
}

void ComponentReader::Read(std::string_view text) {
  ContentLineReader lines(text);
  ContentLine line;
  while (lines.Next(line)) {
    if (const std::string begun = MarkedName(line.text, "BEGIN"); !begun.empty()) {
      ReleaseStrayLines();
      Begin(line.line, begun);
    } else if (const std::string ended = MarkedName(line.text, "END"); !ended.empty()) {
      ReleaseStrayLines();
      End(line.line, ended);
    } else {
      TakeProperty(line);
    }
  }
  ReleaseStrayLines();
  CloseItem(true);
}

void ComponentReader::ReleaseStrayLines() {
  if (notices_ != nullptr) stray_.Release(*notices_);
}

void ComponentReader::Begin(std::size_t line, const std::string& name) {
  if (name == "VCALENDAR") {
    BeginCalendar();
  } else if (IsItem(name)) {
    BeginItem(line, name);
  } else if (skipped_.empty() && item_ && !part_ && IsPartOf(item_->name, name)) {
    part_.emplace();
    part_->name = name;
    part_->line = line;
  } else {
    Skip(line, name);
  }
}

void ComponentReader::BeginCalendar() {
  CloseItem(true);
  ++calendars_;
  inCalendar_ = true;
  cancels_ = false;
}

void ComponentReader::BeginItem(std::size_t line, const std::string& name) {
  CloseItem(true);
  itemIsWanted_ = std::find(wanted_.begin(), wanted_.end(), name) != wanted_.end();
  item_.emplace();
  item_->name = name;
  item_->line = line;
  item_->calendar = inCalendar_ ? calendars_ : 0;
  item_->cancels = cancels_;
}

void ComponentReader::Skip(std::size_t line, const std::string& name) {
  if (skipped_.size() >= kDeepest) {
    ++deeper_;
    return;
  }
  const bool outermost = skipped_.empty();
  skipped_.push_back(name);
  if (!outermost || name.starts_with("X-")) return;
  if (std::find(reportedKinds_.begin(), reportedKinds_.end(), name) != reportedKinds_.end()) return;
  const auto* known = std::find_if(std::begin(kUnkeptKinds), std::end(kUnkeptKinds),
                                   [&](const UnkeptKind& kind) { return kind.name == name; });
  const std::string_view why =
      known == std::end(kUnkeptKinds) ? "a handheld has no place for it" : known->why;
  Notice(line, text::Excerpt(name) + ": " + std::string(why));
  if (reportedKinds_.size() < NoticeList::kMost) reportedKinds_.push_back(name);
}

// Whether it ended components that are skipped, or was odd within them.
bool ComponentReader::EndSkipped(const std::string& name) {
  if (skipped_.empty()) return false;
  if (deeper_ > 0) {
    --deeper_;
    return true;
  }
  const auto open = std::find(skipped_.rbegin(), skipped_.rend(), name);
  if (open != skipped_.rend()) {
    skipped_.erase(std::prev(open.base()), skipped_.end());
    return true;
  }
  const bool endsWhatIsAround = (name == "VCALENDAR" && inCalendar_) ||
                                (item_ && item_->name == name) || (part_ && part_->name == name);
  if (endsWhatIsAround) skipped_.clear();
  return !endsWhatIsAround;
}

void ComponentReader::End(std::size_t line, const std::string& name) {
  if (EndSkipped(name)) return;
  if (part_ && part_->name == name) {
    item_->parts.push_back(std::move(*part_));
    part_.reset();
  } else if (item_ && item_->name == name) {
    CloseItem(false);
  } else if (name == "VCALENDAR" && inCalendar_) {
    CloseItem(true);
    inCalendar_ = false;
    cancels_ = false;
  } else {
    Notice(line, "END:" + text::Excerpt(name) + ": nothing of that name is open");
  }
}

void ComponentReader::CloseItem(bool endMissing) {
  skipped_.clear();
  deeper_ = 0;
  if (!item_) return;
  if (part_) item_->parts.push_back(std::move(*part_));
  part_.reset();
  if (endMissing) {
    Notice(item_->line, "the " + item_->name + " that begins here has no END:" + item_->name);
  }
  Component item = std::move(*item_);
  item_.reset();
  if (itemIsWanted_) sink_(std::move(item));
}

void ComponentReader::TakeProperty(const ContentLine& line) {
  if (!skipped_.empty() || (item_ && !itemIsWanted_)) return;
  if (!item_ && !inCalendar_) {
    if (!outsideReported_) Notice(line.line, "not part of a calendar, left out");
    outsideReported_ = true;
    return;
  }
  std::optional<Property> property = ParseProperty(line);
  if (!property) {
    stray_.Add(line);
    return;
  }
  ReleaseStrayLines();
  if (part_) {
    part_->properties.push_back(std::move(*property));
  } else if (item_) {
    item_->properties.push_back(std::move(*property));
  } else {
    TakeCalendarProperty(*property);
  }
}

void ComponentReader::TakeCalendarProperty(const Property& property) {
  const std::string_view value = text::TrimBlanks(property.value);
  if (property.name == "METHOD") cancels_ = text::EqualsNoCase(value, "CANCEL");
  if (property.name == "CALSCALE" && !text::EqualsNoCase(value, "GREGORIAN")) {
    Notice(property.line,
           "CALSCALE: dates are read as Gregorian ones, not as " + text::Excerpt(value));
  }
}

}  // namespace formats
