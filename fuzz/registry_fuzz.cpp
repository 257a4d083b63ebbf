// Any bytes: a registry that can be read is written as a text that reads the same.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "handheld/registry/registry_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const ce::host::RegistryTree tree =
        ce::host::ParseRegistry({reinterpret_cast<const char*>(data), size});
    if (!(ce::host::ParseRegistry(ce::host::FormatRegistry(tree)) == tree)) std::abort();
  } catch (const ce::host::RegistryTextError& error) {
    if (error.line() == 0) std::abort();
  }
  return 0;
}
