#include "handheld/dom/known_names.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "common/text/unicode.h"
#include "common/text/xml_text.h"

namespace ce::host::dom {
namespace {

constexpr std::size_t kPlaces = 1024;  // a power of two
constexpr std::size_t kMostNames = kPlaces / 2;
constexpr std::size_t kLongestName = 64;

struct KeptName {
  explicit KeptName(std::u16string_view name) : text(name), utf8(text::ToUtf8Lossy(name)) {}

  const std::u16string text;
  const std::string utf8;
};

// A name stands at the place that its hash gives, or the next free one behind it. What stands there
// stays.
std::array<std::atomic<const KeptName*>, kPlaces> g_names{};
std::atomic<std::size_t> g_count{0};

using Four = std::uint64_t;  // characters
constexpr std::size_t kFour = sizeof(Four) / sizeof(char16_t);

Four FourAt(const char16_t* text) {
  Four four;
  std::memcpy(&four, text, sizeof(four));
  return four;
}

// By a name's length, its first and its last characters.
std::size_t PlaceOf(std::u16string_view name) {
  Four hash = name.size();
  if (name.size() >= kFour) {
    hash ^= FourAt(name.data()) ^ FourAt(name.data() + name.size() - kFour) * 31;
  } else {
    for (const char16_t unit : name) hash = hash << 16 | unit;
  }
  return hash * 0x9E3779B97F4A7C15u >> 48 & (kPlaces - 1);
}

bool AreSame(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  if (a.size() < kFour) return std::equal(a.begin(), a.end(), b.begin());
  const std::size_t last = a.size() - kFour;
  for (std::size_t at = 0; at < last; at += kFour) {
    if (FourAt(a.data() + at) != FourAt(b.data() + at)) return false;
  }
  return FourAt(a.data() + last) == FourAt(b.data() + last);
}

}  // namespace

Name KnownName(std::u16string_view name) {
  if (name.empty() || name.size() > kLongestName) return {};
  std::unique_ptr<const KeptName> added;
  for (std::size_t place = PlaceOf(name);; place = (place + 1) % kPlaces) {
    const KeptName* known = g_names[place].load(std::memory_order_acquire);
    if (!known && !added) {
      if (g_count.load(std::memory_order_relaxed) >= kMostNames) return {};
      if (!text::IsXmlName(name)) return {};
      added = std::make_unique<const KeptName>(name);
    }
    if (!known && g_names[place].compare_exchange_strong(known, added.get())) {
      known = added.release();
      ++g_count;
    }
    if (AreSame(known->text, name)) return {known->text, known->utf8};
  }
}

}  // namespace ce::host::dom
