#include "tests/agent/pim_import/random_calendar.h"

#include "agent/time/zone.h"

namespace corvane::testing {

using namespace ce;

namespace {

// Texts that an XML reader leaves as they are: no blank ones, no line break but CR LF.
std::u16string AnyWord() {
  const auto letters = rc::gen::element<std::u16string>(u"a", u"Z", u"&", u"<", u">", u"\"", u"'",
                                                        u"\u00E9", u"\u5C71", u"\U0001F600", u"]]>",
                                                        u"%s", u";", u"#", u"  ", u"\t", u"0");
  std::u16string word = *rc::gen::element<std::u16string>(u"x", u"\u00C5", u"&", u"7");
  for (const std::u16string& part :
       *rc::gen::resize(8, rc::gen::container<std::vector<std::u16string>>(letters))) {
    word += part;
  }
  return word;
}

std::u16string AnyText() {
  return *rc::gen::inRange(0, 4) == 0 ? u"" : AnyWord();
}

std::u16string AnyBody() {
  std::u16string body = AnyText();
  for (int line = *rc::gen::inRange(0, 3); line > 0 && !body.empty(); --line) {
    body += u"\r\n" + AnyText();
  }
  return body;
}

std::u16string AnyCategories() {
  std::u16string names;
  for (int count = *rc::gen::inRange(0, 4); count > 0; --count) {
    if (!names.empty()) names += *rc::gen::element<std::u16string>(u",", u", ");
    names += AnyWord();
  }
  return names;
}

// The days on which one of the zones changes its clocks by its present rules, among others.
int AnyDay() {
  switch (*rc::gen::inRange(0, 4)) {
    case 0:
      return *rc::gen::inRange(2, 401'000);
    case 1: {
      const int change = *rc::gen::element(39537, 39747, 39516, 39754, 39544, 39726, 45382, 45592,
                                           45361, 45599, 45389, 45571);
      return change + *rc::gen::inRange(-1, 2);
    }
    default:
      return *rc::gen::inRange(36'000, 48'000);
  }
}

int AnySecond() {
  return *rc::gen::oneOf(
      rc::gen::element(0, 3600, 7199, 7200, 9000, 10799, 10800, kSecondsPerDay - 1),
      rc::gen::map(rc::gen::inRange(0, 96), [](int quarter) { return quarter * 900; }),
      rc::gen::inRange(0, kSecondsPerDay));
}

// Times that clocks skip in spring can stand before earlier ones once they are told in UTC.
bool IsOrderedInUtc(const Moment& start, const Moment& end) {
  const auto ticks = [](const Moment& moment) {
    SYSTEMTIME local{};
    FILETIME time{};
    EXPECT_TRUE(VariantTimeToSystemTime(moment.date(), &local));
    const SYSTEMTIME utc = LocalTimeToUtc(local);
    EXPECT_TRUE(SystemTimeToFileTime(&utc, &time));
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  };
  return ticks(start) <= ticks(end);
}

RandomTimes AnyTimes(int day) {
  RandomTimes times;
  times.allDay = *rc::gen::inRange(0, 3) == 0;
  times.start = {day, AnySecond()};
  if (times.allDay) {
    times.length =
        *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(0, 15), rc::gen::just<std::int64_t>(1)) *
            kSecondsPerDay +
        *rc::gen::element(0, 0, 5400);
    if (*rc::gen::inRange(0, 2) == 0) times.start.second = 0;
    return times;
  }
  times.length = *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(0, 3 * kSecondsPerDay),
                                 rc::gen::element<std::int64_t>(0, 1800, 3600, 5400));
  while (!IsOrderedInUtc(times.start, times.start.After(times.length))) {
    times.start = times.start.After(3 * 3600);
  }
  return times;
}

RandomException AnyException(int seriesDay) {
  RandomException exception;
  exception.occurrence = *rc::gen::inRange(0, 12);
  exception.deleted = *rc::gen::arbitrary<bool>();
  exception.times = AnyTimes(seriesDay + *rc::gen::inRange(0, 40));
  exception.subject = AnyText();
  exception.location = AnyText();
  exception.body = AnyBody();
  exception.busy = *rc::gen::inRange<LONG>(0, 4);
  return exception;
}

RandomPattern AnyPattern(int day) {
  using calendar::PatternType;
  RandomPattern random;
  calendar::Pattern& pattern = random.pattern;
  pattern.type =
      *rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly,
                        PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth);
  const bool nth = pattern.type == PatternType::kMonthNth || pattern.type == PatternType::kYearNth;
  const bool yearly = pattern.type == PatternType::kYearly || pattern.type == PatternType::kYearNth;
  if (!yearly) pattern.interval = *rc::gen::element(1, 1, 2, 3, 7, 12);
  if (nth || pattern.type == PatternType::kWeekly) pattern.daysOfWeek = *rc::gen::inRange(1, 128);
  if (nth) pattern.instance = *rc::gen::inRange(1, 6);
  if (pattern.type == PatternType::kMonthly || pattern.type == PatternType::kYearly) {
    pattern.dayOfMonth = *rc::gen::inRange(1, 32);
  }
  if (yearly) pattern.monthOfYear = *rc::gen::inRange(1, 13);
  random.ending = *rc::gen::inRange(0, 3);
  random.occurrences = *rc::gen::inRange(1, 30);
  random.daysBehindLast = *rc::gen::inRange(0, 3);
  for (int count = *rc::gen::inRange(0, 5); count > 0; --count) {
    random.exceptions.push_back(AnyException(day));
  }
  return random;
}

std::optional<LONG> AnyReminder(LONG least) {
  if (*rc::gen::arbitrary<bool>()) return std::nullopt;
  return *rc::gen::inRange<LONG>(least, 20'000);
}

}  // namespace

RandomAppointment AnyAppointment() {
  RandomAppointment random;
  random.times = AnyTimes(AnyDay());
  random.subject = AnyText();
  random.location = AnyText();
  random.categories = AnyCategories();
  random.body = AnyBody();
  random.busy = *rc::gen::inRange<LONG>(0, 4);
  random.sensitivity = *rc::gen::element(olNormal, olPrivate);
  random.reminder = AnyReminder(0);
  if (*rc::gen::arbitrary<bool>()) random.series = AnyPattern(random.times.start.day);
  return random;
}

RandomTask AnyTask() {
  RandomTask random;
  random.subject = AnyText();
  random.categories = AnyCategories();
  random.body = AnyBody();
  if (*rc::gen::arbitrary<bool>()) random.start = AnyDay();
  if (*rc::gen::inRange(0, 3) > 0) random.due = AnyDay() + 20;
  random.reminder = AnyReminder(-4'000);
  random.sensitivity = *rc::gen::element(olNormal, olPrivate);
  random.importance = *rc::gen::inRange<LONG>(0, 3);
  random.complete = *rc::gen::arbitrary<bool>();
  if (*rc::gen::inRange(0, 3) == 0) random.series = AnyPattern(0);
  return random;
}

}  // namespace corvane::testing
