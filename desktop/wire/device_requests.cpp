#include "desktop/wire/device_requests.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text/little_endian.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

constexpr std::int32_t kNoSuchCard = 1;
constexpr std::int32_t kPathNotFound = 3;
constexpr std::int32_t kInvalidName = 123;
constexpr std::size_t kVersionBytes = 52;
constexpr std::size_t kVersionText = 12;
constexpr std::size_t kSpaceBytes = 24;
constexpr std::size_t kLongestPath = 259;
// Nobody waits for two requests each of more.
constexpr std::uint32_t kMostCards = 1000;

[[noreturn]] void ThrowNonsense(std::string_view function, std::size_t count) {
  throw Error(fmt::format("the answer to {} makes no sense: {} bytes", function, count));
}

// An output of as many bytes.
std::string OutputOf(const Reply& reply, std::string_view function, std::size_t count) {
  if (reply.status != 0) {
    throw Error(
        fmt::format("the handheld does not answer {}: {}", function, StatusText(reply.status)));
  }
  // So it answers what it does not know.
  if (reply.output.empty()) {
    throw Error(fmt::format("the agent does not know the request {}", function));
  }
  if (reply.output.size() != count) ThrowNonsense(function, reply.output.size());
  return reply.output;
}

std::string Ask(const ConnectionOptions& connection, std::string_view function, std::size_t count) {
  return OutputOf(Invoke(connection, function, {}), function, count);
}

std::uint64_t LongAt(std::string_view bytes, std::size_t offset) {
  return std::uint64_t{text::WordAt(bytes, offset + 4)} << 32 | text::WordAt(bytes, offset);
}

Space SpaceFrom(const std::string& block) {
  return {LongAt(block, 8), LongAt(block, 16)};
}

// False when there is no such card any more.
bool AskCard(const ConnectionOptions& connection, Card& card) {
  std::string input;
  text::PutWord(input, card.number);
  const Reply directory = Invoke(connection, kGetCardDirectory, input);
  if (directory.status == kNoSuchCard) return false;
  const std::size_t count = directory.output.size();
  const std::string path = OutputOf(directory, kGetCardDirectory, count);
  if (count < 2 || count % 2 != 0) ThrowNonsense(kGetCardDirectory, count);
  card.directory = text::ToUtf8Lossy(text::FromUtf16Le(path.substr(0, count - 2)));

  const Reply space = Invoke(connection, kGetCardSpace, input);
  if (space.status == kNoSuchCard) return false;
  card.space = SpaceFrom(OutputOf(space, kGetCardSpace, kSpaceBytes));
  return true;
}

}  // namespace

AgentVersion AskVersion(const ConnectionOptions& connection) {
  const std::string block = Ask(connection, kGetVersion, kVersionBytes);
  const std::string text = block.substr(kVersionText);
  return {text::WordAt(block, 4), text::WordAt(block, 8), text.substr(0, text.find('\0'))};
}

std::uint32_t AskLanguage(const ConnectionOptions& connection) {
  return text::WordAt(Ask(connection, kGetLanguage, 4), 0);
}

bool AskHasInk(const ConnectionOptions& connection) {
  return text::WordAt(Ask(connection, kHasRichInk, 4), 0) != 0;
}

Space AskTotalSpace(const ConnectionOptions& connection) {
  return SpaceFrom(Ask(connection, kGetTotalSpace, kSpaceBytes));
}

Space AskSpaceAt(const ConnectionOptions& connection, std::string_view directory) {
  const Reply reply = Invoke(connection, kGetDiskSpace, DevicePathBytes(directory));
  if (reply.status == kPathNotFound) {
    throw Error(fmt::format("there is no directory {} on the handheld", directory));
  }
  if (reply.status == kInvalidName) {
    throw Error(fmt::format("{} is no path of the handheld", directory));
  }
  return SpaceFrom(OutputOf(reply, kGetDiskSpace, kSpaceBytes));
}

// The handheld counts its cards afresh at every request, so that one that comes or goes meanwhile
// moves those behind it.
std::vector<Card> AskCards(const ConnectionOptions& connection) {
  const std::uint32_t count = text::WordAt(Ask(connection, kGetVolumeCount, 4), 0);
  if (count > kMostCards) {
    throw Error(fmt::format("the answer to {} makes no sense: {} cards", kGetVolumeCount, count));
  }
  std::vector<Card> cards;
  for (Card card; card.number < count && AskCard(connection, card); ++card.number) {
    cards.push_back(card);
  }
  return cards;
}

std::string DevicePathBytes(std::string_view path) {
  std::optional<std::u16string> own = text::FromUtf8(path);
  if (path.empty() || !own) {
    throw Error(fmt::format("\"{}\" is no path of a handheld", text::Excerpt(path)));
  }
  std::replace(own->begin(), own->end(), u'/', u'\\');
  if (own->size() > kLongestPath) {
    throw Error(fmt::format("a handheld's path has at most {} characters, this one {}: {}",
                            kLongestPath, own->size(), text::Excerpt(path)));
  }
  return text::ToUtf16Le(*own);
}

}  // namespace desktop
