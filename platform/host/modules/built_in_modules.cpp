#include "platform/host/ink/ink_module.h"
#include "platform/host/modules/module_table.h"
#include "platform/host/phone/phone_module.h"

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
