#include "handheld/ink/ink_module.h"
#include "handheld/modules/module_table.h"
#include "handheld/phone/phone_module.h"

namespace ce::host {
namespace {

constexpr BuiltInModule kModules[] = {
    {.name = u"RichInk.dll",
     .setting = setting::kRichInk,
     .attach = AttachRichInk,
     .detach = DetachRichInk},
    {.name = u"Phone.dll", .setting = setting::kPhone, .functions = kPhoneFunctions},
};

}  // namespace

std::span<const BuiltInModule> BuiltInModules() {
  return kModules;
}

}  // namespace ce::host
