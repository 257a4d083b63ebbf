#include "desktop/commands/language_tags.h"

#include <algorithm>
#include <iterator>

namespace desktop {
namespace {

struct Row {
  std::uint32_t id;
  std::string_view tag;
};

constexpr Row kRows[] = {
    {0x0401, "ar-SA"},      {0x0402, "bg-BG"}, {0x0403, "ca-ES"}, {0x0404, "zh-TW"},
    {0x0405, "cs-CZ"},      {0x0406, "da-DK"}, {0x0407, "de-DE"}, {0x0408, "el-GR"},
    {0x0409, "en-US"},      {0x040B, "fi-FI"}, {0x040C, "fr-FR"}, {0x040D, "he-IL"},
    {0x040E, "hu-HU"},      {0x040F, "is-IS"}, {0x0410, "it-IT"}, {0x0411, "ja-JP"},
    {0x0412, "ko-KR"},      {0x0413, "nl-NL"}, {0x0414, "nb-NO"}, {0x0415, "pl-PL"},
    {0x0416, "pt-BR"},      {0x0418, "ro-RO"}, {0x0419, "ru-RU"}, {0x041A, "hr-HR"},
    {0x041B, "sk-SK"},      {0x041C, "sq-AL"}, {0x041D, "sv-SE"}, {0x041E, "th-TH"},
    {0x041F, "tr-TR"},      {0x0420, "ur-PK"}, {0x0421, "id-ID"}, {0x0422, "uk-UA"},
    {0x0423, "be-BY"},      {0x0424, "sl-SI"}, {0x0425, "et-EE"}, {0x0426, "lv-LV"},
    {0x0427, "lt-LT"},      {0x0429, "fa-IR"}, {0x042A, "vi-VN"}, {0x042B, "hy-AM"},
    {0x042D, "eu-ES"},      {0x042F, "mk-MK"}, {0x0436, "af-ZA"}, {0x0437, "ka-GE"},
    {0x0439, "hi-IN"},      {0x043E, "ms-MY"}, {0x043F, "kk-KZ"}, {0x0441, "sw-KE"},
    {0x0445, "bn-IN"},      {0x0449, "ta-IN"}, {0x044A, "te-IN"}, {0x0450, "mn-MN"},
    {0x0456, "gl-ES"},      {0x0801, "ar-IQ"}, {0x0804, "zh-CN"}, {0x0807, "de-CH"},
    {0x0809, "en-GB"},      {0x080A, "es-MX"}, {0x080C, "fr-BE"}, {0x0810, "it-CH"},
    {0x0813, "nl-BE"},      {0x0814, "nn-NO"}, {0x0816, "pt-PT"}, {0x081A, "sr-Latn-CS"},
    {0x081D, "sv-FI"},      {0x0820, "ur-IN"}, {0x0C01, "ar-EG"}, {0x0C04, "zh-HK"},
    {0x0C07, "de-AT"},      {0x0C09, "en-AU"}, {0x0C0A, "es-ES"}, {0x0C0C, "fr-CA"},
    {0x0C1A, "sr-Cyrl-CS"}, {0x1004, "zh-SG"}, {0x1007, "de-LU"}, {0x1009, "en-CA"},
    {0x100C, "fr-CH"},      {0x1404, "zh-MO"}, {0x1407, "de-LI"}, {0x1409, "en-NZ"},
    {0x140A, "es-CR"},      {0x140C, "fr-LU"}, {0x1801, "ar-MA"}, {0x1809, "en-IE"},
    {0x1C09, "en-ZA"},      {0x200A, "es-VE"}, {0x240A, "es-CO"}, {0x241A, "sr-RS"},
    {0x280A, "es-PE"},      {0x2C0A, "es-AR"}, {0x300A, "es-EC"}, {0x340A, "es-CL"},
    {0x3801, "ar-AE"},      {0x380A, "es-UY"}, {0x400A, "es-BO"}};

}  // namespace

std::string_view LanguageTag(std::uint32_t id) {
  const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                       [id](const Row& each) { return each.id == id; });
  return row == std::end(kRows) ? std::string_view() : row->tag;
}

}  // namespace desktop
