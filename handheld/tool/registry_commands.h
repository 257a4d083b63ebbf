// Looks at and changes the handheld's registry.
#pragma once

#include <optional>
#include <string>

#include "handheld/directory/handheld.h"
#include "handheld/tool/report.h"

namespace tool {

// A value's text form is TYPE:DATA: "sz:text", "dword:10" (or "dword:0x0A"), "binary:0A0B0C".

// Without a name: the key's values and subkeys.
Outcome RegistryGet(ce::host::Handheld& handheld, const std::string& key,
                    const std::optional<std::string>& name, const Report& report);
// Without a name: makes the key.
Outcome RegistrySet(ce::host::Handheld& handheld, const std::string& key,
                    const std::optional<std::string>& name, const std::optional<std::string>& value,
                    const Report& report);
// Without a name: deletes the key and everything below it.
Outcome RegistryDelete(ce::host::Handheld& handheld, const std::string& key,
                       const std::optional<std::string>& name, const Report& report);

}  // namespace tool
