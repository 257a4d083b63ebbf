// Any bytes as a telephone's backup: the reader takes them, and what it made
// of them can be written and read again without a loss. The same for lines of JSON.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>
#include <vector>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/items/identity.h"
#include "common/formats/json/message_json.h"
#include "common/text/unicode.h"
#include "fuzz/require.h"

namespace {

using formats::Call;
using formats::TextMessage;
using fuzz::Require;

struct Items {
  std::vector<TextMessage> messages;
  std::vector<Call> calls;
  std::vector<formats::Notice> notices;
};

template <typename Read>
Items Collect(Read&& read) {
  Items items;
  formats::ItemSink sink;
  sink.message = [&](const TextMessage& message, std::size_t line) {
    Require(line > 0);
    items.messages.push_back(message);
  };
  sink.call = [&](const Call& call, std::size_t) { items.calls.push_back(call); };
  items.notices = read(sink);
  for (const formats::Notice& notice : items.notices) {
    Require(notice.line > 0 && text::IsValidUtf8(notice.text));
  }
  return items;
}

void RequireSame(const Items& a, const Items& b) {
  Require(a.messages == b.messages && a.calls == b.calls);
}

template <typename Writer, typename Item>
std::string Written(const std::vector<Item>& items) {
  std::ostringstream out;
  Writer writer(out, items.size());
  for (const Item& item : items) writer.Write(item);
  writer.Finish();
  return out.str();
}

void RequireRoundTrip(const Items& items) {
  const std::string messages = Written<formats::MessageBackupWriter>(items.messages);
  const std::string calls = Written<formats::CallBackupWriter>(items.calls);
  Items again = Collect([&](const auto& sink) { return formats::ReadBackup(messages, sink); });
  Require(again.messages == items.messages);
  again = Collect([&](const auto& sink) { return formats::ReadBackup(calls, sink); });
  Require(again.calls == items.calls);

  std::string lines;
  for (const TextMessage& message : items.messages) {
    Require(text::IsValidUtf8(message.text) && text::IsValidUtf8(message.from.name));
    Require(formats::IdentityOf(message).size() == 32);
    lines += formats::MessageToJson(message) + "\n";
  }
  for (const Call& call : items.calls) lines += formats::CallToJson(call) + "\n";
  again = Collect([&](const auto& sink) { return formats::ReadJsonLines(lines, sink); });
  Require(again.notices.empty());
  RequireSame(again, items);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const Items whole = Collect([&](const auto& sink) { return formats::ReadBackup(bytes, sink); });
  RequireRoundTrip(whole);
  const Items lines =
      Collect([&](const auto& sink) { return formats::ReadJsonLines(bytes, sink); });
  RequireRoundTrip(lines);
  return 0;
}
