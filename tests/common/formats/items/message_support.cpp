#include "tests/common/formats/items/message_support.h"

#include <algorithm>
#include <sstream>
#include <streambuf>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/json/message_json.h"
#include "tests/common/formats/vcard/card_support.h"

namespace formats {

void PrintTo(const TextMessage& message, std::ostream* out) {
  *out << MessageToJson(message);
}

void PrintTo(const Call& call, std::ostream* out) {
  *out << CallToJson(call);
}

void showValue(const TextMessage& message, std::ostream& out) {
  PrintTo(message, &out);
}

void showValue(const Call& call, std::ostream& out) {
  PrintTo(call, &out);
}

namespace testing {
namespace {

class PieceBuffer final : public std::streambuf {
 public:
  PieceBuffer(std::string_view bytes, std::size_t piece) : rest_(bytes), piece_(piece) {}

 private:
  std::streamsize xsgetn(char* to, std::streamsize most) override {
    const std::size_t length = std::min({rest_.size(), piece_, static_cast<std::size_t>(most)});
    std::copy_n(rest_.begin(), length, to);
    rest_.remove_prefix(length);
    return static_cast<std::streamsize>(length);
  }

  std::string_view rest_;
  std::size_t piece_;
};

template <typename Read>
Items Collect(Read&& read) {
  Items items;
  ItemSink sink;
  sink.message = [&](const TextMessage& message, std::size_t line) {
    items.messages.push_back(message);
    items.lines.push_back(line);
  };
  sink.call = [&](const Call& call, std::size_t line) {
    items.calls.push_back(call);
    items.lines.push_back(line);
  };
  items.notices = Texts(read(sink));
  return items;
}

}  // namespace

Items ReadBackupText(std::string_view xml) {
  return Collect([&](const ItemSink& sink) { return ReadBackup(xml, sink); });
}

Items ReadBackupInPieces(std::string_view xml, std::size_t piece) {
  PieceBuffer buffer(xml, piece);
  std::istream in(&buffer);
  return Collect([&](const ItemSink& sink) { return ReadBackup(in, sink); });
}

Items ReadJsonText(std::string_view lines) {
  return Collect([&](const ItemSink& sink) { return ReadJsonLines(lines, sink); });
}

std::string WriteBackup(const std::vector<TextMessage>& messages) {
  std::ostringstream out;
  MessageBackupWriter writer(out, messages.size());
  for (const TextMessage& message : messages) writer.Write(message);
  writer.Finish();
  return out.str();
}

std::string WriteBackup(const std::vector<Call>& calls) {
  std::ostringstream out;
  CallBackupWriter writer(out, calls.size());
  for (const Call& call : calls) writer.Write(call);
  writer.Finish();
  return out.str();
}

MessageTime TimeOf(std::string_view iso) {
  const std::optional<MessageTime> time = ParseMessageTime(iso);
  EXPECT_TRUE(time.has_value()) << iso;
  return time.value_or(MessageTime());
}

}  // namespace testing
}  // namespace formats
