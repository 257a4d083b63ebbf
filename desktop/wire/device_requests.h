// What a handheld tells about itself: one request each. All throw Error when it does not answer, or
// the answer makes no sense.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/wire/connection.h"

namespace desktop {

inline constexpr std::string_view kGetVersion = "GetDLLVersion";
inline constexpr std::string_view kGetLanguage = "CVCeGetSystemDefaultLangID";
inline constexpr std::string_view kHasRichInk = "CVCeHasRichInk";
inline constexpr std::string_view kGetTotalSpace = "GetTotalSpace";
inline constexpr std::string_view kGetVolumeCount = "GetVolumeCount";
inline constexpr std::string_view kGetCardSpace = "GetCardSpace";
inline constexpr std::string_view kGetCardDirectory = "GetCardDirectory";
inline constexpr std::string_view kGetDiskSpace = "CVCeGetDiskFreeSpaceEx";

struct AgentVersion {
  std::uint32_t majorNumber = 0;
  std::uint32_t minorNumber = 0;
  std::string built;  // when, as the agent words it
};
AgentVersion AskVersion(const ConnectionOptions& connection);

std::uint32_t AskLanguage(const ConnectionOptions& connection);

// Whether notes can be converted.
bool AskHasInk(const ConnectionOptions& connection);

// In bytes.
struct Space {
  std::uint64_t total = 0;
  std::uint64_t free = 0;
};
// On all storage cards together.
Space AskTotalSpace(const ConnectionOptions& connection);
// On the volume of a directory of the handheld, UTF-8.
Space AskSpaceAt(const ConnectionOptions& connection, std::string_view directory);

struct Card {
  std::uint32_t number = 0;
  std::string directory;  // UTF-8
  Space space;            // zeros for a card that could not be asked
};
// Those that are taken out meanwhile are left out.
std::vector<Card> AskCards(const ConnectionOptions& connection);

// A path of the handheld as requests carry it, in UTF-16: "/" counts as "\". Throws Error for one
// that is empty, longer than a handheld's paths (259 characters), or not UTF-8.
std::string DevicePathBytes(std::string_view path);

}  // namespace desktop
