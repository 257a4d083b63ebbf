// The tags of a backup as a strict XML parser takes them.
//
// Backups come with what XML forbids: characters written as two halves of a surrogate pair, control
// characters, bytes of other character sets, and pictures of any size in an attribute.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "common/formats/lines/notice_tally.h"

namespace formats {

// Cuts a file of UTF-8 into its tags and drops what stands between them: text, comments,
// instructions, and the values of "data", which are pictures. Values come out as ASCII and valid
// UTF-8 without anything that XML cannot carry and are cut off at kLongestBackupValue; line breaks
// within them stay. Memory is that of one tag, which has a bound.
class BackupTags {
 public:
  // `line` is where the tag begins. The text is gone after the call. An exception ends the reading.
  using TagSink = std::function<void(std::string_view tag, std::size_t line)>;

  BackupTags(TagSink sink, NoticeTally& tally) : sink_(std::move(sink)), tally_(tally) {}

  // Any pieces of the file, in their order.
  void Feed(std::string_view bytes);
  // After the last one. False when the file ends within a tag or anything else that has an end.
  bool End();
  // Reads no more; also by itself, with a notice, for what is no such file.
  void Stop() { state_ = State::kStopped; }
  bool stopped() const { return state_ == State::kStopped; }

 private:
  enum class State { kStart, kText, kSkipping, kTag, kValue, kStopped };
  enum class Step { kTaken, kNeedsMore };

  void Run();
  Step TakeStart();
  Step TakeText();
  Step TakeSkipped();
  Step TakeInTag();
  Step TakeInValue();
  Step TakePlainRun();
  Step TakeReference();
  Step TakeCharacter(std::string& out, bool inValue);
  void BeginSkipping(std::string_view end, bool isInstruction);
  void CheckEncoding();
  void AppendToValue(std::string_view written, std::size_t bytes);
  void AppendCodePoint(unsigned long codePoint);
  void EndTag();
  void StopWith(std::string_view why);

  std::string_view rest() const { return std::string_view(buffer_).substr(position_); }
  void Advance(std::size_t bytes);

  TagSink sink_;
  NoticeTally& tally_;
  State state_ = State::kStart;
  bool atEnd_ = false;
  std::string buffer_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;

  std::string_view skipEnd_;  // what ends the part that is skipped
  std::string instruction_;   // its beginning
  bool isInstruction_ = false;
  bool textNoticed_ = false;

  std::string tag_;
  std::size_t tagLine_ = 0;
  std::string name_;  // of the attribute
  bool nameEnded_ = false;
  char quote_ = 0;
  bool dropsValue_ = false;
  bool cutsValue_ = false;
  std::size_t valueBytes_ = 0;
};

}  // namespace formats
