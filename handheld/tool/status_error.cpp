#include "handheld/tool/status_error.h"

#include <fmt/core.h>

#include "platform/pocket_outlook.h"

namespace tool {
namespace {

struct Meaning {
  ce::HRESULT status;
  const char* text;
};
constexpr Meaning kMeanings[] = {
    {ce::E_INVALIDARG, "no such item"},
    {ce::kTextTooLong, "a text is too long"},
    {ce::E_NOTIMPL, "this handheld does not have it"},
    {ce::E_OUTOFMEMORY, "memory ran out"},
    {ce::E_ACCESSDENIED, "access is denied"},
    {static_cast<ce::HRESULT>(0x80070070), "the disk is full"},
    {static_cast<ce::HRESULT>(0x800700AA), "the store is busy"},
};

}  // namespace

std::string StatusText(ce::HRESULT status) {
  for (const Meaning& meaning : kMeanings)
    if (meaning.status == status) return meaning.text;
  return fmt::format("code 0x{:08X}", static_cast<ce::DWORD>(status));
}

StatusError::StatusError(std::string_view what, ce::HRESULT status)
    : std::runtime_error(fmt::format("{}: {}", what, StatusText(status))), status_(status) {}

}  // namespace tool
