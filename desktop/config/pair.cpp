#include "desktop/config/pair.h"

#include <fmt/format.h>

#include <toml++/toml.h>
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "common/calendar/zone.h"
#include "common/files/atomic_file.h"
#include "common/phone/phone_numbers.h"
#include "common/text/text.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTable = "pair";

// The pairs of a text; `path` is for messages.
class PairReader {
 public:
  explicit PairReader(const fs::path& path) : path_(path) {}

  std::vector<Pair> Read(std::string_view text) const {
    toml::table document;
    try {
      document = toml::parse(text);
    } catch (const toml::parse_error& problem) {
      Refuse(problem.source(), std::string(problem.description()));
    }
    std::vector<Pair> pairs;
    const toml::node* const node = document.get(kTable);
    if (node == nullptr) return pairs;
    for (const auto& [name, pair] : TableOf(*node, std::string(kTable))) {
      pairs.push_back(ReadPair(std::string(name.str()), pair));
    }
    std::ranges::sort(pairs, {}, &Pair::name);
    return pairs;
  }

 private:
  [[noreturn]] void Refuse(const toml::source_region& place, const std::string& why) const {
    throw Error(fmt::format("{}:{}: {}", path_.string(), place.begin.line, why));
  }

  const toml::table& TableOf(const toml::node& node, const std::string& what) const {
    if (!node.is_table()) Refuse(node.source(), what + " is no table");
    return *node.as_table();
  }

  std::string TextOf(const toml::node& node, std::string_view key) const {
    if (!node.is_string()) Refuse(node.source(), fmt::format("{} is no text", key));
    return node.as_string()->get();
  }

  Pair ReadPair(const std::string& name, const toml::node& node) const {
    if (!IsPairName(name)) Refuse(node.source(), fmt::format("\"{}\" is no name of a pair", name));
    Pair pair;
    pair.name = name;
    pair.address.host.clear();
    for (const auto& [key, value] : TableOf(node, "pair." + name)) {
      ReadKey(key.str(), value, pair);
    }
    const auto require = [&](bool has, const char* key) {
      if (!has) Refuse(node.source(), fmt::format("pair.{} has no {}", name, key));
    };
    require(!pair.address.host.empty(), "address");
    require(!pair.folder.empty(), "folder");
    require(!pair.zone.empty(), "zone");
    return pair;
  }

  void ReadKey(std::string_view key, const toml::node& value, Pair& pair) const {
    const auto check = [&](bool good, const char* what) {
      if (!good) Refuse(value.source(), fmt::format("{} is no {}", TextOf(value, key), what));
    };
    if (key == "kinds") {
      pair.kinds = KindsOf(value);
    } else if (key == "address") {
      const std::optional<Target> target = ParseTarget(TextOf(value, key));
      check(target.has_value(), "HOST[:PORT]");
      pair.address = *target;
    } else if (key == "folder") {
      pair.folder = TextOf(value, key);
      check(pair.folder.is_absolute(), "path from the root");
    } else if (key == "zone") {
      pair.zone = TextOf(value, key);
      check(calendar::Zone::Find(pair.zone).has_value(), "time zone");
    } else if (key == "country") {
      pair.country = TextOf(value, key);
      check(phone::PhoneNumbers::IsCountry(pair.country), "country of ISO 3166");
    } else if (key == "policy") {
      pair.policy = TextOf(value, key);
      check(std::ranges::find(kPairPolicies, pair.policy) != std::end(kPairPolicies),
            "policy: keep-both, desk, handheld or ask");
    } else {
      Refuse(value.source(), fmt::format("a pair has no {}", key));
    }
  }

  std::set<RecordKind> KindsOf(const toml::node& value) const {
    if (!value.is_array()) Refuse(value.source(), "kinds is no list");
    std::set<RecordKind> kinds;
    for (const toml::node& each : *value.as_array()) {
      const std::string word = TextOf(each, "kinds");
      const auto* const kind = std::ranges::find(
          kPairKinds, word, [](RecordKind known) { return WordsOf(known).argument; });
      if (kind == std::end(kPairKinds)) {
        Refuse(each.source(), word + " is none of contacts, calendar, tasks, messages, calls");
      }
      kinds.insert(*kind);
    }
    return kinds;
  }

  const fs::path& path_;
};

