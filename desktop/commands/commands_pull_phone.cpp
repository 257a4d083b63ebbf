#include "desktop/commands/commands_pull_phone.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "common/files/atomic_file.h"
#include "desktop/commands/progress.h"
#include "desktop/sync/phone_writers.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

constexpr std::string_view kPartialSuffix = ".partial";

class PullPhoneRun {
 public:
  PullPhoneRun(const ConnectionOptions& connection, const PullPhoneOptions& options,
               const Console& console)
      : connection_(connection),
        options_(options),
        console_(console),
        words_(WordsOf(options.kind)),
        progress_(console.err, console.errIsTerminal, fmt::format("Pulling {}", words_.plural),
                  std::nullopt) {
    if (options.output) file_ = std::make_unique<files::AtomicFile>(*options.output);
    writer_ = MakeWriter([this](std::string_view bytes) { Put(bytes); });
  }

  int Run() {
    const std::string problem = DownloadUntilProblem();
    progress_.Hide();
    if (!problem.empty() && written_ == 0) throw Error(problem);
    BeginOnce();
    writer_->End();
    if (file_ == nullptr) {
      FlushOutput(console_);
    } else {
      file_->Commit(problem.empty() ? std::string_view() : kPartialSuffix);
    }
    if (!problem.empty()) {
      ReportPartial(problem);
      return kPartlyDone;
    }
    if (options_.output) SayWhatIsThere(*options_.output);
    return kDone;
  }

 private:
  std::unique_ptr<PhoneWriter> MakeWriter(ByteSink sink) const {
    switch (options_.format) {
      case PhoneFormat::kXml:
        return MakePhoneXmlWriter(std::move(sink));
      case PhoneFormat::kSmsBackup:
        return MakePhoneBackupWriter(options_.kind, std::move(sink));
      case PhoneFormat::kJson:
        break;
    }
    return MakePhoneJsonWriter(options_.kind, std::move(sink));
  }

  void Put(std::string_view bytes) {
    if (file_ != nullptr) return file_->Write(bytes);
    console_.out << bytes;
  }

  // Not before there is something to write: a handheld without a telephone leaves no trace.
  void BeginOnce() {
    if (!begun_) writer_->Begin();
    begun_ = true;
  }

  // What kept the download from its good end; empty for nothing.
  std::string DownloadUntilProblem() {
    try {
      const std::int32_t status =
          DownloadAll(connection_, options_.kind,
                      [this](const std::string& document) { TakeDocument(document); });
      return status == 0 ? std::string() : Explanation(status);
    } catch (const Interrupted&) {
      throw;
    } catch (const Error& problem) {
      return problem.what();
    }
  }

  [[nodiscard]] std::string Explanation(std::int32_t status) const {
    std::string why = "the handheld broke off";
    if (status == kNotSupported && options_.kind == PhoneKind::kMessages) {
      why = kNoMessageStore;
    } else if (status == kNotSupported && written_ == 0) {
      why = "the handheld has no telephone, or cannot convert the note of a call";
    } else if (status == kNotSupported) {
      why = "the handheld cannot convert the note of a call";
    }
    return fmt::format("{}: {}", why, StatusText(status));
  }

  std::vector<Record> Parse(const std::string& document) {
    ++documents_;
    try {
      return ParseRecords(document);
    } catch (const Error& problem) {
      throw Error(
          fmt::format("the answer makes no sense: document {}: {}", documents_, problem.what()));
    }
  }

  void TakeDocument(const std::string& document) {
    for (const Record& record : Parse(document)) {
      if (record.element.name != words_.element) {
        Say(fmt::format("left out: {} is no {}", record.element.name, words_.name));
        continue;
      }
      BeginOnce();
      writer_->Write(record);
      ++written_;
      if (options_.kind == PhoneKind::kMessages) Say(MissingOf(record));
    }
    // At once, so that a pipe that has gone ends the download.
    if (file_ == nullptr) FlushOutput(console_);
    progress_.Update(written_);
  }

  void Say(const std::string& line) {
    if (line.empty()) return;
    progress_.Hide();
    console_.err << line << '\n';
  }

  void SayWhatIsThere(const std::filesystem::path& file) {
    console_.out << fmt::format("{}: {} {}\n", file.string(), written_,
                                written_ == 1 ? words_.name : words_.plural);
    FlushOutput(console_);
  }

  void ReportPartial(const std::string& problem) {
    std::string where = "have been written";
    if (options_.output) {
      where = fmt::format("are in {0}{1}, and {0} is as it was", options_.output->string(),
                          kPartialSuffix);
    }
    console_.err << fmt::format("corvane-desktop: partial: {}; the {} {} received until then {}\n",
                                problem, written_, words_.plural, where);
  }

  const ConnectionOptions& connection_;
  const PullPhoneOptions& options_;
  const Console& console_;
  const PhoneWords& words_;
  Progress progress_;
  std::unique_ptr<files::AtomicFile> file_;
  std::unique_ptr<PhoneWriter> writer_;
  bool begun_ = false;
  std::uint64_t documents_ = 0;
  std::uint64_t written_ = 0;
};

}  // namespace

int PullPhone(const ConnectionOptions& connection, const PullPhoneOptions& options,
              const Console& console) {
  return RunGuarded(console, [&] { return PullPhoneRun(connection, options, console).Run(); });
}

}  // namespace desktop
