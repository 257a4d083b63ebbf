#include "handheld/system/language.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "handheld/directory/handheld.h"
#include "platform/text.h"

namespace ce::host {
namespace {

constexpr LANGID kPrimaryMask = 0x03FF;

// The first entry of a language is the one that its bare tag stands for.
constexpr Language kLanguages[] = {
    {0x0436, "af-ZA", 1252}, {0x0401, "ar-SA", 1256}, {0x0C01, "ar-EG", 1256},
    {0x0423, "be-BY", 1251}, {0x0402, "bg-BG", 1251}, {0x0403, "ca-ES", 1252},
    {0x0405, "cs-CZ", 1250}, {0x0406, "da-DK", 1252}, {0x0407, "de-DE", 1252},
    {0x0C07, "de-AT", 1252}, {0x0807, "de-CH", 1252}, {0x0408, "el-GR", 1253},
    {0x0409, "en-US", 1252}, {0x0C09, "en-AU", 1252}, {0x1009, "en-CA", 1252},
    {0x0809, "en-GB", 1252}, {0x1809, "en-IE", 1252}, {0x1409, "en-NZ", 1252},
    {0x1C09, "en-ZA", 1252}, {0x0C0A, "es-ES", 1252}, {0x2C0A, "es-AR", 1252},
    {0x340A, "es-CL", 1252}, {0x240A, "es-CO", 1252}, {0x080A, "es-MX", 1252},
    {0x0425, "et-EE", 1257}, {0x042D, "eu-ES", 1252}, {0x0429, "fa-IR", 1256},
    {0x040B, "fi-FI", 1252}, {0x040C, "fr-FR", 1252}, {0x080C, "fr-BE", 1252},
    {0x0C0C, "fr-CA", 1252}, {0x100C, "fr-CH", 1252}, {0x0456, "gl-ES", 1252},
    {0x040D, "he-IL", 1255}, {0x0439, "hi-IN", 0},    {0x041A, "hr-HR", 1250},
    {0x040E, "hu-HU", 1250}, {0x0421, "id-ID", 1252}, {0x040F, "is-IS", 1252},
    {0x0410, "it-IT", 1252}, {0x0810, "it-CH", 1252}, {0x0411, "ja-JP", 932},
    {0x0412, "ko-KR", 949},  {0x0427, "lt-LT", 1257}, {0x0426, "lv-LV", 1257},
    {0x042F, "mk-MK", 1251}, {0x043E, "ms-MY", 1252}, {0x0414, "nb-NO", 1252},
    {0x0413, "nl-NL", 1252}, {0x0813, "nl-BE", 1252}, {0x0814, "nn-NO", 1252},
    {0x0415, "pl-PL", 1250}, {0x0416, "pt-BR", 1252}, {0x0816, "pt-PT", 1252},
    {0x0418, "ro-RO", 1250}, {0x0419, "ru-RU", 1251}, {0x041B, "sk-SK", 1250},
    {0x0424, "sl-SI", 1250}, {0x041C, "sq-AL", 1250}, {0x241A, "sr-RS", 1250},
    {0x041D, "sv-SE", 1252}, {0x081D, "sv-FI", 1252}, {0x041E, "th-TH", 874},
    {0x041F, "tr-TR", 1254}, {0x0422, "uk-UA", 1251}, {0x042A, "vi-VN", 1258},
    {0x0804, "zh-CN", 936},  {0x0C04, "zh-HK", 950},  {0x1004, "zh-SG", 936},
    {0x0404, "zh-TW", 950}};

std::string LowerTag(std::string_view tag) {
  std::string lower(tag);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c == '_') c = '-';
  }
  // "no" is what locales say for the form of Norwegian that most people write.
  if (lower == "no" || lower.starts_with("no-")) lower.replace(0, 2, "nb");
  return lower;
}

}  // namespace

std::span<const Language> Languages() {
  return kLanguages;
}

const Language* FindLanguage(LANGID id) {
  const auto found = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                  [id](const Language& language) { return language.id == id; });
  return found == std::end(kLanguages) ? nullptr : found;
}

const Language* FindLanguage(std::string_view tag) {
  const std::string wanted = LowerTag(tag);
  const std::string_view primary = std::string_view(wanted).substr(0, wanted.find('-'));
  const Language* first = nullptr;
  for (const Language& language : kLanguages) {
    const std::string known = LowerTag(language.tag);
    if (known == wanted) return &language;
    const bool sameLanguage = std::string_view(known).substr(0, known.find('-')) == primary;
    if (!first && sameLanguage) first = &language;
  }
  return first;
}

UINT CodePageOf(LANGID id) {
  if (const Language* language = FindLanguage(id)) return language->codePage;
  for (const Language& language : kLanguages) {
    if ((language.id & kPrimaryMask) == (id & kPrimaryMask)) return language.codePage;
  }
  return 1252;
}

UINT SystemCodePage() {
  const Handheld* handheld = Handheld::Current();
  if (!handheld) return 1252;
  const UINT codePage = CodePageOf(handheld->Language());
  return codePage == 0 ? CP_UTF8 : codePage;
}

LANGID HostLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (!value || !*value) continue;
    const std::string_view locale = value;
    const Language* language = FindLanguage(locale.substr(0, locale.find_first_of(".@")));
    return language ? language->id : kLangEnglishUs;
  }
  return kLangEnglishUs;
}

}  // namespace ce::host