std::string TextFor(std::string_view key, std::string_view value) {
  std::string text = fmt::format("{} = \"", key);
  for (const char c : value) {
    if (c == '"' || c == '\\') text += '\\';
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      text += fmt::format("\\u{:04X}", static_cast<unsigned>(c));
    } else {
      text += c;
    }
  }
  return text + "\"\n";
}

std::string HeaderOf(const std::string& name) {
  return fmt::format("[{}.{}]", kTable, name);
}

std::string TableFor(const Pair& pair) {
  std::string text = HeaderOf(pair.name) + "\n";
  text += TextFor("address", ToString(pair.address));
  text += TextFor("folder", pair.folder.string());
  text += TextFor("zone", pair.zone);
  if (!pair.country.empty()) text += TextFor("country", pair.country);
  if (!pair.kinds.empty()) {
    std::string kinds;
    for (const RecordKind kind : kPairKinds) {
      if (!pair.kinds.contains(kind)) continue;
      kinds += fmt::format("{}\"{}\"", kinds.empty() ? "" : ", ", WordsOf(kind).argument);
    }
    text += fmt::format("kinds = [{}]\n", kinds);
  }
  if (!pair.policy.empty()) text += TextFor("policy", pair.policy);
  return text;
}

// The text with another table in the place of the pair's, or behind everything.
std::string WithTable(std::string_view text, const Pair& pair) {
  const std::string header = HeaderOf(pair.name);
  std::string before;
  std::string after;
  std::string left;  // blank lines and comments, which belong to what follows
  bool found = false;
  bool inside = false;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, std::min(text.size(), text.find('\n') + 1));
    const std::string_view whole = line.empty() ? text : line;
    text.remove_prefix(whole.size());
    const std::string_view words = text::TrimBlanks(whole.substr(0, whole.find_first_of("\r\n")));
    if (words.starts_with('[')) inside = words == header && !std::exchange(found, true);
    if (inside && (words.empty() || words.starts_with('#'))) {
      left += whole;
    } else if (inside) {
      left.clear();
    } else {
      (found ? after : before) += std::exchange(left, {});
      (found ? after : before) += whole;
    }
  }
  after += left;
  if (!before.empty() && !before.ends_with('\n')) before += '\n';
  if (!found && !before.empty()) before += '\n';
  return before + TableFor(pair) + after;
}

std::string TextOfConfig(const fs::path& path) {
  return fs::exists(path) ? files::ReadWholeFile(path) : std::string();
}

}  // namespace

bool IsPairName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
           c == '_';
  });
}

std::optional<fs::path> ConfigPath() {
  const char* const config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && config[0] == '/') return fs::path(config) / "corvane/config.toml";
  const char* const home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') return std::nullopt;
  return fs::path(home) / ".config/corvane/config.toml";
}

std::vector<Pair> AllPairs() {
  const std::optional<fs::path> path = ConfigPath();
  return path ? PairReader(*path).Read(TextOfConfig(*path)) : std::vector<Pair>();
}

std::optional<Pair> FindPair(std::string_view name) {
  for (Pair& pair : AllPairs()) {
    if (pair.name == name) return std::move(pair);
  }
  return std::nullopt;
}

std::optional<Pair> FindPairAt(const Target& address) {
  for (Pair& pair : AllPairs()) {
    if (pair.address == address) return std::move(pair);
  }
  return std::nullopt;
}

void WritePair(const Pair& pair) {
  const std::optional<fs::path> path = ConfigPath();
  if (!path) throw Error("neither XDG_CONFIG_HOME nor HOME says where to keep the pairs");
  const PairReader reader(*path);
  const std::string text = TextOfConfig(*path);
  std::vector<Pair> wanted = reader.Read(text);
  std::erase_if(wanted, [&](const Pair& each) { return each.name == pair.name; });
  wanted.push_back(pair);
  std::ranges::sort(wanted, {}, &Pair::name);
  const std::string changed = WithTable(text, pair);
  // Tables can be written in many ways, and values, too.
  bool good = false;
  try {
    good = reader.Read(changed) == wanted;
  } catch (const Error&) {
  }
  if (!good) {
    throw Error(fmt::format("{}: {} is not written as a table by itself, change it by hand",
                            path->string(), HeaderOf(pair.name)));
  }
  fs::create_directories(path->parent_path());
  files::AtomicFile file(*path);
  file.Write(changed);
  file.Commit();
}

}  // namespace desktop
