// Any bytes as the JSON that a program reads: what is taken in is written so that it reads the
// same, and what is refused stays as it was.
//
// The first byte chooses the reader: lines of messages and calls, what a backup's item has beyond
// its format, the journal of the desktop's map, what a saved run tells of itself, a file of records
// to be counted.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/identity.h"
#include "common/formats/json/message_json.h"
#include "common/formats/json/message_json_fields.h"
#include "common/text/unicode.h"
#include "desktop/sync/history.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/record_count.h"
#include "desktop/wire/error.h"
#include "fuzz/require.h"
#include "tests/support/temporary_directory.h"

namespace {

using formats::Call;
using formats::TextMessage;
using fuzz::Require;

struct JsonItems {
  std::vector<TextMessage> messages;
  std::vector<Call> calls;
  std::vector<formats::Notice> notices;
  friend bool operator==(const JsonItems& a, const JsonItems& b) {
    return a.messages == b.messages && a.calls == b.calls;
  }
};

JsonItems ItemsOfLines(std::string_view bytes) {
  JsonItems items;
  formats::ItemSink sink;
  const auto lines = static_cast<std::size_t>(std::ranges::count(bytes, '\n')) + 1;
  const auto isOne = [&](std::size_t line) {
    Require(line > 0 && line <= lines, "an item is of a line that there is");
  };
  sink.message = [&](const TextMessage& message, std::size_t line) {
    isOne(line);
    items.messages.push_back(message);
  };
  sink.call = [&](const Call& call, std::size_t line) {
    isOne(line);
    items.calls.push_back(call);
  };
  items.notices = formats::ReadJsonLines(bytes, sink);
  Require(items.messages.size() + items.calls.size() <= lines, "a line is one item at most");
  for (const formats::Notice& notice : items.notices) {
    Require(text::IsValidUtf8(notice.text), "a notice is UTF-8");
    Require(notice.text.find('\n') == notice.text.npos, "a notice is one line");
  }
  return items;
}

void ReadLines(std::string_view bytes) {
  const JsonItems items = ItemsOfLines(bytes);
  std::string lines;
  for (const TextMessage& message : items.messages) {
    Require(formats::IdentityOf(message).size() == 32);
    lines += formats::MessageToJson(message) + "\n";
  }
  for (const Call& call : items.calls) lines += formats::CallToJson(call, "7") + "\n";
  const JsonItems again = ItemsOfLines(lines);
  Require(again.notices.empty() && again == items, "lines are read as they were written");
}

// What it takes an item for, and what it has beyond another, says all of it.
template <typename Item>
void ReadItem(std::string_view bytes) {
  Item item;
  formats::TakeJson(bytes, item, [](const std::string& problem) {
    Require(text::IsValidUtf8(problem), "a problem is UTF-8");
  });
  const Item empty;
  const std::string difference = formats::DifferenceAsJson(item, empty);
  Require(std::ranges::all_of(difference, [](char c) { return c >= ' ' && c < 0x7F; }),
          "a difference is printable ASCII");
  Item again;
  if (!difference.empty()) {
    formats::TakeJson(difference, again,
                      [](const std::string&) { Require(false, "a difference is understood"); });
  }
  Require(again == item, "an item is what it differs in");
}

void ReadJournal(std::string_view bytes) {
  static const corvane::testing::TemporaryDirectory directory;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    std::filesystem::remove_all(entry.path());
  }
  directory.Write("map.json.journal", bytes);
  std::vector<desktop::Oid> oids;
  const auto oidsNow = [](const desktop::Mapping& mapping) {
    std::vector<desktop::Oid> now;
    for (const auto& [oid, item] : mapping.items()) now.push_back(oid);
    return now;
  };
  try {
    oids = oidsNow(desktop::Mapping(directory / "map.json"));
  } catch (const desktop::Error&) {
    Require(directory.Read("map.json.journal") == bytes, "what is not understood is left alone");
    return;
  }
  Require(directory.Read("map.json.journal").empty(), "what is taken in is taken in once");
  Require(oidsNow(desktop::Mapping(directory / "map.json")) == oids, "what is taken in is saved");
}

void ReadRun(std::string_view bytes) {
  static const corvane::testing::TemporaryDirectory directory;
  std::filesystem::create_directories(directory / "2026-11-22T09-46-50Z");
  directory.Write("2026-11-22T09-46-50Z/about.json", bytes);
  const desktop::History history(directory.path());
  try {
    const std::vector<desktop::SavedRun> runs = history.Runs();
    Require(runs.size() == 1, "one run was saved");
    for (const desktop::ItemKind kind : runs[0].kinds) {
      Require(kind >= desktop::ItemKind::kContact && kind <= desktop::ItemKind::kTask,
              "a kind is one that there is");
    }
  } catch (const desktop::Error&) {
  }
  Require(directory.Read("2026-11-22T09-46-50Z/about.json") == bytes, "reading changes nothing");
}

void Count(std::string_view bytes) {
  for (const auto format : {desktop::RecordFormat::kJson, desktop::RecordFormat::kCsv}) {
    Require(desktop::CountRecords(bytes, format) <= bytes.size(), "a record takes a byte");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 6) {
    case 0:
      ReadLines(bytes);
      break;
    case 1:
      ReadItem<TextMessage>(bytes);
      break;
    case 2:
      ReadItem<Call>(bytes);
      break;
    case 3:
      ReadJournal(bytes);
      break;
    case 4:
      ReadRun(bytes);
      break;
    default:
      Count(bytes);
      break;
  }
  return 0;
}
