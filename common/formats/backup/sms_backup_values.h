// The values of a backup's attributes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/items/message.h"
#include "common/formats/lines/notice_tally.h"

namespace formats {

// A whole decimal number.
std::optional<std::int64_t> BackupNumber(std::string_view text);
// Milliseconds since 1970; what is none is noticed.
std::optional<MessageTime> BackupTime(const BackupElement& element, NoticeTally& tally);
// "2008-02-15 13:45:01 UTC" and milliseconds since 1970; "0" and "null" for no time.
std::string ReadableDate(const std::optional<MessageTime>& time);
std::string MillisecondsText(const std::optional<MessageTime>& time);

// Of which a name or an address that is not known is an empty one.
std::string KnownName(std::string_view name);
std::string KnownAddress(std::string_view address);

// Several addresses in one value are separated by "~", their names by ", ".
std::vector<std::string> SplitAt(std::string_view text, std::string_view separator);

// Without what XML cannot carry, and with ill-formed bytes replaced.
std::string XmlCarries(std::string_view text);

}  // namespace formats
