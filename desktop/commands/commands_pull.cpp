#include "desktop/commands/commands_pull.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>
#include <span>
#include <string>

#include "common/files/atomic_file.h"
#include "desktop/commands/progress.h"
#include "desktop/sync/mapping.h"
#include "desktop/sync/record_writers.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

constexpr std::string_view kPartialSuffix = ".partial";

std::int32_t ErrorValue(const Record& error) {
  const std::string_view text = error.element.ChildText("Value");
  std::int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// The one that people's other programs take.
PullFormat UsualFormat(RecordKind kind) {
  return WordsOf(kind).name == kContactKind ? PullFormat::kVcf : PullFormat::kIcs;
}

// Holds back what goes to the standard output until it is known to be whole.
class Output {
 public:
  Output(const std::optional<std::filesystem::path>& path, const Console& console)
      : console_(console) {
    if (path) file_ = std::make_unique<files::AtomicFile>(*path);
  }

  void Write(std::string_view bytes) {
    if (file_ != nullptr) {
      file_->Write(bytes);
    } else {
      held_ += bytes;
    }
  }

  void Commit(std::string_view suffix) {
    if (file_ != nullptr) return file_->Commit(suffix);
    console_.out << held_;
    FlushOutput(console_);
  }

 private:
  const Console& console_;
  std::unique_ptr<files::AtomicFile> file_;
  std::string held_;
};

class PullRun {
 public:
  PullRun(const ConnectionOptions& connection, const PullOptions& options, const Console& console)
      : connection_(connection),
        options_(options),
        console_(console),
        output_(options.output, console),
        words_(WordsOf(options.kind)),
        progress_(console.err, console.errIsTerminal, fmt::format("Pulling {}", words_.plural),
                  Total(options)) {
    if (UsualFormat(options.kind) == Format()) {
      mapping_ = std::make_unique<Mapping>(options.mapping ? *options.mapping
                                                           : DefaultMappingPath(connection.target));
    }
    writer_ = MakeWriter();
  }

  int Run() {
    output_.Write(writer_->Begin());
    const std::string problem = DownloadUntilProblem();
    progress_.Hide();
    if (!problem.empty() && written_ == 0) throw Error(problem);
    if (problem.empty() && options_.oids.empty()) ForgetVanished();
    // An output whose UIDs the mapping does not know would be added a second time when pushed.
    if (mapping_ != nullptr) mapping_->Save();
    output_.Write(writer_->End());
    output_.Commit(problem.empty() ? std::string_view() : kPartialSuffix);
    for (const std::string& loss : writer_->Losses()) console_.err << loss << '\n';
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

  PullFormat Format() const { return options_.format.value_or(UsualFormat(options_.kind)); }

  bool IsWanted(const Record& record) const {
    return KindOfElement(record.element.name) == words_.name;
  }

  std::unique_ptr<RecordWriter> MakeWriter() {
    switch (Format()) {
      case PullFormat::kXml:
        return MakeXmlWriter();
      case PullFormat::kJson:
        return MakeJsonWriter(options_.zone);
      case PullFormat::kIcs:
        return MakeICalendarWriter(options_.zone, *mapping_);
      case PullFormat::kVcf:
        break;
    }
    return MakeVCardWriter(options_.version, *mapping_);
  }

  // What kept the download from its good end; empty for nothing.
  std::string DownloadUntilProblem() {
    try {
      const std::int32_t status = DownloadWanted();
      if (status == 0) return {};
      return fmt::format("the handheld broke off: {}", StatusText(status));
    } catch (const Interrupted&) {
      throw;
    } catch (const Error& problem) {
      return problem.what();
    }
  }

  std::int32_t DownloadWanted() {
    const auto onDocument = [this](const std::string& document) { TakeDocument(document); };
    if (options_.oids.empty()) return DownloadAll(connection_, options_.kind, onDocument);
    std::span<const Oid> left = options_.oids;
    std::int32_t status = 0;
    while (!left.empty() && status == 0) {
      const auto batch = left.first(std::min(left.size(), OidsPerRequest()));
      status = DownloadSpecific(connection_, options_.kind, batch, onDocument);
      left = left.subspan(batch.size());
    }
    return status;
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
    const std::vector<Record> records = Parse(document);
    std::set<Oid> failed;
    for (const Record& record : records) {
      if (record.element.name == "Error") failed.insert(record.oid.value_or(0));
      if (IsWanted(record) && !record.oid) {
        throw Error(fmt::format("the answer makes no sense: document {}: {} without an OID",
                                documents_, words_.withArticle));
      }
    }
    for (const Record& record : records) {
      if (record.element.name == "Error") {
        ReportError(record);
      } else if (!IsWanted(record)) {
        progress_.Hide();
        console_.err << fmt::format("left out: {} is no {}\n", record.element.name, words_.name);
      } else if (!failed.contains(*record.oid)) {  // one that failed midway is there in part
        output_.Write(writer_->Write(record));
        seen_.insert(*record.oid);
        ++written_;
      }
    }
    progress_.Update(written_ + errors_);
  }

  void ReportError(const Record& error) {
    ++errors_;
    progress_.Hide();
    console_.err << fmt::format("OID {}: {}\n", error.oid.value_or(0),
                                StatusText(ErrorValue(error)));
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

  void ForgetVanished() {
    if (mapping_ == nullptr) return;
    std::vector<Oid> vanished;
    for (const auto& [oid, item] : mapping_->items()) {
      if (item.kind == words_.name && !seen_.contains(oid)) vanished.push_back(oid);
    }
    for (const Oid oid : vanished) mapping_->Remove(oid);
  }

  const ConnectionOptions& connection_;
  const PullOptions& options_;
  const Console& console_;
  Output output_;
  const KindWords& words_;
  Progress progress_;
  std::unique_ptr<Mapping> mapping_;
  std::unique_ptr<RecordWriter> writer_;
  std::set<Oid> seen_;
  std::uint64_t documents_ = 0;
  std::uint64_t written_ = 0;
  std::uint64_t errors_ = 0;
};

}  // namespace

bool IsFormatOf(PullFormat format, RecordKind kind) {
  return format == PullFormat::kXml || format == PullFormat::kJson || format == UsualFormat(kind);
}

int Pull(const ConnectionOptions& connection, const PullOptions& options, const Console& console) {
  return RunGuarded(console, [&] { return PullRun(connection, options, console).Run(); });
}

}  // namespace desktop
