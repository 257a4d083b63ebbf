// What an import says of its files, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "common/terminal/notice_sums.h"
#include "common/terminal/progress.h"
#include "handheld/tool/report.h"

namespace tool {

struct ImportTally {
  std::size_t added = 0, changed = 0, unchanged = 0, failed = 0, notices = 0;
  std::size_t done() const { return added + changed + unchanged; }
};

// A file has a line for what became of its records, and one for each property of which something
// could not be kept; with Verbosity::kAll each record that was stored and each notice has its own.
// On a terminal a bar says how far it has come.
class ImportReport {
 public:
  ImportReport(const Report& report, bool dryRun);

  // What follows is about this file, which must live until the next one begins.
  void Begin(const std::filesystem::path& file);
  // Notices are about so many of these.
  void ExpectNoticesOf(terminal::Noun noun) { noun_ = noun; }
  void ExpectRecords(std::size_t records);
  // Of the file.
  ImportTally& tally() { return tally_; }

  // What is said from here on is about another record than what was said before; without this,
  // nothing is known of what belongs together.
  void BeginRecord() { ++record_; }
  // One more has been looked at.
  void Step();
  void Notice(std::size_t line, std::string_view text);
  // One that says itself how often it came.
  void SummedNotice(std::size_t line, std::string_view text);
  // A record cannot be stored.
  void Failed(std::size_t line, std::string_view text);
  // "added" or "changed", with the OID 0 where that is only what would be done. It is said once
  // SayStored makes it true.
  void Stored(std::string_view verb, std::uint32_t oid, std::string_view name);
  void SayStored();
  // Nothing more comes of the file: says what became of its records, or the problem that there was.
  void End();
  void EndInProblem(std::string_view text);

 private:
  bool IsVerbose() const { return report_.verbosity == Verbosity::kAll; }
  void SayNotices();
  // A line, not in the bar.
  void Say(std::FILE* to, std::string_view line);

  const Report report_;
  const bool dryRun_;
  const std::filesystem::path* file_ = nullptr;
  ImportTally tally_;
  terminal::Noun noun_{};
  std::optional<terminal::Progress> progress_;
  std::size_t steps_ = 0;
  std::size_t record_ = 0;
  std::string stored_;  // lines about records that wait for SayStored
  terminal::NoticeSums notices_;
};

}  // namespace tool
