#include "common/formats/json/message_json.h"

#include <algorithm>
#include <functional>
#include <sstream>

#include "common/files/stream_pieces.h"
#include "common/formats/json/message_json_fields.h"
#include "common/formats/lines/notice_list.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

template <typename Item>
std::string ItemToJson(const Item& item, std::string_view oid) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  if (!oid.empty()) object["oid"] = oid;
  object.update(ToJsonObject(item));
  return OnOneLine(object);
}

class LineReader {
 public:
  explicit LineReader(std::istream& in) : in_(in) {}
  // The next line without its end; false after the last. What is beyond the longest line is passed
  // over.
  bool Next(std::string& line, bool& tooLong);

 private:
  std::istream& in_;
  files::StreamPiece piece_{};
  std::string_view rest_;  // of the piece
};

bool LineReader::Next(std::string& line, bool& tooLong) {
  line.clear();
  tooLong = false;
  bool any = false;
  for (;;) {
    if (rest_.empty()) rest_ = files::ReadPiece(in_, piece_);
    if (rest_.empty()) return any;
    any = true;
    const std::size_t end = rest_.find('\n');
    const std::string_view part = rest_.substr(0, end);
    tooLong = tooLong || line.size() + part.size() > kLongestJsonLine;
    if (!tooLong) line += part;
    const bool found = end != std::string_view::npos;
    rest_.remove_prefix(part.size() + (found ? 1 : 0));
    if (found) return true;
  }
}

bool IsCall(const nlohmann::ordered_json& object) {
  const auto items = object.items();
  return std::any_of(items.begin(), items.end(),
                     [](const auto& member) { return IsCallFieldAlone(member.key()); });
}

template <typename Item>
void TakeItem(const nlohmann::ordered_json& object, std::size_t line,
              const std::function<void(const Item&, std::size_t)>& sink, NoticeList& notices) {
  Item item;
  const auto tell = [&](const std::string& problem) { notices.Add(line, problem); };
  if (!TakeFields(object, item, tell)) {
    notices.Add(line, "nothing in it is of a message or a call: left out");
  } else if (sink) {
    sink(item, line);
  }
}

void TakeLine(std::string_view text, std::size_t line, const ItemSink& sink, NoticeList& notices) {
  std::string repaired;
  if (!text::IsValidUtf8(text)) {
    notices.Add(line, "bytes that are not UTF-8 were replaced");
    repaired = text::RepairUtf8(text);
    text = repaired;
  }
  const nlohmann::ordered_json object = ParseJson(text);
  if (!object.is_object()) {
    notices.Add(line, "not a JSON object: " + text::Excerpt(text));
  } else if (IsCall(object)) {
    TakeItem<Call>(object, line, sink.call, notices);
  } else {
    TakeItem<TextMessage>(object, line, sink.message, notices);
  }
}

}  // namespace

std::string MessageToJson(const TextMessage& message, std::string_view oid) {
  return ItemToJson(message, oid);
}

std::string CallToJson(const Call& call, std::string_view oid) {
  return ItemToJson(call, oid);
}

std::vector<Notice> ReadJsonLines(std::istream& in, const ItemSink& sink) {
  NoticeList notices;
  LineReader reader(in);
  std::string text;
  bool tooLong = false;
  for (std::size_t line = 1; reader.Next(text, tooLong); ++line) {
    std::string_view bare = text;
    if (line == 1 && bare.starts_with("\xEF\xBB\xBF")) bare.remove_prefix(3);
    if (bare.ends_with('\r')) bare.remove_suffix(1);
    if (tooLong) {
      notices.Add(line, "a line this long is not read");
    } else if (!text::TrimBlanks(bare).empty()) {
      TakeLine(bare, line, sink, notices);
    }
  }
  return notices.Release();
}

std::vector<Notice> ReadJsonLines(std::string_view bytes, const ItemSink& sink) {
  std::istringstream in{std::string(bytes)};
  return ReadJsonLines(in, sink);
}

}  // namespace formats
