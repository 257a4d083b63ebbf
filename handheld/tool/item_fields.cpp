#include "handheld/tool/item_fields.h"

#include <fmt/core.h>

#include <cmath>

#include "common/calendar/wall_time.h"
#include "common/text/unicode.h"
#include "handheld/store/item_limits.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"

namespace tool {
namespace {

using ce::Bstr;
using std::chrono::local_days;
using std::chrono::local_seconds;

constexpr local_days kDayZero{std::chrono::year{1899} / 12 / 30};
constexpr int kSecondsADay = 86400;

// A handheld's lines end with CR LF, those of people's records with LF.
std::u16string WithStoredLineEnds(std::u16string_view text) {
  std::u16string stored;
  for (const char16_t unit : text) {
    if (unit == u'\n' && (stored.empty() || stored.back() != u'\r')) stored += u'\r';
    stored += unit;
  }
  return stored;
}

std::string WithPlainLineEnds(std::string text) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') text[kept++] = text[i];
  text.resize(kept);
  return text;
}

// A string that memory lacks would read as an empty one.
ce::HRESULT Put(const TextSetter& put, std::u16string_view text) {
  const Bstr string(text);
  return string ? put(string.get()) : ce::E_OUTOFMEMORY;
}

// Characters that the handheld keeps of it.
std::size_t LongestText(std::string_view name, bool ofContact) {
  using ce::host::TextKind;
  const TextKind kind = name == "Body"      ? TextKind::kBody
                        : ofContact         ? TextKind::kPlain
                        : name == "Subject" ? TextKind::kSubject
                                            : TextKind::kCalendar;
  return ce::host::LongestText(ce::host::ReadItemLimits(*ce::host::Handheld::Current()), kind);
}

std::string JoinCategories(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) {
    if (!joined.empty()) joined += ',';
    joined += name;
  }
  return joined;
}

// As much of the time as says something.
std::string TimeText(local_seconds time) {
  const local_days day = formats::DayOf(time);
  return time == day ? formats::IsoDate(day) : formats::IsoDateTime(time);
}

}  // namespace

std::string ReadText(const TextGetter& get, std::string_view name) {
  Bstr text;
  const ce::HRESULT status = get(text.put());
  if (status == ce::E_NOTIMPL) return {};
  Check(status, name);
  return WithPlainLineEnds(text::ToUtf8Lossy(text.view()));
}

void PutText(const TextSetter& put, std::string_view name, std::string_view utf8, bool ofContact,
             NotKept& notKept) {
  const std::u16string text = WithStoredLineEnds(text::FromUtf8Lossy(utf8));
  const ce::HRESULT status = Put(put, text);
  if (status == ce::kTextTooLong) {
    std::size_t kept = LongestText(name, ofContact);
    // Not between the halves of one character.
    if (kept > 0 && (text[kept - 1] & 0xFC00) == 0xD800) --kept;
    Check(Put(put, text.substr(0, kept)), name);
    notKept.push_back(
        fmt::format("{}: cut from {} to {} characters, which is what a handheld keeps", name,
                    text.size(), kept));
  } else if (status == ce::E_NOTIMPL) {
    if (!text.empty()) notKept.push_back(fmt::format("{}: this handheld does not have it", name));
  } else {
    Check(status, name);
  }
}

// Names are separated by a comma and, possibly, one blank.
std::vector<std::string> ReadCategories(const TextGetter& get) {
  const std::string stored = ReadText(get, "Categories");
  std::string_view text = stored;
  std::vector<std::string> names;
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    if (const std::string_view name = text.substr(0, comma); !name.empty())
      names.emplace_back(name);
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
    if (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  }
  return names;
}

// Whole names only: a category that is cut would be another category.
void PutCategories(const TextSetter& put, std::vector<std::string> names, NotKept& notKept) {
  for (;;) {
    const std::u16string joined = text::FromUtf8Lossy(JoinCategories(names));
    const ce::HRESULT status = Put(put, joined);
    if (status != ce::kTextTooLong) {
      Check(status, "Categories");
      return;
    }
    notKept.push_back(fmt::format("Categories: no room for \"{}\"", names.back()));
    names.pop_back();
  }
}

std::optional<local_seconds> TimeOf(ce::DATE date) {
  // Written so that a value that is no number is none, too.
  if (date == ce::kNoDate || !(date >= 0 && date < ce::kNoDate)) return std::nullopt;
  return kDayZero + std::chrono::seconds{std::llround(date * kSecondsADay)};
}

std::optional<local_days> DayOf(ce::DATE date) {
  const auto time = TimeOf(date);
  return time ? std::optional(formats::DayOf(*time)) : std::nullopt;
}

ce::DATE DateOf(local_seconds time) {
  const local_days day = formats::DayOf(time);
  return static_cast<double>((day - kDayZero).count()) +
         static_cast<double>((time - day).count()) / kSecondsADay;
}

ce::DATE KeptDateOf(std::optional<local_seconds> time, std::string_view name, NotKept& notKept) {
  if (!time) return ce::kNoDate;
  if (formats::IsKeepableDay(formats::DayOf(*time))) return DateOf(*time);
  notKept.push_back(fmt::format("{}: {} is no date that a handheld keeps", name, TimeText(*time)));
  return ce::kNoDate;
}

}  // namespace tool
