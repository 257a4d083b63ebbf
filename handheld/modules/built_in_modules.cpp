#include "handheld/base/built_in_module.h"
#include "handheld/base/settings.h"
#include "handheld/phone/phone_module.h"
#include "handheld/windows/windows.h"

namespace ce::host {
namespace {

constexpr BuiltInModule kModules[] = {
    {.name = u"RichInk.dll",
     .setting = setting::kRichInk,
     .attach = AddRichInkClass,
     .detach = RemoveRichInkClass},
    {.name = u"Phone.dll", .setting = setting::kPhone, .functions = kPhoneFunctions},
};

}  // namespace

std::span<const BuiltInModule> BuiltInModules() {
  return kModules;
}

}  // namespace ce::host
