#include "handheld/clock/zone.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "handheld/clock/handheld_clock.h"
#include "tests/support/zone_database.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using namespace ce;
using host::ReadZone;
using host::ZoneFromPosixRule;
using testing::Environment;
using testing::ZoneFile;

// "M10.5.0 03:00:00.000": the device's form, spelt like a POSIX rule.
std::string Describe(const SYSTEMTIME& rule) {
  if (rule.wMonth == 0) return "never";
  char text[64];
  std::snprintf(text, sizeof text, "M%u.%u.%u %02u:%02u:%02u.%03u", rule.wMonth, rule.wDay,
                rule.wDayOfWeek, rule.wHour, rule.wMinute, rule.wSecond, rule.wMilliseconds);
  return text;
}

struct ZoneCase {
  const char* name;
  const char* rule;
  LONG bias;
  LONG daylightBias;
  const char* daylight;
  const char* standard;
  std::u16string standardName;
  std::u16string daylightName;
};

std::ostream& operator<<(std::ostream& out, const ZoneCase& zone) {
  return out << zone.rule;
}

class ZoneForm : public ::testing::TestWithParam<ZoneCase> {};

TEST_P(ZoneForm, IsTheDevices) {
  const ZoneCase& expected = GetParam();
  const auto zone = ZoneFromPosixRule(expected.rule);
  ASSERT_TRUE(zone);
  EXPECT_EQ(zone->Bias, expected.bias);
  EXPECT_EQ(zone->StandardBias, 0);
  EXPECT_EQ(zone->DaylightBias, expected.daylightBias);
  EXPECT_EQ(Describe(zone->DaylightDate), expected.daylight);
  EXPECT_EQ(Describe(zone->StandardDate), expected.standard);
  EXPECT_EQ(zone->StandardName, expected.standardName);
  EXPECT_EQ(zone->DaylightName, expected.daylightName);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ZoneForm,
    ::testing::Values(ZoneCase{"Berlin", "CET-1CEST,M3.5.0,M10.5.0/3", -60, -60,
                               "M3.5.0 02:00:00.000", "M10.5.0 03:00:00.000", u"CET", u"CEST"},
                      ZoneCase{"NewYork", "EST5EDT,M3.2.0,M11.1.0", 300, -60, "M3.2.0 02:00:00.000",
                               "M11.1.0 02:00:00.000", u"EST", u"EDT"},
                      ZoneCase{"Sydney", "AEST-10AEDT,M10.1.0,M4.1.0/3", -600, -60,
                               "M10.1.0 02:00:00.000", "M4.1.0 03:00:00.000", u"AEST", u"AEDT"},
                      ZoneCase{"Tokyo", "JST-9", -540, 0, "never", "never", u"JST", u"JST"},
                      ZoneCase{"Kolkata", "IST-5:30", -330, 0, "never", "never", u"IST", u"IST"},
                      ZoneCase{"Utc", "UTC0", 0, 0, "never", "never", u"UTC", u"UTC"},
                      ZoneCase{"SaoPaulo", "<-03>3", 180, 0, "never", "never", u"-03", u"-03"},
                      ZoneCase{"Casablanca", "<+01>-1", -60, 0, "never", "never", u"+01", u"+01"},
                      // The winter time is the rule's "daylight".
                      ZoneCase{"Dublin", "IST-1GMT0,M10.5.0,M3.5.0/1", 0, -60,
                               "M3.5.0 01:00:00.000", "M10.5.0 02:00:00.000", u"GMT", u"IST"},
                      ZoneCase{"LordHowe", "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30,
                               "M10.1.0 02:00:00.000", "M4.1.0 02:00:00.000", u"+1030", u"+11"},
                      ZoneCase{"Chatham", "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45", -765, -60,
                               "M9.5.0 02:45:00.000", "M4.1.0 03:45:00.000", u"+1245", u"+1345"},
                      // 02:00 of the Friday behind the fourth Thursday.
                      ZoneCase{"Jerusalem", "IST-2IDT,M3.4.4/26,M10.5.0", -120, -60,
                               "M3.4.5 02:00:00.000", "M10.5.0 02:00:00.000", u"IST", u"IDT"},
                      // 23:00 of the Saturday before the last Sunday.
                      ZoneCase{"Nuuk", "<-02>2<-01>,M3.5.0/-1,M10.5.0/0", 120, -60,
                               "M3.5.6 23:00:00.000", "M10.5.0 00:00:00.000", u"-02", u"-01"},
                      ZoneCase{"Gaza", "EET-2EEST,M3.4.4/50,M10.4.4/50", -120, -60,
                               "M3.5.6 02:00:00.000", "M10.5.6 02:00:00.000", u"EET", u"EEST"},
                      // The midnight behind a Saturday or Thursday is the day's last moment.
                      ZoneCase{"Santiago", "<-04>4<-03>,M9.1.6/24,M4.1.6/24", 240, -60,
                               "M9.1.6 23:59:59.999", "M4.1.6 23:59:59.999", u"-04", u"-03"},
                      ZoneCase{"Cairo", "EET-2EEST,M4.5.5/0,M10.5.4/24", -120, -60,
                               "M4.5.5 00:00:00.000", "M10.5.4 23:59:59.999", u"EET", u"EEST"},
                      ZoneCase{"DaysOfTheYear", "AAA3BBB,J60/2,J300", 180, -60,
                               "M3.1.0 02:00:00.000", "M10.5.0 02:00:00.000", u"AAA", u"BBB"},
                      ZoneCase{"AlwaysDaylight", "XXX3EDT4,0/0,J365/23", 240, 0, "never", "never",
                               u"EDT", u"EDT"},
                      ZoneCase{"NamesOnly", "AAA1BBB", 60, 0, "never", "never", u"AAA", u"AAA"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ZoneFromPosixRule, RefusesWhatIsNoRule) {
  for (const char* rule : {"",
                           "CET",
                           "-1",
                           "CE-1",
                           "CET-25",
                           "CET-1:60",
                           "CET-1CEST,",
                           "CET-1CEST,M3.5.0",
                           "CET-1CEST,M3.5.0,",
                           "CET-1CEST,M13.5.0,M10.5.0",
                           "CET-1CEST,M3.6.0,M10.5.0",
                           "CET-1CEST,M3.0.0,M10.5.0",
                           "CET-1CEST,M3.5.7,M10.5.0",
                           "CET-1CEST,J0,J300",
                           "CET-1CEST,J366,J300",
                           "CET-1CEST,366,300",
                           "CET-1CEST,M3.5.0/168,M10.5.0",
                           "CET-1CEST,M3.5.0,M10.5.0/3x",
                           "<+01-1",
                           "<+01>-1<",
                           "CET-1 CEST",
                           "CET-1CEST;M3.5.0"}) {
    EXPECT_FALSE(ZoneFromPosixRule(rule)) << rule;
  }
}

TEST(ZoneFromPosixRule, CutsALongName) {
  const auto zone = ZoneFromPosixRule(std::string(40, 'A') + "0");
  ASSERT_TRUE(zone);
  EXPECT_EQ(std::u16string(zone->StandardName), std::u16string(31, u'A'));
}

LONGLONG TicksFromUnix(std::time_t seconds) {
  return (LONGLONG{seconds} + 11'644'473'600) * host::kTicksPerSecond;
}

// The zones whose rule the device's form can express agree with the C library all year round.
class LocalTime : public ::testing::TestWithParam<const char*> {};

TEST_P(LocalTime, AgreesWithTheCLibrary) {
  const auto zone = ReadZone(GetParam());
  ASSERT_TRUE(zone) << GetParam();
  const Environment setting("TZ", GetParam());
  ::tzset();
  constexpr std::time_t kNewYear2030 = 1'893'456'000;
  constexpr int kHalfHours = 2 * 24 * 365 * 3;
  for (int i = 0; i < kHalfHours; ++i) {
    const std::time_t utc = kNewYear2030 + i * 1800;
    std::tm local{};
    ASSERT_NE(::localtime_r(&utc, &local), nullptr);
    const SYSTEMTIME ours =
        host::SystemTimeFromTicks(host::LocalFromUtc(*zone, TicksFromUnix(utc)));
    ASSERT_EQ(ours.wMonth, local.tm_mon + 1) << utc;
    ASSERT_EQ(ours.wDay, local.tm_mday) << utc;
    ASSERT_EQ(ours.wHour, local.tm_hour) << utc;
    ASSERT_EQ(ours.wMinute, local.tm_min) << utc;
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, LocalTime,
                         ::testing::Values("Europe/Berlin", "America/New_York", "Australia/Sydney",
                                           "Asia/Tokyo", "Asia/Kolkata", "UTC", "Europe/Dublin",
                                           "America/Sao_Paulo", "America/Santiago", "Africa/Cairo",
                                           "Pacific/Chatham", "Australia/Lord_Howe",
                                           "Antarctica/Troll"));

// The form cannot say "the day after the fourth Thursday": in one year of seven it is a week off,
// and in no year by more.
TEST(ZoneFromPosixRule, IsAWeekOffInFewYears) {
  const auto zone = ZoneFromPosixRule("IST-2IDT,M3.4.4/26,M10.5.0");
  ASSERT_TRUE(zone);
  const Environment setting("TZ", "IST-2IDT,M3.4.4/26,M10.5.0");
  ::tzset();
  int yearsOff = 0;
  for (int year = 2030; year < 2058; ++year) {
    const auto isDaylight = [&](int day, int hour) {
      std::tm utc{};
      utc.tm_year = year - 1900;
      utc.tm_mon = 2;
      utc.tm_mday = day;
      utc.tm_hour = hour;
      const std::time_t time = ::timegm(&utc);
      std::tm local{};
      EXPECT_NE(::localtime_r(&time, &local), nullptr);
      return std::pair(host::IsDaylightAt(*zone, TicksFromUnix(time)), local.tm_isdst > 0);
    };
    int daysOff = 0;
    for (int day = 1; day <= 31; ++day) {
      const auto [ours, theirs] = isDaylight(day, 12);
      if (ours != theirs) ++daysOff;
    }
    EXPECT_TRUE(daysOff == 0 || daysOff == 7) << year;
    if (daysOff != 0) ++yearsOff;
  }
  EXPECT_EQ(yearsOff, 4) << "of 28";
}

TEST(ReadZone, KnowsZonesOfEveryKind) {
  for (const char* name : {"Europe/Berlin", "Asia/Jerusalem", "America/Nuuk", "America/Godthab",
                           "Africa/Casablanca", "Etc/GMT+5", "America/Argentina/Buenos_Aires"}) {
    EXPECT_TRUE(ReadZone(name)) << name;
  }
}

TEST(ReadZone, RefusesNamesThatLeadElsewhere) {
  for (const char* name :
       {"", "/usr/share/zoneinfo/UTC", "../zoneinfo/UTC", "Europe/../UTC", "Europe//Berlin",
        "Europe/", "Europe/Berlin\n", "Europe/Ber lin", "zone.tab", "Europe"}) {
    EXPECT_FALSE(ReadZone(name)) << name;
  }
  EXPECT_FALSE(ReadZone(std::string_view("UTC\0x", 5)));
}

// A database of our own, of files that are whole or damaged.
class ZoneDatabase : public ::testing::Test {
 protected:
  testing::OwnZoneDatabase database_;
  const testing::TemporaryDirectory& directory_ = database_.directory;
};

TEST_F(ZoneDatabase, IsWhereTzdirSays) {
  directory_.Write("Home", ZoneFile("CET-1CEST,M3.5.0,M10.5.0/3"));
  EXPECT_EQ(ReadZone("Home")->Bias, -60);
  EXPECT_FALSE(ReadZone("Europe/Berlin"));
}

TEST_F(ZoneDatabase, KnowsUtcWithoutAFile) {
  ASSERT_TRUE(ReadZone("UTC"));
  EXPECT_EQ(ReadZone("UTC")->Bias, 0);
}

TEST_F(ZoneDatabase, RefusesDamagedFiles) {
  const std::string whole = ZoneFile("CET-1");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    directory_.Write("Zone", whole.substr(0, length));
    EXPECT_FALSE(ReadZone("Zone")) << length;
  }
  directory_.Write("Zone", ZoneFile("CET-1", '\0'));
  EXPECT_FALSE(ReadZone("Zone")) << "the first version has no rule";
  directory_.Write("Zone", ZoneFile(""));
  EXPECT_FALSE(ReadZone("Zone"));
  std::string huge = whole;
  huge.replace(32, 4, "\xFF\xFF\xFF\xFF");
  directory_.Write("Zone", huge);
  EXPECT_FALSE(ReadZone("Zone"));
  fs::remove(directory_ / "Zone");
  fs::create_directory(directory_ / "Zone");
  EXPECT_FALSE(ReadZone("Zone"));
}

}  // namespace
}  // namespace corvane
