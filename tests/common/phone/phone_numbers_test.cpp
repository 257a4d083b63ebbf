#include "common/phone/phone_numbers.h"

#include <gtest/gtest.h>

#include <string>

namespace phone::testing {
namespace {

struct SameCase {
  const char* name;
  const char* country;
  const char* a;
  const char* b;
  bool same;
};

class PhoneNumbersSame : public ::testing::TestWithParam<SameCase> {};

TEST_P(PhoneNumbersSame, AsPeopleMeanThem) {
  const PhoneNumbers numbers(GetParam().country);
  EXPECT_EQ(numbers.Same(GetParam().a, GetParam().b), GetParam().same)
      << numbers.KeyOf(GetParam().a) << " and " << numbers.KeyOf(GetParam().b);
  EXPECT_EQ(numbers.Same(GetParam().b, GetParam().a), GetParam().same);
}

const SameCase kSameCases[] = {
    {"PlusAndTrunk", "DE", "+49 170 1234567", "0170 1234567", true},
    {"PlusAndDoubleZero", "DE", "+49 170 1234567", "0049170/1234567", true},
    {"DoubleZeroAndTrunk", "DE", "0049 (170) 12 34 567", "0170-1234567", true},
    {"SignsOnlyArrange", "DE", "(030) 12.34/56-78", "03012345678", true},
    {"NoBreakSpacesOnlyArrange", "DE",
     "030\xC2\xA0"
     "1234",
     "0301234", true},
    {"TrunkInParentheses", "DE", "+49 (0)170 1234567", "0170 1234567", true},
    {"TrunkLeftInByMistake", "DE", "+49 0170 1234567", "0170 1234567", true},
    {"OtherNumber", "DE", "0170 1234567", "0170 1234568", false},
    {"OtherCountry", "DE", "+43 170 1234567", "0170 1234567", false},
    {"OtherCountrysTrunk", "AT", "+43 660 1234567", "0660 1234567", true},
    {"LocalIsNoAreas", "DE", "1234567", "+49 1234567", false},
    {"LocalIsItself", "DE", "123 45 67", "1234567", true},
    {"CountryInSmallLetters", "de", "+49 170 1234567", "0170 1234567", true},

    {"NorthAmericanTenDigits", "US", "(415) 555-0100", "+1 415 555 0100", true},
    {"NorthAmericanTrunk", "US", "1-415-555-0100", "415.555.0100", true},
    {"NorthAmericanAbroad", "US", "011 49 170 1234567", "+49 170 1234567", true},
    {"NorthAmericanLocal", "US", "555-0100", "+1 555 0100", false},
    {"CanadaSharesTheCode", "CA", "604 555 0100", "+16045550100", true},

    {"ItalianZeroStays", "IT", "06 1234567", "+39 06 1234567", true},
    {"ItalianZeroIsNoTrunk", "IT", "06 1234567", "+39 6 1234567", false},
    {"SpainHasNoTrunk", "ES", "612 345 678", "+34 612345678", true},
    {"EmergencyIsNobodysNumber", "ES", "112", "+34 112", false},
    {"RussianTrunk", "RU", "8 (916) 123-45-67", "+7 916 1234567", true},
    {"RussianWithoutTrunk", "RU", "916 123-45-67", "+79161234567", true},
    {"RussianAreaThatBeginsAsTheTrunk", "RU", "812 123-45-67", "+7 812 123 45 67", true},
    {"RussianAbroad", "RU", "8~10 49 170 1234567", "+49 170 1234567", false},
    {"RussianAbroadInDigits", "RU", "810 49 170 1234567", "+49 170 1234567", true},
    {"BelarusianTrunk", "BY", "8 029 123-45-67", "+375 29 1234567", true},
    {"HungarianTrunk", "HU", "06 30 123 4567", "+36 30 123 4567", true},
    {"JapaneseAbroad", "JP", "010 49 170 1234567", "+49 170 1234567", true},
    {"AustralianAbroad", "AU", "0011 49 170 1234567", "+49 170 1234567", true},
    {"AustralianTrunk", "AU", "0412 345 678", "+61 412 345 678", true},
    {"IndianMobile", "IN", "98765 43210", "+91 98765 43210", true},
    {"IndianMobileWithTrunk", "IN", "098765 43210", "+91 98765 43210", true},
    {"ChineseMobile", "CN", "138 0013 8000", "+86 138 0013 8000", true},
    {"ChineseLandline", "CN", "010 6552 9988", "+86 10 6552 9988", true},
    {"BrazilianWithArea", "BR", "(11) 91234-5678", "+55 11 91234 5678", true},
    {"MexicanTrunk", "MX", "01 55 1234 5678", "+52 55 1234 5678", true},
    {"LithuanianOldTrunk", "LT", "8 612 34567", "+370 612 34567", true},
    {"LithuanianNewTrunk", "LT", "0 612 34567", "+370 612 34567", true},
    {"PolishOldTrunk", "PL", "0 22 123 45 67", "22 123 45 67", true},

    {"NoCountryPlus", "", "+49 170 1234567", "0049 170 1234567", true},
    {"NoCountryDigits", "", "0170 1234567", "0170/1234567", true},
    {"NoCountryGuessesNone", "", "0170 1234567", "+49 170 1234567", false},
    {"UnknownCountryGuessesNone", "ZZ", "0170 1234567", "+49 170 1234567", false},

    {"ExtensionInWords", "DE", "030 1234 ext. 55", "030 1234 x55", true},
    {"ExtensionDialledAfterwards", "DE", "030 1234,,55", "030 1234 ext=55", true},
    {"OtherExtension", "DE", "030 1234 ext. 55", "030 1234 ext. 56", false},
    {"WithoutItsExtension", "DE", "030 1234 ext. 55", "030 1234", false},

    {"Words", "US", "call me", "CALL  ME", true},
    {"WordsAreNoNumber", "US", "call 5", "5", false},
    {"ServiceCode", "DE", "*100#", "* 100 #", true},
    {"ServiceCodeIsNoNumber", "DE", "*100#", "100", false},
    {"EmptyIsNoNumber", "DE", "", "", false},
    {"SignsAreNoNumber", "DE", "--", "--", false},
};

INSTANTIATE_TEST_SUITE_P(Cases, PhoneNumbersSame, ::testing::ValuesIn(kSameCases),
                         [](const auto& info) { return info.param.name; });

TEST(PhoneNumbers, TakeTheCountryFromALocale) {
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("de_AT.UTF-8"), "AT");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("sr_RS@latin"), "RS");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("fr_FR"), "FR");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("C.UTF-8"), "");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("POSIX"), "");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("eo_XX"), "");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale("es_419"), "");
  EXPECT_EQ(PhoneNumbers::CountryOfLocale(""), "");
}

TEST(PhoneNumbers, KeysStayWhatTheyAreWhenReadAgain) {
  const PhoneNumbers numbers("DE");
  for (const SameCase& each : kSameCases) {
    const std::string key = numbers.KeyOf(each.a);
    EXPECT_EQ(numbers.KeyOf(key), key) << each.a;
  }
}

}  // namespace
}  // namespace phone::testing
