#include "desktop/commands/commands_pull.h"

#include <fmt/format.h>

#include <memory>
#include <set>
#include <string>

#include "common/files/atomic_file.h"
#include "common/terminal/progress.h"
#include "common/terminal/tally.h"
#include "common/text/text.h"
#include "desktop/commands/commands_pair.h"
#include "desktop/commands/losses.h"
#include "desktop/commands/result.h"
#include "desktop/records/phone_records.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/record_count.h"
#include "desktop/transfer/record_writers.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/oid_set.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

constexpr std::string_view kPartialSuffix = ".partial";

class Output {
 public:
  // What is held goes to the standard output only once it is known to be whole.
  Output(const std::optional<std::filesystem::path>& path, bool hold, const Console& console)
      : console_(console), hold_(hold) {
    if (path) file_ = std::make_unique<files::AtomicFile>(*path);
  }

  void Write(std::string_view bytes) {
    if (file_ != nullptr) {
      file_->Write(bytes);
    } else if (hold_) {
      held_ += bytes;
    } else {
      console_.out << bytes;
    }
  }

  // So that a pipe that has gone ends the download.
  void PassOn() {
    if (file_ == nullptr && !hold_) FlushOutput(console_);
  }

  void Commit(std::string_view suffix) {
    if (file_ != nullptr) return file_->Commit(suffix);
    console_.out << held_;
    FlushOutput(console_);
  }

 private:
  const Console& console_;
  const bool hold_;
  std::unique_ptr<files::AtomicFile> file_;
  std::string held_;
};

class PullRun {
 public:
  PullRun(const ConnectionOptions& connection, const PullOptions& options, const Console& console)
      : connection_(connection),
        options_(options),
        console_(console),
        words_(WordsOf(options.kind)),
        output_(options.output, words_.isItem, console),
        progress_(console.err, console.showsProgress(), fmt::format("Pulling {}", words_.plural),
                  Total(options)),
        losses_(progress_, console) {
    const RecordFormat format = options.format.value_or(words_.formats[0]);
    if (NeedsMapping(format)) {
      mapping_ = std::make_unique<Mapping>(MappingPath(options.mapping, connection.target));
    }
    writer_ =
        MakeRecordWriter({options.kind, format, options.version, options.zone, options.overflow},
                         mapping_.get(), [this](std::string_view bytes) { output_.Write(bytes); });
  }

  int Run() {
    const std::string problem = DownloadUntilProblem();
    progress_.Hide();
    if (!problem.empty() && written_ == 0) throw Error(problem);
    if (problem.empty()) RefuseLess();
    if (problem.empty() && options_.oids.empty()) ForgetVanished();
    // An output whose UIDs the mapping does not know would be added a second time when pushed.
    if (mapping_ != nullptr) mapping_->Save();
    BeginOnce();
    writer_->End();
    output_.Commit(problem.empty() ? std::string_view() : kPartialSuffix);
    for (const auto& [item, loss] : writer_->Losses()) losses_.Add(options_.kind, item, loss);
    losses_.PrintSums();
    if (!problem.empty()) {
      ReportPartial(problem);
    } else if (options_.output) {
      SayWhatIsThere(*options_.output);
    }
    return problem.empty() && errors_ == 0 ? kDone : kPartlyDone;
  }

 private:
  static std::optional<std::uint64_t> Total(const PullOptions& options) {
    if (options.oids.empty()) return std::nullopt;
    return options.oids.size();
  }

  bool IsWanted(const Record& record) const {
    return KindOfElement(record.element.name) == words_.name;
  }

  // Not before there is something to write: a handheld without a telephone leaves no trace.
  void BeginOnce() {
    if (!begun_) writer_->Begin();
    begun_ = true;
  }

  // What kept the download from its good end; empty for nothing.
  std::string DownloadUntilProblem() {
    try {
      const std::int32_t status = DownloadWanted();
      return status == 0 ? std::string()
                         : fmt::format("{}: {}", Explanation(status), StatusText(status));
    } catch (const Interrupted&) {
      throw;
    } catch (const Error& problem) {
      return problem.what();
    }
  }

  [[nodiscard]] std::string_view Explanation(std::int32_t status) const {
    if (status == kNotSupported && options_.kind == RecordKind::kMessages) return kNoMessageStore;
    if (status != kNotSupported || options_.kind != RecordKind::kCalls) {
      return "the handheld broke off";
    }
    return written_ == 0 ? "the handheld has no telephone, or cannot convert the note of a call"
                         : "the handheld cannot convert the note of a call";
  }

