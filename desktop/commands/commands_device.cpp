#include "desktop/commands/commands_device.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "desktop/commands/clock_text.h"
#include "desktop/commands/commands_time.h"
#include "desktop/commands/language_tags.h"
#include "desktop/wire/device_requests.h"

namespace desktop {
namespace {

using Json = nlohmann::ordered_json;

std::string RoomText(const Room& room) {
  return fmt::format("{} free of {} ({} of {} bytes)", SizeText(room.free), SizeText(room.total),
                     room.free, room.total);
}

Json ToJson(const Card& card) {
  return {{"card", card.number},
          {"directory", card.directory},
          {"total", card.room.total},
          {"free", card.room.free}};
}

Json ToJson(const std::vector<Card>& cards) {
  Json array = Json::array();
  for (const Card& card : cards) array.push_back(ToJson(card));
  return array;
}

int PrintJson(const Json& json, const Console& console) {
  console.out << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  FlushOutput(console);
  return kDone;
}

std::string CardText(const Card& card) {
  return fmt::format("{}: {}", card.directory, RoomText(card.room));
}

struct Info {
  AgentVersion version;
  std::uint32_t language = 0;
  std::string time;
  bool ink = false;
  std::vector<Card> cards;
};

Info AskInfo(const ConnectionOptions& connection) {
  Info info;
  info.version = AskVersion(connection);
  info.language = AskLanguage(connection);
  info.time = FormatTime(AskTime(connection));
  info.ink = AskHasInk(connection);
  info.cards = AskCards(connection);
  return info;
}

Json ToJson(const Info& info) {
  const std::string_view tag = LanguageTag(info.language);
  return {{"version",
           {{"major", info.version.majorNumber},
            {"minor", info.version.minorNumber},
            {"built", info.version.built}}},
          {"language", {{"tag", tag.empty() ? Json() : Json(tag)}, {"id", info.language}}},
          {"time", info.time},
          {"ink", info.ink},
          {"cards", ToJson(info.cards)}};
}

std::string InfoText(const Info& info) {
  const std::string_view tag = LanguageTag(info.language);
  std::string text = fmt::format("agent     {}.{}, built {}\n", info.version.majorNumber,
                                 info.version.minorNumber, info.version.built);
  text += fmt::format("language  {} (0x{:04X})\n", tag.empty() ? "unknown" : tag, info.language);
  text += fmt::format("time      {}\n", info.time);
  text += fmt::format("ink       {}\n", info.ink ? "yes" : "no");
  if (info.cards.empty()) text += "cards     none\n";
  for (const Card& card : info.cards) {
    text += fmt::format("card {:<4} {}\n", card.number, CardText(card));
  }
  return text;
}

}  // namespace

int PrintInfo(const ConnectionOptions& connection, bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const Info info = AskInfo(connection);
    if (json) return PrintJson(ToJson(info), console);
    console.out << InfoText(info);
    FlushOutput(console);
    return kDone;
  });
}

int PrintStorage(const ConnectionOptions& connection, const std::optional<std::string>& directory,
                 bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const Room room = directory ? AskRoomAt(connection, *directory) : AskTotalRoom(connection);
    if (json) return PrintJson({{"total", room.total}, {"free", room.free}}, console);
    // No card has no room at all.
    const bool none = !directory && room.total == 0;
    console.out << (none ? "no storage cards" : RoomText(room)) << '\n';
    FlushOutput(console);
    return kDone;
  });
}

int PrintCards(const ConnectionOptions& connection, bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const std::vector<Card> cards = AskCards(connection);
    if (json) return PrintJson(ToJson(cards), console);
    for (const Card& card : cards) {
      console.out << fmt::format("{}  {}\n", card.number, CardText(card));
    }
    if (cards.empty()) console.out << "no storage cards\n";
    FlushOutput(console);
    return kDone;
  });
}

std::string SizeText(std::uint64_t bytes) {
  if (bytes == 1) return "1 byte";
  if (bytes < 1024) return fmt::format("{} bytes", bytes);
  constexpr std::string_view kUnits[] = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  auto size = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  // From where on it would be written as 1024.0.
  while (size >= 1023.95 && unit + 1 < std::size(kUnits)) {
    size /= 1024;
    ++unit;
  }
  return fmt::format("{:.1f} {}", size, kUnits[unit]);
}

}  // namespace desktop
