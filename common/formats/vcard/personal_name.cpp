#include "common/formats/vcard/personal_name.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <unordered_set>
#include <utility>
#include <vector>

#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

constexpr std::string_view kTitles[] = {
    "Mr",  "Mrs",  "Ms",   "Miss", "Mx",   "Dr",  "Prof", "Sir", "Dame", "Lady", "Lord",
    "Rev", "Herr", "Frau", "Mme",  "Mlle", "Sra", "Srta", "Sig", "Dott", "Ing",  "Dipl.-Ing"};
constexpr std::string_view kSuffixes[] = {"Jr",  "Sr",  "Jun",  "Sen", "II",  "III",
                                          "IV",  "PhD", "Ph.D", "MD",  "M.D", "Esq",
                                          "MSc", "BSc", "MBA",  "OBE", "CPA"};
constexpr std::string_view kParticles[] = {"van", "von", "de",  "der", "den", "del", "della", "di",
                                           "da",  "do",  "dos", "du",  "la",  "le",  "ten",   "ter",
                                           "zu",  "zur", "af",  "av",  "al",  "bin", "ibn",   "el"};

bool IsOneOf(std::span<const std::string_view> words, std::string_view word) {
  if (word.ends_with(',')) word.remove_suffix(1);
  const std::string_view bare = word.ends_with('.') ? word.substr(0, word.size() - 1) : word;
  return std::any_of(words.begin(), words.end(), [&](std::string_view known) {
    return text::EqualsNoCase(known, word) || text::EqualsNoCase(known, bare);
  });
}

using Words = std::span<const std::string_view>;

std::vector<std::string_view> SplitWords(std::string_view text) {
  std::vector<std::string_view> words;
  constexpr std::string_view kBlanks = " \t\n\r";
  std::size_t start = text.find_first_not_of(kBlanks);
  while (start != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, start), text.size());
    words.push_back(text.substr(start, end - start));
    start = text.find_first_not_of(kBlanks, end);
  }
  return words;
}

// With single blanks, and without a comma at the end.
std::string Join(Words words) {
  std::string text;
  for (std::string_view word : words) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  if (text.ends_with(',')) text.pop_back();
  return text;
}

void TakeTitlesAndSuffixes(Words& words, PersonalName& name) {
  std::size_t titles = 0;
  while (titles + 1 < words.size() && IsOneOf(kTitles, words[titles])) ++titles;
  name.title = Join(words.first(titles));
  words = words.subspan(titles);
  std::size_t suffixes = 0;
  while (suffixes + 1 < words.size() && IsOneOf(kSuffixes, words[words.size() - 1 - suffixes])) {
    ++suffixes;
  }
  name.suffix = Join(words.last(suffixes));
  words = words.first(words.size() - suffixes);
}

void PlaceGivenNames(Words words, PersonalName& name) {
  if (words.empty()) return;
  name.first = Join(words.first(1));
  name.middle = Join(words.subspan(1));
}

void PlaceWords(Words words, PersonalName& name) {
  if (words.size() < 2) {
    PlaceGivenNames(words, name);
    return;
  }
  std::size_t last = words.size() - 1;
  while (last > 1 && IsOneOf(kParticles, words[last - 1])) --last;
  name.last = Join(words.subspan(last));
  PlaceGivenNames(words.first(last), name);
}

bool IsPartOfWord(char16_t unit) {
  if (unit < 0x80) {
    return (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'Z') ||
           (unit >= 'a' && unit <= 'z');
  }
  const bool punctuation =
      unit == 0xA0 || (unit >= 0x2000 && unit <= 0x206F) || (unit >= 0x3000 && unit <= 0x303F);
  return !punctuation;
}

std::vector<std::u16string> BareWords(std::string_view text) {
  std::vector<std::u16string> words;
  bool within = false;
  for (const char16_t unit : text::Fold(text::FromUtf8Lossy(text))) {
    const bool part = IsPartOfWord(unit);
    if (part && !within) words.emplace_back();
    if (part) words.back() += unit;
    within = part;
  }
  return words;
}

// Where no blanks are between words one may be several.
constexpr std::size_t kLongestJoinedWord = 24;

bool IsMadeOf(std::u16string_view word, const std::unordered_set<std::u16string>& known) {
  if (known.contains(std::u16string(word))) return true;
  while (!word.empty()) {
    std::size_t length = std::min(word.size(), kLongestJoinedWord);
    while (length > 0 && !known.contains(std::u16string(word.substr(0, length)))) --length;
    if (length == 0) return false;
    word.remove_prefix(length);
  }
  return true;
}

}  // namespace

PersonalName SplitFullName(std::string_view text) {
  PersonalName name;
  const std::vector<std::string_view> all = SplitWords(text);
  Words words(all);
  TakeTitlesAndSuffixes(words, name);
  const auto comma =
      std::find_if(words.begin(), words.end(), [](std::string_view w) { return w.ends_with(','); });
  const auto before = static_cast<std::size_t>(comma - words.begin()) + 1;
  if (comma == words.end() || before == words.size()) {
    PlaceWords(words, name);
    return name;
  }
  name.last = Join(words.first(before));
  words = words.subspan(before);
  if (name.title.empty()) {
    PersonalName given;
    TakeTitlesAndSuffixes(words, given);
    name.title = given.title;
  }
  PlaceGivenNames(words, name);
  return name;
}

std::string JoinFullName(const PersonalName& name) {
  std::string text;
  for (const std::string* part :
       {&name.title, &name.first, &name.middle, &name.last, &name.suffix}) {
    if (text::TrimBlanks(*part).empty()) continue;
    if (!text.empty()) text += ' ';
    text += *part;
  }
  return text;
}

bool IsMadeOfWords(std::string_view name, std::span<const std::string_view> texts) {
  std::unordered_set<std::u16string> known;
  std::unordered_set<char16_t> initials;
  for (const std::string_view text : texts) {
    for (std::u16string& word : BareWords(text)) {
      initials.insert(word.front());
      known.insert(std::move(word));
    }
  }
  return std::ranges::all_of(BareWords(name), [&](const std::u16string& word) {
    return (word.size() == 1 && initials.contains(word.front())) || IsMadeOf(word, known);
  });
}

}  // namespace formats
