#include <algorithm>
#include <optional>
#include <sstream>

#include "common/files/stream_pieces.h"
#include "common/formats/backup/sms_backup.h"
#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/backup/sms_backup_tags.h"
#include "common/formats/backup/sms_backup_values.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::size_t kLargestElement = 4 << 20;

class BackupReader {
 public:
  BackupReader(std::istream& in, const ItemSink& sink) : sink_(sink), tags_(in, tally_) {}
  std::vector<Notice> Read();

 private:
  enum class Kind { kNone, kSms, kMms, kCall };

  void StartItem(BackupTag& tag);
  void TakeContent(BackupTag& tag);
  void Fill(BackupAttributes& to, BackupAttributes& from);
  bool HasRoomFor(std::size_t bytes);
  void Deliver();
  void CheckEnd(std::size_t lastLine, std::optional<std::int64_t> saidCount);

  const ItemSink& sink_;
  NoticeTally tally_;
  BackupTags tags_;
  std::int64_t count_ = 0;

  Kind kind_ = Kind::kNone;  // of the item that is being read
  BackupElement element_;
  std::size_t elementBytes_ = 0;
};

std::vector<Notice> BackupReader::Read() {
  std::size_t line = 0;
  std::optional<std::int64_t> saidCount;
  while (std::optional<BackupTag> tag = tags_.Next()) {
    line = tag->line;
    if (tag->starts && tag->depth == 1) {
      if (tag->name != "smses" && tag->name != "calls") {
        tally_.Add(line, "the file is no backup of messages or calls: it begins with " +
                             text::Excerpt(tag->name));
        return tally_.Release();
      }
      saidCount = BackupNumber(tag->attributes["count"]);
    } else if (tag->starts && tag->depth == 2) {
      StartItem(*tag);
    } else if (tag->starts && kind_ != Kind::kNone) {
      TakeContent(*tag);
    }
    if (tag->ends && tag->depth == 2 && kind_ != Kind::kNone) Deliver();
  }
  CheckEnd(line, saidCount);
  return tally_.Release();
}

void BackupReader::CheckEnd(std::size_t lastLine, std::optional<std::int64_t> saidCount) {
  if (tags_.end() == BackupTags::End::kStopped) return;
  if (tags_.end() == BackupTags::End::kTooEarly) {
    tally_.Add(std::max<std::size_t>(lastLine, 1),
               "the file ends too early, after this; only what is whole is kept");
  } else if (lastLine == 0) {
    tally_.Add(1, "the file is no backup of messages or calls: it has no elements");
  } else if (saidCount && *saidCount != count_) {
    tally_.Add(1, "the file says that it has " + std::to_string(*saidCount) + " entries, and has " +
                      std::to_string(count_));
  }
}

void BackupReader::StartItem(BackupTag& tag) {
  kind_ = tag.name == "sms"    ? Kind::kSms
          : tag.name == "mms"  ? Kind::kMms
          : tag.name == "call" ? Kind::kCall
                               : Kind::kNone;
  if (kind_ == Kind::kNone) {
    tally_.Add(tag.line, text::Excerpt(tag.name) + ": not a known element, left out");
    return;
  }
  element_ = {};
  element_.line = tag.line;
  elementBytes_ = 0;
  Fill(element_.attributes, tag.attributes);
}

void BackupReader::TakeContent(BackupTag& tag) {
  const bool isMms = kind_ == Kind::kMms;
  if (isMms && tag.depth == 3 && (tag.name == "parts" || tag.name == "addrs")) return;
  if (!HasRoomFor(tag.name.size())) return;
  if (isMms && tag.depth == 4 && tag.name == "part") {
    Fill(element_.parts.emplace_back(), tag.attributes);
  } else if (isMms && tag.depth == 4 && tag.name == "addr") {
    Fill(element_.addresses.emplace_back(), tag.attributes);
  } else {
    tally_.Add(tag.line, text::Excerpt(tag.name) + ": not a known element, left out");
  }
}

void BackupReader::Fill(BackupAttributes& to, BackupAttributes& from) {
  for (auto& [name, value] : from.list) {
    if (HasRoomFor(name.size() + value.size())) {
      to.list.emplace_back(std::move(name), std::move(value));
    }
  }
}

bool BackupReader::HasRoomFor(std::size_t bytes) {
  constexpr std::size_t kCostOfAny = 64;
  elementBytes_ += kCostOfAny + bytes;
  if (elementBytes_ <= kLargestElement) return true;
  tally_.Add(element_.line, "messages this large are kept in part only");
  return false;
}

void BackupReader::Deliver() {
  ++count_;
  if (kind_ == Kind::kCall) {
    const Call call = CallFromElement(element_, tally_);
    if (sink_.call) sink_.call(call, element_.line);
  } else {
    const TextMessage message =
        kind_ == Kind::kMms ? MmsFromElement(element_, tally_) : SmsFromElement(element_, tally_);
    if (sink_.message) sink_.message(message, element_.line);
  }
  kind_ = Kind::kNone;
}

}  // namespace

std::vector<Notice> ReadBackup(std::istream& in, const ItemSink& sink) {
  return BackupReader(in, sink).Read();
}

std::vector<Notice> ReadBackup(std::string_view bytes, const ItemSink& sink) {
  std::istringstream in{std::string(bytes)};
  return ReadBackup(in, sink);
}

}  // namespace formats
