#include "desktop/commands/commands_device.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "common/text/text.h"
#include "desktop/commands/clock_text.h"
#include "desktop/commands/commands_time.h"
#include "desktop/commands/result.h"
#include "desktop/wire/device_requests.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

struct TagRow {
  std::uint32_t id;
  std::string_view tag;
};

constexpr TagRow kTags[] = {
    {0x0401, "ar-SA"},      {0x0402, "bg-BG"}, {0x0403, "ca-ES"}, {0x0404, "zh-TW"},
    {0x0405, "cs-CZ"},      {0x0406, "da-DK"}, {0x0407, "de-DE"}, {0x0408, "el-GR"},
    {0x0409, "en-US"},      {0x040B, "fi-FI"}, {0x040C, "fr-FR"}, {0x040D, "he-IL"},
    {0x040E, "hu-HU"},      {0x040F, "is-IS"}, {0x0410, "it-IT"}, {0x0411, "ja-JP"},
    {0x0412, "ko-KR"},      {0x0413, "nl-NL"}, {0x0414, "nb-NO"}, {0x0415, "pl-PL"},
    {0x0416, "pt-BR"},      {0x0418, "ro-RO"}, {0x0419, "ru-RU"}, {0x041A, "hr-HR"},
    {0x041B, "sk-SK"},      {0x041C, "sq-AL"}, {0x041D, "sv-SE"}, {0x041E, "th-TH"},
    {0x041F, "tr-TR"},      {0x0420, "ur-PK"}, {0x0421, "id-ID"}, {0x0422, "uk-UA"},
    {0x0423, "be-BY"},      {0x0424, "sl-SI"}, {0x0425, "et-EE"}, {0x0426, "lv-LV"},
    {0x0427, "lt-LT"},      {0x0429, "fa-IR"}, {0x042A, "vi-VN"}, {0x042B, "hy-AM"},
    {0x042D, "eu-ES"},      {0x042F, "mk-MK"}, {0x0436, "af-ZA"}, {0x0437, "ka-GE"},
    {0x0439, "hi-IN"},      {0x043E, "ms-MY"}, {0x043F, "kk-KZ"}, {0x0441, "sw-KE"},
    {0x0445, "bn-IN"},      {0x0449, "ta-IN"}, {0x044A, "te-IN"}, {0x0450, "mn-MN"},
    {0x0456, "gl-ES"},      {0x0801, "ar-IQ"}, {0x0804, "zh-CN"}, {0x0807, "de-CH"},
    {0x0809, "en-GB"},      {0x080A, "es-MX"}, {0x080C, "fr-BE"}, {0x0810, "it-CH"},
    {0x0813, "nl-BE"},      {0x0814, "nn-NO"}, {0x0816, "pt-PT"}, {0x081A, "sr-Latn-CS"},
    {0x081D, "sv-FI"},      {0x0820, "ur-IN"}, {0x0C01, "ar-EG"}, {0x0C04, "zh-HK"},
    {0x0C07, "de-AT"},      {0x0C09, "en-AU"}, {0x0C0A, "es-ES"}, {0x0C0C, "fr-CA"},
    {0x0C1A, "sr-Cyrl-CS"}, {0x1004, "zh-SG"}, {0x1007, "de-LU"}, {0x1009, "en-CA"},
    {0x100C, "fr-CH"},      {0x1404, "zh-MO"}, {0x1407, "de-LI"}, {0x1409, "en-NZ"},
    {0x140A, "es-CR"},      {0x140C, "fr-LU"}, {0x1801, "ar-MA"}, {0x1809, "en-IE"},
    {0x1C09, "en-ZA"},      {0x200A, "es-VE"}, {0x240A, "es-CO"}, {0x241A, "sr-RS"},
    {0x280A, "es-PE"},      {0x2C0A, "es-AR"}, {0x300A, "es-EC"}, {0x340A, "es-CL"},
    {0x3801, "ar-AE"},      {0x380A, "es-UY"}, {0x400A, "es-BO"}};

