#include <iterator>
#include <vector>

#include "tests/wine/answers/answers.h"

namespace answers {
namespace {

using Draw = INT (*)(const SYSTEMTIME& time, const WCHAR* picture, WCHAR* out, INT characters);

INT DrawDate(const SYSTEMTIME& time, const WCHAR* picture, WCHAR* out, INT characters) {
  return GetDateFormatW(0, 0, &time, picture, out, characters);
}

INT DrawTime(const SYSTEMTIME& time, const WCHAR* picture, WCHAR* out, INT characters) {
  return GetTimeFormatW(0, 0, &time, picture, out, characters);
}

std::string Drawn(Draw draw, const SYSTEMTIME& time, const Wide& picture, INT characters) {
  std::vector<WCHAR> out(256, WCHAR{'~'});
  SetLastError(0);
  const INT written =
      draw(time, picture.c_str(), characters > 0 ? out.data() : nullptr, characters);
  if (written == 0) return "failed, " + Number(std::int64_t{GetLastError()});
  std::string answer = Number(std::int64_t{written});
  if (characters > 0) answer += " " + Printable(Wide(out.data()));
  return answer;
}

void AskPicture(const char* name, Draw draw, const SYSTEMTIME& time, std::string_view picture) {
  Say(std::string(name) + " picture: " + std::string(picture) + ", " + Time(time),
      Drawn(draw, time, FromUtf8(picture), 200));
}

void AskRoom(const char* name, Draw draw, const SYSTEMTIME& time, std::string_view picture) {
  for (const INT characters : {-1, 0, 1, 8, 9, 10, 16}) {
    Say(std::string(name) + " picture in room for " + Number(std::int64_t{characters}) + ": " +
            std::string(picture),
        Drawn(draw, time, FromUtf8(picture), characters));
  }
}

constexpr const char* kDatePictures[] = {"yyyyMMdd'T000000'",
                                         "yyyyMMdd'T'",
                                         "yyyyMMdd",
                                         "",
                                         "y",
                                         "yy",
                                         "yyy",
                                         "yyyy",
                                         "yyyyy",
                                         "yyyyyy",
                                         "yyyyyyyyy",
                                         "M",
                                         "MM",
                                         "d",
                                         "dd",
                                         "d/M/yy",
                                         "dd.MM.yyyy",
                                         "yyyy-MM-dd",
                                         "HHmmss",
                                         "YYYYDD",
                                         "dM",
                                         "Md",
                                         "'dd'dd",
                                         "'o''clock'",
                                         "''",
                                         "''''",
                                         "'''",
                                         "''dd",
                                         "dd''",
                                         "dd''MM",
                                         "'open dd",
                                         "'",
                                         "dd'",
                                         "'a''",
                                         "'' ''",
                                         "d'd'd",
                                         "'\"'dd\"",
                                         "\\d",
                                         "%d",
                                         "d\tM",
                                         " d ",
                                         "d\xC3\xA9",
                                         "yyyy\xE5\xB9\xB4"};
constexpr const char* kTimePictures[] = {"HHmmss",
                                         "",
                                         "H",
                                         "HH",
                                         "HHH",
                                         "HHHH",
                                         "HHHHH",
                                         "m",
                                         "mm",
                                         "mmm",
                                         "s",
                                         "ss",
                                         "sss",
                                         "H:m:s",
                                         "HH:mm:ss",
                                         "H:m:s 'o''clock'",
                                         "yyyyMMdd",
                                         "'HH'HH",
                                         "''",
                                         "''''",
                                         "'''",
                                         "''HH",
                                         "HH''mm",
                                         "'open HH",
                                         "'",
                                         "HH'",
                                         "S",
                                         "M",
                                         "Hm",
                                         "sH",
                                         "H.m,s",
                                         "\"H\"",
                                         "HH\xE6\x99\x82"};

void AskDatePictures() {
  for (const char* picture : kDatePictures) {
    for (const SYSTEMTIME& time :
         {MakeTime({2008, 2, 5, 7, 4, 9, 250}), MakeTime({2008, 12, 31, 23, 59, 59, 999}),
          MakeTime({1601, 1, 1}), MakeTime({9999, 12, 31}), MakeTime({2005, 10, 10})}) {
      AskPicture("date", DrawDate, time, picture);
    }
  }
  for (const std::int64_t year : {0, 1, 99, 100, 999, 1600, 1601, 1899, 1900, 2000, 2007, 2100,
                                  4501, 9999, 10000, 30827, 30828, 65535}) {
    for (const auto& [month, day] : {std::pair{1, 1},
                                     {2, 28},
                                     {2, 29},
                                     {2, 30},
                                     {4, 31},
                                     {12, 30},
                                     {12, 31},
                                     {12, 32},
                                     {0, 1},
                                     {13, 1},
                                     {1, 0}}) {
      AskPicture("date", DrawDate, MakeTime({year, month, day}), "yyyyMMdd'T000000'");
    }
  }
  // The time of day, which a picture of the date does not show.
  for (const SYSTEMTIME& time :
       {MakeTime({2008, 2, 5, 24}), MakeTime({2008, 2, 5, 0, 60}), MakeTime({2008, 2, 5, 0, 0, 60}),
        MakeTime({2008, 2, 5, 0, 0, 0, 1000}), MakeTime({2008, 2, 5, 65535})}) {
    AskPicture("date", DrawDate, time, "yyyyMMdd");
  }
  SYSTEMTIME weekday = MakeTime({2008, 2, 5});
  weekday.wDayOfWeek = 6;
  AskPicture("date", DrawDate, weekday, "yyyyMMdd");
  weekday.wDayOfWeek = 9;
  AskPicture("date", DrawDate, weekday, "yyyyMMdd");
  AskRoom("date", DrawDate, MakeTime({2008, 2, 5}), "yyyyMMdd");
  AskRoom("date", DrawDate, MakeTime({2008, 2, 30}), "yyyyMMdd");
}

void AskTimePictures() {
  for (const char* picture : kTimePictures) {
    for (const SYSTEMTIME& time : {MakeTime({2008, 2, 5, 7, 4, 9, 250}), MakeTime({2008, 2, 5}),
                                   MakeTime({2008, 2, 5, 23, 59, 59, 999})}) {
      AskPicture("time", DrawTime, time, picture);
    }
  }
  for (const SYSTEMTIME& time :
       {MakeTime({2008, 2, 5, 24}), MakeTime({2008, 2, 5, 0, 60}), MakeTime({2008, 2, 5, 0, 0, 60}),
        MakeTime({2008, 2, 5, 0, 0, 0, 1000}), MakeTime({2008, 2, 5, 65535}),
        MakeTime({0, 0, 0, 7, 4, 9}), MakeTime({2008, 13, 5, 7, 4, 9}),
        MakeTime({2008, 2, 30, 7, 4, 9}), MakeTime({1, 1, 1, 7, 4, 9})}) {
    AskPicture("time", DrawTime, time, "HHmmss");
  }
  AskRoom("time", DrawTime, MakeTime({2008, 2, 5, 7, 4, 9}), "HH:mm:ss");
  AskRoom("time", DrawTime, MakeTime({2008, 2, 5, 24, 4, 9}), "HH:mm:ss");
}

// No run of a letter is longer than what a picture of numbers has of it: behind that, names begin.
// Nor is there a single y, of which the machines think differently.
std::string AnyPicture(Chance& chance, std::span<const char* const> pieces) {
  std::string picture;
  for (auto left = chance.Between(1, 8); left > 0; --left) {
    const std::string_view piece =
        pieces[static_cast<std::size_t>(chance.Between(0, std::ssize(pieces) - 1))];
    if (picture.empty() || picture.back() != piece.front()) picture += piece;
  }
  return picture;
}

void AskAnyPictures() {
  constexpr const char* kDatePieces[] = {"yyyy", "yy", "MM",    "M",      "dd", "d", "/", "-",
                                         ".",    " ",  "'T'",   "'d''M'", "H",  "m", "s", ":",
                                         ",",    "Y",  "'at '", "0",      "D",  "x"};
  constexpr const char* kTimePieces[] = {"HH", "H", "mm", "m", "ss",     "s",   ":", "-", ".",
                                         " ",  "d", "M",  "y", "'H''m'", "'T'", "0", "x"};
  Chance chance(23);
  for (int i = 0; i < 1500; ++i) {
    const SYSTEMTIME time =
        MakeTime({chance.Between(1601, 9999), chance.Between(1, 12), chance.Between(1, 28),
                  chance.Between(0, 23), chance.Between(0, 59), chance.Between(0, 59)});
    AskPicture("date", DrawDate, time, AnyPicture(chance, kDatePieces));
    AskPicture("time", DrawTime, time, AnyPicture(chance, kTimePieces));
  }
}

}  // namespace

void AskPictures() {
  AskDatePictures();
  AskTimePictures();
  AskAnyPictures();
}

}  // namespace answers
