// The XML in which Android's widely used backup program keeps a telephone's messages
// (<smses>) and calls (<calls>), one file each: reading it, and writing it for that program.
// docs/message-mapping.md tells what becomes of each attribute.
#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <string_view>
#include <vector>

#include "common/formats/items/call.h"
#include "common/formats/items/item_sink.h"
#include "common/formats/items/message.h"
#include "common/formats/items/notice.h"

namespace formats {

// Reads either kind of file, item by item, in memory that does not depend on its length. Never
// fails: what cannot be read is a notice, and what stands before damage or a premature end is kept.
// What is read and not kept is a notice, one of a kind, with its first line and how often it came.
// All text that comes out is UTF-8. Whether a stream could be read to its end is its state (bad).
std::vector<Notice> ReadBackup(std::istream& in, const ItemSink& sink);
std::vector<Notice> ReadBackup(std::string_view bytes, const ItemSink& sink);

// The longest value of an attribute; the reader cuts off what is beyond.
inline constexpr std::size_t kLongestBackupValue = 1 << 20;

// Writes one file, the same bytes for the same items. The reader makes the same items of it if
// their text is valid UTF-8, no longer than above, and their times are ones that are kept. Whether
// the stream took it is the stream's state.
class MessageBackupWriter {
 public:
  // `count` is how many will be written.
  MessageBackupWriter(std::ostream& out, std::size_t count);
  void Write(const TextMessage& message);
  // The end of the file. Nothing can be written after it.
  void Finish();

 private:
  std::ostream& out_;
};

class CallBackupWriter {
 public:
  CallBackupWriter(std::ostream& out, std::size_t count);
  void Write(const Call& call);
  void Finish();

 private:
  std::ostream& out_;
};

}  // namespace formats
