// "pull messages" and "pull calls": what the telephone of the handheld has kept.
#pragma once

#include <filesystem>
#include <optional>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"
#include "desktop/wire/phone_records.h"

namespace desktop {

enum class PhoneFormat { kJson, kXml, kSmsBackup };

struct PullPhoneOptions {
  PhoneKind kind = PhoneKind::kMessages;
  PhoneFormat format = PhoneFormat::kJson;
  std::optional<std::filesystem::path> output;  // nothing for the standard output
};

// kPartlyDone when the download broke off after some complete documents: what they held is then in
// the file of the output's name with ".partial" added, or went to the standard output, which gets
// the records as they come (a backup file at the end). An interrupted one leaves no file.
// What the handheld leaves out of a message goes to the error output, and so does why it has none.
int PullPhone(const ConnectionOptions& connection, const PullPhoneOptions& options,
              const Console& console);

}  // namespace desktop
