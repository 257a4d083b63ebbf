#include <libxml/parser.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/backup/sms_backup_tags.h"
#include "common/formats/backup/sms_backup_values.h"
#include "common/text/stream_pieces.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::size_t kDeepest = 64;
constexpr std::size_t kLargestElement = 4 << 20;
constexpr std::size_t kPiece = 1 << 16;

std::string_view Text(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

// The attributes as the parser hands them over: five pointers each.
template <typename Visit>
void ForEachAttribute(int count, const xmlChar** attributes, Visit&& visit) {
  for (int i = 0; i < count; ++i, attributes += 5) {
    const char* const value = reinterpret_cast<const char*>(attributes[3]);
    const char* const end = reinterpret_cast<const char*>(attributes[4]);
    visit(Text(attributes[0]), std::string_view(value, static_cast<std::size_t>(end - value)));
  }
}

class BackupReader {
 public:
  explicit BackupReader(const ItemSink& sink);
  BackupReader(const BackupReader&) = delete;
  BackupReader& operator=(const BackupReader&) = delete;

  void Feed(std::string_view bytes) { tags_.Feed(bytes); }
  std::vector<Notice> End();
  bool stopped() const { return tags_.stopped(); }

 private:
  struct FreeParser {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
  };

  void TakeTag(std::string_view tag, std::size_t line);
  void Deliver();
  void CheckEnd(bool tagsEnded);

  static void OnStart(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaceCount, const xmlChar** namespaces, int attributeCount,
                      int defaultedCount, const xmlChar** attributes);
  static void OnEnd(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri);
  // Nothing thrown may pass through the parser.
  template <typename Work>
  void Guarded(Work&& work) noexcept;

  void Start(std::string_view name, int count, const xmlChar** attributes);
  void StartRoot(std::string_view name, int count, const xmlChar** attributes);
  void StartItem(std::string_view name, int count, const xmlChar** attributes);
  BackupAttributes* PlaceInItem(std::string_view name);
  void Fill(BackupAttributes& to, int count, const xmlChar** attributes);
  bool HasRoomFor(std::size_t bytes);
  void StopWith(const std::string& why);

  enum class Kind { kNone, kSms, kMms, kCall };

  const ItemSink& sink_;
  NoticeTally tally_;
  BackupTags tags_;
  std::unique_ptr<xmlParserCtxt, FreeParser> parser_;
  std::exception_ptr failure_;
  std::size_t line_ = 0;
  std::size_t depth_ = 0;
  bool rootSeen_ = false;
  std::string saidCount_;
  std::int64_t count_ = 0;

  Kind kind_ = Kind::kNone;  // of the item that is being read
  bool finished_ = false;    // it is whole
  BackupElement element_;
  std::size_t elementBytes_ = 0;
};

BackupReader::BackupReader(const ItemSink& sink)
    : sink_(sink),
      tags_([this](std::string_view tag, std::size_t line) { TakeTag(tag, line); }, tally_) {
  xmlInitParser();
  xmlSAXHandler handler{};
  handler.initialized = XML_SAX2_MAGIC;
  handler.startElementNs = &OnStart;
  handler.endElementNs = &OnEnd;
  parser_.reset(xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr));
  if (parser_ == nullptr) throw std::bad_alloc();
  // Without entities of its own the document can only substitute XML's five.
  xmlCtxtUseOptions(parser_.get(),
                    XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
}

void BackupReader::TakeTag(std::string_view tag, std::size_t line) {
  line_ = line;
  xmlParseChunk(parser_.get(), tag.data(), static_cast<int>(tag.size()), 0);
  if (failure_) std::rethrow_exception(failure_);
  if (finished_) Deliver();
  if (stopped() || parser_->wellFormed != 0) return;
  const xmlError* const error = xmlCtxtGetLastError(parser_.get());
  std::string_view message;
  if (error != nullptr && error->message != nullptr) message = error->message;
  while (message.ends_with('\n')) message.remove_suffix(1);
  StopWith("the file is damaged here, and only what stands before is kept: " +
           Excerpt(RepairUtf8(message)));
}

void BackupReader::Deliver() {
  ++count_;
  const Kind kind = kind_;
  kind_ = Kind::kNone;
  finished_ = false;
  if (kind == Kind::kCall) {
    const Call call = CallFromElement(element_, tally_);
    if (sink_.call) sink_.call(call, element_.line);
    return;
  }
  const TextMessage message =
      kind == Kind::kMms ? MmsFromElement(element_, tally_) : SmsFromElement(element_, tally_);
  if (sink_.message) sink_.message(message, element_.line);
}

std::vector<Notice> BackupReader::End() {
  const bool tagsEnded = tags_.End();
  if (!stopped()) CheckEnd(tagsEnded);
  return tally_.Release();
}

void BackupReader::CheckEnd(bool tagsEnded) {
  if (!rootSeen_ && tagsEnded) {
    tally_.Add(1, "the file is no backup of messages or calls: it has no elements");
  } else if (!tagsEnded || depth_ > 0) {
    tally_.Add(std::max<std::size_t>(line_, 1),
               "the file ends too early, after this; only what is whole is kept");
  } else if (const auto said = BackupNumber(saidCount_); said && *said != count_) {
    tally_.Add(1, "the file says that it has " + std::to_string(*said) + " entries, and has " +
                      std::to_string(count_));
  }
}

void BackupReader::OnStart(void* context, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                           const xmlChar**, int attributeCount, int, const xmlChar** attributes) {
  BackupReader& reader = *static_cast<BackupReader*>(context);
  reader.Guarded([&] { reader.Start(Text(name), attributeCount, attributes); });
}

void BackupReader::OnEnd(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  BackupReader& reader = *static_cast<BackupReader*>(context);
  if (--reader.depth_ == 1 && reader.kind_ != Kind::kNone) reader.finished_ = true;
}

template <typename Work>
void BackupReader::Guarded(Work&& work) noexcept {
  if (failure_ || stopped()) return;
  try {
    work();
  } catch (...) {
    failure_ = std::current_exception();
    xmlStopParser(parser_.get());
  }
}

void BackupReader::Start(std::string_view name, int count, const xmlChar** attributes) {
  ++depth_;
  if (depth_ == 1) return StartRoot(name, count, attributes);
  if (depth_ == 2) return StartItem(name, count, attributes);
  if (depth_ > kDeepest) return StopWith("elements are nested too deeply");
  if (kind_ == Kind::kNone) return;
  if (kind_ == Kind::kMms && depth_ == 3 && (name == "parts" || name == "addrs")) return;
  if (!HasRoomFor(name.size())) return;
  if (BackupAttributes* const place = PlaceInItem(name)) {
    Fill(*place, count, attributes);
  } else {
    tally_.Add(line_, Excerpt(name) + ": not a known element, left out");
  }
}

void BackupReader::StartRoot(std::string_view name, int count, const xmlChar** attributes) {
  rootSeen_ = true;
  if (name != "smses" && name != "calls") {
    return StopWith("the file is no backup of messages or calls: it begins with " + Excerpt(name));
  }
  ForEachAttribute(count, attributes, [&](std::string_view key, std::string_view value) {
    if (key == "count") saidCount_ = value;
  });
}

void BackupReader::StartItem(std::string_view name, int count, const xmlChar** attributes) {
  kind_ = Kind::kNone;
  if (name == "sms") kind_ = Kind::kSms;
  if (name == "mms") kind_ = Kind::kMms;
  if (name == "call") kind_ = Kind::kCall;
  if (kind_ == Kind::kNone) {
    tally_.Add(line_, Excerpt(name) + ": not a known element, left out");
    return;
  }
  element_ = {};
  element_.line = line_;
  elementBytes_ = 0;
  Fill(element_.attributes, count, attributes);
}

BackupAttributes* BackupReader::PlaceInItem(std::string_view name) {
  if (kind_ != Kind::kMms || depth_ != 4) return nullptr;
  if (name == "part") return &element_.parts.emplace_back();
  if (name == "addr") return &element_.addresses.emplace_back();
  return nullptr;
}

void BackupReader::Fill(BackupAttributes& to, int count, const xmlChar** attributes) {
  ForEachAttribute(count, attributes, [&](std::string_view key, std::string_view value) {
    if (HasRoomFor(key.size() + value.size())) to.Add(key, value);
  });
}

bool BackupReader::HasRoomFor(std::size_t bytes) {
  constexpr std::size_t kCostOfAny = 64;
  elementBytes_ += kCostOfAny + bytes;
  if (elementBytes_ <= kLargestElement) return true;
  tally_.Add(element_.line, "messages this large are kept in part only");
  return false;
}

void BackupReader::StopWith(const std::string& why) {
  tally_.Add(line_, why);
  tags_.Stop();
}

}  // namespace

std::vector<Notice> ReadBackup(std::istream& in, const ItemSink& sink) {
  BackupReader reader(sink);
  StreamPiece piece;
  while (!reader.stopped()) {
    const std::string_view bytes = ReadPiece(in, piece);
    if (bytes.empty()) break;
    reader.Feed(bytes);
  }
  return reader.End();
}

std::vector<Notice> ReadBackup(std::string_view bytes, const ItemSink& sink) {
  BackupReader reader(sink);
  for (; !bytes.empty() && !reader.stopped(); bytes.remove_prefix(std::min(kPiece, bytes.size()))) {
    reader.Feed(bytes.substr(0, kPiece));
  }
  return reader.End();
}

}  // namespace formats
