#include "handheld/tool/import_report.h"

#include <fmt/core.h>

#include <iostream>
#include <utility>

#include "common/text/text.h"
#include "handheld/tool/result.h"

namespace tool {

ImportReport::ImportReport(const Report& report, bool dryRun) : report_(report), dryRun_(dryRun) {}

void ImportReport::Begin(const std::filesystem::path& file) {
  file_ = &file;
  tally_ = {};
  noun_ = {"time", "times"};
  record_ = 0;
  steps_ = 0;
  notices_ = {};
  ExpectRecords(0);
}

void ImportReport::ExpectRecords(std::size_t records) {
  const bool shown = report_.errIsTerminal && report_.verbosity != Verbosity::kErrors;
  progress_.emplace(std::cerr, shown, "Importing " + text::Excerpt(file_->filename().string()),
                    records == 0 ? std::nullopt : std::optional<std::uint64_t>(records));
}

void ImportReport::Step() {
  progress_->Update(++steps_);
}

void ImportReport::Say(std::FILE* to, std::string_view line) {
  if (progress_) progress_->Hide();
  Tell(to, "{}\n", line);
}

void ImportReport::Notice(std::size_t line, std::string_view text) {
  ++tally_.notices;
  if (IsVerbose()) return Say(report_.err, fmt::format("{}:{}: {}", file_->string(), line, text));
  notices_.Add(file_->string(), line, text, noun_, record_);
}

void ImportReport::SummedNotice(std::size_t line, std::string_view text) {
  ++tally_.notices;
  if (report_.verbosity == Verbosity::kErrors) return;
  Say(report_.err, fmt::format("{}:{}: {}", file_->string(), line, text));
}

void ImportReport::Failed(std::size_t line, std::string_view text) {
  ++tally_.failed;
  Say(report_.err, fmt::format("{}:{}: {}", file_->string(), line, text));
}

void ImportReport::Stored(std::string_view verb, std::uint32_t oid, std::string_view name) {
  if (!IsVerbose()) return;
  if (report_.json) {
    Json object = {{"outcome", verb}, {"oid", oid}, {"name", name}};
    if (oid == 0) object["dryRun"] = true;
    stored_ += JsonText(object, report_);
  } else if (oid == 0) {
    stored_ += text::Shown(fmt::format("would be {:<8} {}", verb, name));
  } else {
    stored_ += text::Shown(fmt::format("{:<8} {:>10}  {}", verb, oid, name));
  }
  stored_ += '\n';
}

void ImportReport::SayStored() {
  if (stored_.empty()) return;
  progress_->Hide();
  fmt::print(report_.out, "{}", std::exchange(stored_, {}));
}

void ImportReport::EndInProblem(std::string_view text) {
  progress_.reset();
  SayNotices();
  Tell(report_.err, "corvane-device: {}\n", text);
}

void ImportReport::SayNotices() {
  if (report_.verbosity == Verbosity::kErrors) return;
  for (const std::string& line : notices_.Lines()) Tell(report_.err, "{}\n", line);
}

void ImportReport::End() {
  progress_.reset();
  SayNotices();
  Json object = {{"file", file_->string()},   {"added", tally_.added},
                 {"changed", tally_.changed}, {"unchanged", tally_.unchanged},
                 {"failed", tally_.failed},   {"notices", tally_.notices}};
  if (dryRun_) object["dryRun"] = true;
  using terminal::Grouped;
  TellResult(report_, object, "{}: {}{} added, {} changed, {} unchanged, {} failed; {} notices\n",
             file_->string(), dryRun_ ? "would be " : "", Grouped(tally_.added),
             Grouped(tally_.changed), Grouped(tally_.unchanged), Grouped(tally_.failed),
             Grouped(tally_.notices));
}

}  // namespace tool