  std::int32_t DownloadWanted() {
    const auto onDocument = [this](const std::string& document) { TakeDocument(document); };
    if (options_.oids.empty()) return DownloadAll(connection_, options_.kind, onDocument);
    OidSet named;
    std::vector<Oid> once;
    for (const Oid oid : options_.oids) {
      if (named.Insert(oid)) once.push_back(oid);
    }
    return DownloadSpecific(connection_, options_.kind, once, onDocument);
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

  // The items that the document has in part, with an error record.
  std::set<Oid> FailedOf(const std::vector<Record>& records) const {
    std::set<Oid> failed;
    for (const Record& record : records) {
      if (record.element.name == kErrorElement) failed.insert(record.oid.value_or(0));
      if (IsWanted(record) && !record.oid) {
        throw Error(fmt::format("the answer makes no sense: document {}: {} without an OID",
                                documents_, words_.withArticle));
      }
    }
    return failed;
  }

  void TakeDocument(const std::string& document) {
    const std::vector<Record> records = Parse(document);
    const std::set<Oid> failed = words_.isItem ? FailedOf(records) : std::set<Oid>();
    for (const Record& record : records) {
      if (words_.isItem && record.element.name == kErrorElement) {
        ++errors_;
        Say(fmt::format("OID {}: {}", record.oid.value_or(0), StatusText(ErrorValue(record))));
      } else if (!IsWanted(record)) {
        Say(fmt::format("left out: {} is no {}", record.element.name, words_.name));
      } else if (!failed.contains(record.oid.value_or(0))) {
        Take(record);
      }
    }
    output_.PassOn();
    progress_.Update(written_ + errors_);
  }

  void Take(const Record& record) {
    if (words_.isItem && !seen_.Insert(*record.oid)) {
      throw Error(fmt::format("the answer makes no sense: document {}: OID {} once more",
                              documents_, *record.oid));
    }
    BeginOnce();
    writer_->Write(record);
    ++written_;
    if (options_.kind == RecordKind::kMessages) AddMissing(record);
  }

  void Say(const std::string& line) {
    if (line.empty()) return;
    progress_.Hide();
    console_.err << text::Shown(line) << '\n';
  }

  void AddMissing(const Record& message) {
    const std::string missing = MissingOf(message);
    if (missing.empty()) return;
    const std::string_view folder = message.element.ChildText("Folder");
    losses_.Add(RecordKind::kMessages,
                message.oidText.empty() ? fmt::format("a message in {}", folder)
                                        : fmt::format("message {} in {}", message.oidText, folder),
                missing);
  }

  void SayWhatIsThere(const std::filesystem::path& file) {
    TellResult(console_, {{"file", file.string()}, {"kind", words_.name}, {"count", written_}},
               fmt::format("{}: {}", file.string(),
                           terminal::Counted(written_, {words_.name, words_.plural})));
  }

  // What came complete takes the place of the file.
  void RefuseLess() const {
    if (!options_.output || options_.overwrite) return;
    if (!std::filesystem::is_regular_file(*options_.output)) return;
    const std::uint64_t held = CountRecords(files::ReadWholeFile(*options_.output),
                                            options_.format.value_or(words_.formats[0]));
    if (written_ >= held) return;
    throw Error(fmt::format(
        "{} holds {} {} and the handheld has sent {}: it stays as it is; --overwrite replaces it",
        options_.output->string(), held, held == 1 ? words_.name : words_.plural, written_));
  }

  void ReportPartial(const std::string& problem) {
    std::string where = "have been written";
    if (options_.output) {
      where = fmt::format("are in {0}{1}, and {0} is as it was", options_.output->string(),
                          kPartialSuffix);
    }
    TellProblem(console_, fmt::format("partial: {}; the {} {} received until then {}", problem,
                                      written_, words_.plural, where));
  }

  void ForgetVanished() {
    if (mapping_ == nullptr) return;
    std::vector<Oid> vanished;
    for (const auto& [oid, item] : mapping_->items()) {
      if (item.kind == words_.name && !seen_.Contains(oid)) vanished.push_back(oid);
    }
    for (const Oid oid : vanished) mapping_->Remove(oid);
  }

  const ConnectionOptions& connection_;
  const PullOptions& options_;
  const Console& console_;
  const KindWords& words_;
  Output output_;
  terminal::Progress progress_;
  Losses losses_;
  std::unique_ptr<Mapping> mapping_;
  std::unique_ptr<RecordWriter> writer_;
  bool begun_ = false;
  OidSet seen_;
  std::uint64_t documents_ = 0;
  std::uint64_t written_ = 0;
  std::uint64_t errors_ = 0;
};

bool PullGoesByZone(const PullOptions& options) {
  return (options.kind == RecordKind::kAppointments || options.kind == RecordKind::kTasks) &&
         options.format != RecordFormat::kXml;
}

}  // namespace

int Pull(const ConnectionOptions& connection, const PullOptions& options, const Console& console) {
  return RunGuarded(console, [&] {
    if (options.zoneIsGuessed && PullGoesByZone(options)) TellGuessedZone(options.zone, console);
    PullOptions named = options;
    if (!options.uids.empty()) {
      const Mapping known(MappingPath(options.mapping, connection.target));
      const std::vector<Oid> more = OidsOf(known, WordsOf(options.kind).name, options.uids);
      named.oids.insert(named.oids.end(), more.begin(), more.end());
    }
    return PullRun(connection, named, console).Run();
  });
}

}  // namespace desktop
