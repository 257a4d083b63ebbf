#include "desktop/commands/commands_pair.h"

#include <fmt/format.h>

#include <utility>

#include "common/text/text.h"
#include "desktop/commands/result.h"
#include "desktop/config/pair.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

using calendar::Zone;

std::string KindWordsOf(const Pair& pair) {
  if (pair.kinds.empty()) return "all kinds";
  std::string words;
  for (const RecordKind kind : kPairKinds) {
    if (!pair.kinds.contains(kind)) continue;
    words += fmt::format("{}{}", words.empty() ? "" : " ", WordsOf(kind).argument);
  }
  return words;
}

Json AsJson(const Pair& pair) {
  Json object = {{"pair", pair.name},
                 {"address", ToString(pair.address)},
                 {"folder", pair.folder.string()},
                 {"zone", pair.zone}};
  if (!pair.country.empty()) object["country"] = pair.country;
  if (!pair.policy.empty()) object["conflict"] = pair.policy;
  object["kinds"] = Json::array();
  for (const RecordKind kind : kPairKinds) {
    if (pair.kinds.empty() || pair.kinds.contains(kind))
      object["kinds"].push_back(WordsOf(kind).argument);
  }
  return object;
}

std::string WordsOfPair(const Pair& pair) {
  std::string line = fmt::format("{}: {}, {}, {}", pair.name, ToString(pair.address),
                                 pair.folder.string(), pair.zone);
  if (!pair.country.empty()) line += ", " + pair.country;
  line += ", " + KindWordsOf(pair);
  if (!pair.policy.empty()) line += ", " + pair.policy;
  return text::OnOneLine(line);
}

void PrintPair(const Pair& pair, const Console& console) {
  if (console.json)
    PrintJson(AsJson(pair), console);
  else
    console.out << WordsOfPair(pair) << '\n';
}

int PrintPairs(const Console& console) {
  for (const Pair& pair : AllPairs()) PrintPair(pair, console);
  FlushOutput(console);
  return kDone;
}

int RefuseUsage(const Console& console, std::string_view why) {
  TellProblem(console, why);
  return kUsage;
}

// Nothing at the end of the input.
std::optional<Zone> AskForZone(const ConnectionOptions& connection, const Console& console) {
  const Zone host = Zone::OfHost();
  while (true) {
    console.err << fmt::format("The handheld's time zone [{}]: ", host.name()) << std::flush;
    const std::string answer = ReadAnswer(console, connection.interruptFd);
    if (!console.in) return std::nullopt;
    const std::string name(text::TrimBlanks(answer));
    if (name.empty()) return host;
    if (std::optional<Zone> zone = Zone::Find(name)) return zone;
    console.err << text::OnOneLine(name) << " is no time zone\n";
  }
}

bool ChangesNothing(const PairOptions& options) {
  return !options.address && !options.folder && !options.zone && !options.country &&
         !options.kinds && !options.policy;
}

void Apply(const PairOptions& options, Pair& pair) {
  if (options.address) pair.address = *options.address;
  if (options.folder) pair.folder = std::filesystem::absolute(*options.folder).lexically_normal();
  if (options.zone) pair.zone = options.zone->name();
  if (options.country) pair.country = *options.country;
  if (options.kinds) pair.kinds = *options.kinds;
  if (options.policy) pair.policy = *options.policy;
}

int SetNamedPair(const ConnectionOptions& connection, const PairOptions& options,
                 const Console& console) {
  if (!IsPairName(*options.name)) {
    return RefuseUsage(console, "a pair's name has letters, digits, \"-\" and \"_\" alone");
  }
  std::optional<Pair> known = FindPair(*options.name);
  if (known && ChangesNothing(options)) {
    PrintPair(*known, console);
    FlushOutput(console);
    return kDone;
  }
  Pair pair = known ? *std::move(known) : Pair();
  pair.name = *options.name;
  Apply(options, pair);
  if (pair.folder.empty()) return RefuseUsage(console, "a new pair needs --folder");
  if (pair.zone.empty()) {
    const std::optional<Zone> zone =
        console.inIsTerminal ? AskForZone(connection, console) : std::nullopt;
    if (!zone) return RefuseUsage(console, "a new pair needs --zone, the handheld's time zone");
    pair.zone = zone->name();
  }
  WritePair(pair);
  TellResult(console, AsJson(pair), WordsOfPair(pair));
  return kDone;
}

}  // namespace

int SetPair(const ConnectionOptions& connection, const PairOptions& options,
            const Console& console) {
  return RunGuarded(console, [&] {
    return options.name ? SetNamedPair(connection, options, console) : PrintPairs(console);
  });
}

Place ChoosePlace(const PlaceOptions& options, ConnectionOptions& connection) {
  std::optional<Pair> pair;
  if (options.pair) {
    pair = FindPair(*options.pair);
    if (!pair) throw Error("there is no pair " + *options.pair + ": \"pair\" lists them");
    if (!options.addressGiven) connection.target = pair->address;
  } else {
    pair = FindPairAt(connection.target);
  }
  std::optional<std::string> country = options.country;
  if (!country && pair && !pair->country.empty()) country = pair->country;
  if (options.zone) return {*options.zone, false, country};
  if (pair) return {*Zone::Find(pair->zone), false, country};
  return {Zone::OfHost(), true, country};
}

void TellGuessedZone(const Zone& zone, const Console& console) {
  console.err << fmt::format(
      "the handheld is taken to be in this computer's time zone, {}: --zone says otherwise\n",
      zone.name());
}

}  // namespace desktop
