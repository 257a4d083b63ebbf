#include "handheld/tool/handheld_facts.h"

#include <chrono>

#include "common/phone/phone_numbers.h"
#include "handheld/base/settings.h"
#include "handheld/system/language.h"
#include "platform/clock.h"
#include "platform/windows.h"

namespace tool {

formats::local_seconds LocalNow(const calendar::Zone& zone) {
  ce::SYSTEMTIME now{};
  ce::GetSystemTime(&now);
  const std::chrono::sys_days day{std::chrono::year(now.wYear) / now.wMonth / now.wDay};
  return zone.ToLocal(day + std::chrono::hours(now.wHour) + std::chrono::minutes(now.wMinute) +
                      std::chrono::seconds(now.wSecond));
}

std::string CountryOf(ce::host::Handheld& handheld) {
  const auto id = static_cast<ce::LANGID>(
      handheld.Number(ce::host::setting::kLanguage, ce::host::kLangEnglishUs));
  const ce::host::Language* const language = ce::host::FindLanguage(id);
  if (!language) return {};
  const std::string country(language->tag.substr(language->tag.rfind('-') + 1));
  return phone::PhoneNumbers::IsCountry(country) ? country : std::string();
}

}  // namespace tool
