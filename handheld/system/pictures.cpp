#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>

#include "handheld/base/guarded.h"
#include "platform/clock.h"
#include "platform/text.h"

namespace ce {
namespace {

using host::GuardedCode;

// A letter of a picture and how many of it at least mean what. The first row that fits is taken.
struct Field {
  char16_t letter;
  std::size_t count;
  WORD SYSTEMTIME::*value;
  unsigned modulus;  // 0: the whole number
  std::size_t digits;
};

constexpr std::array kDateFields = {
    Field{u'y', 3, &SYSTEMTIME::wYear, 0, 4},   Field{u'y', 2, &SYSTEMTIME::wYear, 100, 2},
    Field{u'y', 1, &SYSTEMTIME::wYear, 100, 1}, Field{u'M', 2, &SYSTEMTIME::wMonth, 0, 2},
    Field{u'M', 1, &SYSTEMTIME::wMonth, 0, 1},  Field{u'd', 2, &SYSTEMTIME::wDay, 0, 2},
    Field{u'd', 1, &SYSTEMTIME::wDay, 0, 1}};
constexpr std::array kTimeFields = {
    Field{u'H', 2, &SYSTEMTIME::wHour, 0, 2},   Field{u'H', 1, &SYSTEMTIME::wHour, 0, 1},
    Field{u'm', 2, &SYSTEMTIME::wMinute, 0, 2}, Field{u'm', 1, &SYSTEMTIME::wMinute, 0, 1},
    Field{u's', 2, &SYSTEMTIME::wSecond, 0, 2}, Field{u's', 1, &SYSTEMTIME::wSecond, 0, 1}};

void AppendNumber(std::u16string& out, unsigned number, std::size_t digits) {
  std::array<char16_t, 10> text;
  auto first = text.end();
  for (; number > 0 || static_cast<std::size_t>(text.end() - first) < digits; number /= 10) {
    *--first = static_cast<char16_t>(u'0' + number % 10);
  }
  out.append(first, text.end());
}

// The text behind an opening apostrophe; two apostrophes stand for one.
void AppendQuoted(std::u16string& out, std::u16string_view& rest) {
  while (!rest.empty()) {
    const bool isQuote = rest.front() == u'\'';
    const bool isDoubled = rest.starts_with(u"''");
    if (!isQuote || isDoubled) out.push_back(rest.front());
    rest.remove_prefix(isDoubled ? 2 : 1);
    if (isQuote && !isDoubled) return;
  }
}

template <std::size_t kCount>
std::u16string Draw(const std::array<Field, kCount>& fields, const SYSTEMTIME& time,
                    std::u16string_view picture) {
  std::u16string out;
  out.reserve(2 * picture.size());
  while (!picture.empty()) {
    const char16_t letter = picture.front();
    if (letter == u'\'') {
      picture.remove_prefix(1);
      AppendQuoted(out, picture);
      continue;
    }
    const std::size_t run = std::min(picture.find_first_not_of(letter), picture.size());
    const auto field = std::find_if(fields.begin(), fields.end(), [=](const Field& candidate) {
      return candidate.letter == letter && candidate.count <= run;
    });
    if (field == fields.end()) {
      out.push_back(letter);
      picture.remove_prefix(1);
      continue;
    }
    const unsigned value = time.*field->value;
    AppendNumber(out, field->modulus ? value % field->modulus : value, field->digits);
    picture.remove_prefix(run);
  }
  return out;
}

bool IsDate(const SYSTEMTIME& time) {
  const std::chrono::year_month_day date{
      std::chrono::year{time.wYear}, std::chrono::month{time.wMonth}, std::chrono::day{time.wDay}};
  return time.wYear >= 100 && time.wYear <= 30827 && date.ok();
}

bool IsTime(const SYSTEMTIME& time) {
  return time.wHour <= 23 && time.wMinute <= 59 && time.wSecond <= 59 && time.wMilliseconds <= 999;
}

template <std::size_t kCount>
INT Format(const char* call, const std::array<Field, kCount>& fields,
           bool (*possible)(const SYSTEMTIME&), const SYSTEMTIME* given, const WCHAR* picture,
           WCHAR* out, INT characters) {
  INT result = 0;
  const DWORD error = GuardedCode(call, [&]() -> DWORD {
    SYSTEMTIME time{};
    if (given) {
      time = *given;
    } else {
      GetLocalTime(&time);
    }
    if (!picture || characters < 0 || (!out && characters != 0) || !possible(time)) {
      return ERROR_INVALID_PARAMETER;
    }
    const std::u16string text = Draw(fields, time, picture);
    const INT needed = static_cast<INT>(text.size()) + 1;
    if (characters != 0) {
      if (characters < needed) return ERROR_INSUFFICIENT_BUFFER;
      std::copy_n(text.c_str(), needed, out);
    }
    result = needed;
    return ERROR_SUCCESS;
  });
  if (error != ERROR_SUCCESS) SetLastError(error);
  return result;
}

}  // namespace

INT GetDateFormatW(DWORD, DWORD, const SYSTEMTIME* date, const WCHAR* picture, WCHAR* out,
                   INT characters) {
  return Format("GetDateFormatW", kDateFields, IsDate, date, picture, out, characters);
}

INT GetTimeFormatW(DWORD, DWORD, const SYSTEMTIME* time, const WCHAR* picture, WCHAR* out,
                   INT characters) {
  return Format("GetTimeFormatW", kTimeFields, IsTime, time, picture, out, characters);
}

}  // namespace ce
