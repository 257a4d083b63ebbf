#include <gtest/gtest.h>

#include <string>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "platform/text.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

constexpr SYSTEMTIME kTime{2008, 2, 5, 5, 7, 4, 9, 250};

std::u16string Date(const SYSTEMTIME& date, const WCHAR* picture) {
  WCHAR out[64];
  const INT count = GetDateFormatW(0x0409, 0, &date, picture, out, 64);
  return count == 0 ? u"failed" : std::u16string(out, static_cast<std::size_t>(count - 1));
}
std::u16string Time(const SYSTEMTIME& time, const WCHAR* picture) {
  WCHAR out[64];
  const INT count = GetTimeFormatW(0x0409, 0, &time, picture, out, 64);
  return count == 0 ? u"failed" : std::u16string(out, static_cast<std::size_t>(count - 1));
}

TEST(GetDateFormatCall, WritesThePicture) {
  EXPECT_EQ(Date(kTime, u"yyyyMMdd'T000000'"), u"20080205T000000");
  EXPECT_EQ(Date(kTime, u"yyyyMMdd'T'"), u"20080205T");
  EXPECT_EQ(Date(kTime, u"dd.MM.yyyy"), u"05.02.2008");
  EXPECT_EQ(Date(kTime, u"d/M/yy"), u"5/2/08");
  EXPECT_EQ(Date(kTime, u""), u"");
}

TEST(GetDateFormatCall, LeavesTheTimesLettersAlone) {
  EXPECT_EQ(Date(kTime, u"HHmmss"), u"HHmmss");
}

TEST(GetDateFormatCall, ReadsApostrophes) {
  EXPECT_EQ(Date(kTime, u"'dd'dd"), u"dd05");
  EXPECT_EQ(Date(kTime, u"'o''clock'"), u"o'clock");
  EXPECT_EQ(Date(kTime, u"'open dd"), u"open dd");
}

TEST(PictureCalls, TakeARunOfALetterForOneField) {
  EXPECT_EQ(Date(kTime, u"yyy"), u"2008");
  EXPECT_EQ(Date(kTime, u"yyyyyyyyyMMd"), u"2008025");
  EXPECT_EQ(Time(kTime, u"HHH:mmmm:sss"), u"07:04:09");
}

TEST(GetDateFormatCall, WritesEveryDateThatADateValueCanHold) {
  EXPECT_EQ(Date({1899, 12, 0, 30, 0, 0, 0, 0}, u"yyyyMMdd"), u"18991230");
  EXPECT_EQ(Date({100, 1, 0, 1, 0, 0, 0, 0}, u"yyyyMMdd"), u"01000101");
  EXPECT_EQ(Date({9999, 12, 0, 31, 0, 0, 0, 0}, u"yyyyMMdd"), u"99991231");
  EXPECT_EQ(Date({4501, 1, 0, 1, 0, 0, 0, 0}, u"yyyyMMdd"), u"45010101");
}

TEST(GetDateFormatCall, RefusesAnImpossibleDate) {
  for (const SYSTEMTIME& date :
       {SYSTEMTIME{2007, 2, 0, 29, 0, 0, 0, 0}, SYSTEMTIME{2008, 0, 0, 1, 0, 0, 0, 0},
        SYSTEMTIME{2008, 13, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{2008, 1, 0, 0, 0, 0, 0, 0},
        SYSTEMTIME{99, 1, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{0, 0, 0, 0, 0, 0, 0, 0}}) {
    SetLastError(0);
    EXPECT_EQ(Date(date, u"yyyyMMdd"), u"failed");
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

TEST(GetDateFormatCall, CountsWithTheTerminatorAndRefusesAShortBuffer) {
  WCHAR out[9] = {};
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, u"yyyyMMdd", nullptr, 0), 9);
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, u"yyyyMMdd", out, 9), 9);
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, u"yyyyMMdd", out, 8), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, nullptr, out, 9), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, u"yyyy", nullptr, 9), 0);
  EXPECT_EQ(GetDateFormatW(0, 0, &kTime, u"yyyy", out, -1), 0);
}

TEST(GetTimeFormatCall, WritesThePicture) {
  EXPECT_EQ(Time(kTime, u"HHmmss"), u"070409");
  EXPECT_EQ(Time(kTime, u"H:m:s 'o''clock'"), u"7:4:9 o'clock");
  EXPECT_EQ(Time({0, 0, 0, 0, 23, 59, 59, 999}, u"HHmmss"), u"235959")
      << "the date is not looked at";
}

TEST(GetTimeFormatCall, RefusesAnImpossibleTime) {
  for (const SYSTEMTIME& time :
       {SYSTEMTIME{2008, 1, 0, 1, 24, 0, 0, 0}, SYSTEMTIME{2008, 1, 0, 1, 0, 60, 0, 0},
        SYSTEMTIME{2008, 1, 0, 1, 0, 0, 60, 0}}) {
    SetLastError(0);
    EXPECT_EQ(Time(time, u"HHmmss"), u"failed");
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

TEST(PictureCalls, HandOnTheirFaults) {
  {
    const auto plan = host::FaultPlan::FailCalls("GetDateFormatW", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Date(kTime, u"yyyy"), u"failed");
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  }
  const auto plan = host::FaultPlan::FailCalls("GetTimeFormatW", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(Time(kTime, u"HH"), u"failed");
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

class PictureOfNow : public testing::HandheldTest {};

TEST_F(PictureOfNow, IsTheLocalTime) {
  handheld_.SetZone("Asia/Tokyo");
  handheld_.FreezeClock({2008, 2, 0, 5, 20, 30, 0, 0});
  WCHAR out[16];
  EXPECT_EQ(GetDateFormatW(0, 0, nullptr, u"yyyyMMdd", out, 16), 9);
  EXPECT_EQ(std::u16string(out), u"20080206");
  EXPECT_EQ(GetTimeFormatW(0, 0, nullptr, u"HHmm", out, 16), 5);
  EXPECT_EQ(std::u16string(out), u"0530");
}

}  // namespace
}  // namespace corvane
