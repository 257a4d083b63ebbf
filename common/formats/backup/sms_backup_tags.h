// The tags of a backup, one after the other.
//
// Backups come with what XML forbids: characters written as two halves of a surrogate pair, control
// characters, bytes of other character sets, and pictures of any size in an attribute.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/files/stream_pieces.h"
#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/lines/notice_tally.h"

namespace formats {

struct BackupTag {
  std::size_t line = 0;   // where it begins
  std::size_t depth = 0;  // 1 for those of the first element
  bool starts = false;    // both for an element without content
  bool ends = false;
  std::string name;
  BackupAttributes attributes;
};

// Reads a file of UTF-8 and passes over what stands between its tags, text, comments and
// instructions, and over the values of "data", which are pictures. Names and values come out as
// valid UTF-8 without anything that XML cannot carry; values are cut off at kLongestBackupValue,
// and line breaks within them stay. Memory is that of one tag, which has a bound.
class BackupTags {
 public:
  // Both must outlive this.
  BackupTags(std::istream& in, NoticeTally& tally);

  // Nothing once there is no more to read. Not to be called after that.
  std::optional<BackupTag> Next();

  // What ended it. What is damaged, or no such file, is stopped at with a notice.
  enum class End { kWhole, kTooEarly, kStopped };
  End end() const { return end_; }

 private:
  bool SkipText();
  bool SkipInstruction();
  bool SkipPast(std::string_view end);
  bool TakeTag(BackupTag& tag);
  bool SkipTag();
  bool TakeAttribute(BackupTag& tag);
  bool TakeValue(std::string_view name, char quote, std::string& value);
  std::string TakeReference();
  std::string TakeName();
  bool Take(char c);
  bool SkipBlanks();
  bool Nest(BackupTag& tag);
  bool StopAtDamage(const BackupTag& tag, std::string_view what);
  bool Stop(std::size_t line, std::string_view why);

  // At least so many bytes of what comes next, fewer only at the end of the file.
  std::string_view Ahead(std::size_t least);
  // The next character in a tag, empty at the end. Leaves out what is none.
  std::string_view NextCharacter();
  void Advance(std::size_t bytes);

  std::istream& in_;
  NoticeTally& tally_;
  End end_ = End::kTooEarly;
  files::StreamPiece piece_;
  std::string buffer_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
  std::vector<std::string> open_;  // the elements around
  bool anyElement_ = false;
};

}  // namespace formats