std::string SpaceText(const Space& space) {
  return fmt::format("{} free of {} ({} of {} bytes)", SizeText(space.free), SizeText(space.total),
                     space.free, space.total);
}

Json ToJson(const Card& card) {
  return {{"card", card.number},
          {"directory", card.directory},
          {"total", card.space.total},
          {"free", card.space.free}};
}

Json ToJson(const std::vector<Card>& cards) {
  Json array = Json::array();
  for (const Card& card : cards) array.push_back(ToJson(card));
  return array;
}

int GiveJson(const Json& json, const Console& console) {
  PrintJson(json, console);
  FlushOutput(console);
  return kDone;
}

std::string CardText(const Card& card) {
  return fmt::format("{}: {}", text::OnOneLine(card.directory), SpaceText(card.space));
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
  std::string lines = fmt::format("agent     {}.{}, built {}\n", info.version.majorNumber,
                                  info.version.minorNumber, text::OnOneLine(info.version.built));
  lines += fmt::format("language  {} (0x{:04X})\n", tag.empty() ? "unknown" : tag, info.language);
  lines += fmt::format("time      {}\n", info.time);
  lines += fmt::format("ink       {}\n", info.ink ? "yes" : "no");
  if (info.cards.empty()) lines += "cards     none\n";
  for (const Card& card : info.cards) {
    lines += fmt::format("card {:<4} {}\n", card.number, CardText(card));
  }
  return lines;
}

std::vector<std::string> FetchKeys(const ConnectionOptions& connection, RecordKind kind) {
  const Reply reply = Invoke(connection, kGetKeys, KindInput(kind));
  if (reply.status != 0) {
    throw Error(fmt::format("the handheld does not tell its keys: {}", StatusText(reply.status)));
  }
  // So it answers what it does not know.
  if (reply.output.empty()) {
    throw Error(fmt::format("the agent does not know the request {}", kGetKeys));
  }
  std::vector<std::string> keys;
  try {
    for (const Record& record : ParseRecords(reply.output)) keys.push_back(record.element.name);
  } catch (const Error& problem) {
    throw Error(fmt::format("the answer to {} makes no sense: {}", kGetKeys, problem.what()));
  }
  return keys;
}

}  // namespace

int PrintInfo(const ConnectionOptions& connection, bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const Info info = AskInfo(connection);
    if (json) return GiveJson(ToJson(info), console);
    console.out << InfoText(info);
    FlushOutput(console);
    return kDone;
  });
}

int PrintStorage(const ConnectionOptions& connection, const std::optional<std::string>& directory,
                 bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const Space space = directory ? AskSpaceAt(connection, *directory) : AskTotalSpace(connection);
    if (json) return GiveJson({{"total", space.total}, {"free", space.free}}, console);
    // No card has no room at all.
    const bool none = !directory && space.total == 0;
    console.out << (none ? "no storage cards" : SpaceText(space)) << '\n';
    FlushOutput(console);
    return kDone;
  });
}

int PrintCards(const ConnectionOptions& connection, bool json, const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const std::vector<Card> cards = AskCards(connection);
    if (json) return GiveJson(ToJson(cards), console);
    for (const Card& card : cards) {
      console.out << fmt::format("{}  {}\n", card.number, CardText(card));
    }
    if (cards.empty()) console.out << "no storage cards\n";
    FlushOutput(console);
    return kDone;
  });
}

int PrintKeys(const ConnectionOptions& connection, RecordKind kind, bool json,
              const Console& console) {
  return RunGuarded(console, [&]() -> int {
    const std::vector<std::string> keys = FetchKeys(connection, kind);
    if (json) return GiveJson(keys, console);
    for (const std::string& key : keys) console.out << text::OnOneLine(key) << '\n';
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

std::string_view LanguageTag(std::uint32_t id) {
  const auto* const row = std::find_if(std::begin(kTags), std::end(kTags),
                                       [id](const TagRow& each) { return each.id == id; });
  return row == std::end(kTags) ? std::string_view() : row->tag;
}

}  // namespace desktop
