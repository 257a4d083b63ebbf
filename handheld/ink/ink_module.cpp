#include "handheld/ink/ink_module.h"

#include <memory>

#include "handheld/ink/ink_control.h"
#include "handheld/windows/window_class.h"

namespace ce::host {
namespace {

constexpr char16_t kClassName[] = u"RichInk";

std::unique_ptr<Control> MakeInkControl() {
  return std::make_unique<InkControl>();
}

}  // namespace

void AttachRichInk() {
  auto added = std::make_shared<WindowClass>();
  added->make = MakeInkControl;
  // A program's own class of that name stays what it is.
  static_cast<void>(AddWindowClass(kClassName, std::move(added)));
}

void DetachRichInk() {
  const std::shared_ptr<WindowClass> present = FindWindowClass(kClassName);
  if (!present || present->make != MakeInkControl) return;
  static_cast<void>(RemoveWindowClass(kClassName, true));
}

}  // namespace ce::host
