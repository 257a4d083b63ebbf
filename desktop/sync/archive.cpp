#include "desktop/sync/archive.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/files/atomic_file.h"
#include "common/formats/items/identity.h"
#include "common/formats/json/message_json.h"
#include "desktop/records/phone_records.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/download.h"
#include "desktop/wire/error.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

struct Entry {
  std::string identity;
  std::string line;
};

std::string FileOf(const std::optional<formats::MessageTime>& time) {
  if (!time) return "undated.jsonl";
  return formats::FormatMessageTime(*time).substr(0, 7) + ".jsonl";
}

class Archive {
 public:
  Archive(const std::filesystem::path& folder, RecordKind kind)
      : folder_(folder), words_(WordsOf(kind)) {}

  void Take(const std::string& document) {
    for (const Record& record : ParseRecords(document)) {
      if (KindOfElement(record.element.name) != words_.name) continue;
      if (words_.kind == RecordKind::kCalls) {
        const formats::Call call = CallFromXml(record.element);
        entries_[FileOf(call.start)].push_back(
            {formats::IdentityOf(call), formats::CallToJson(call)});
      } else {
        const formats::TextMessage message = MessageFromXml(record.element);
        entries_[FileOf(message.time)].push_back(
            {formats::IdentityOf(message), formats::MessageToJson(message)});
      }
    }
  }

  ArchivePlan Finish() {
    ArchivePlan plan;
    for (const auto& [name, entries] : entries_) {
      ArchiveAddition addition = AdditionTo(name, entries);
      if (addition.added > 0) plan.additions.push_back(std::move(addition));
    }
    return plan;
  }

 private:
  ArchiveAddition AdditionTo(const std::string& name, const std::vector<Entry>& entries) const {
    ArchiveAddition addition{std::filesystem::path(words_.argument) / name, {}, 0};
    std::error_code error;
    if (std::filesystem::exists(folder_ / addition.file, error)) {
      addition.bytes = files::ReadWholeFile(folder_ / addition.file);
    }
    std::map<std::string, std::size_t> kept;  // by identity, how many
    formats::ItemSink sink;
    sink.message = [&](const auto& message, std::size_t) { ++kept[formats::IdentityOf(message)]; };
    sink.call = [&](const auto& call, std::size_t) { ++kept[formats::IdentityOf(call)]; };
    formats::ReadJsonLines(addition.bytes, sink);
    if (!addition.bytes.empty() && addition.bytes.back() != '\n') addition.bytes += '\n';
    for (const Entry& entry : entries) {
      if (const auto known = kept.find(entry.identity); known != kept.end() && known->second > 0) {
        --known->second;
        continue;
      }
      addition.bytes += entry.line + '\n';
      ++addition.added;
    }
    return addition;
  }

  const std::filesystem::path& folder_;
  const KindWords& words_;
  std::map<std::string, std::vector<Entry>> entries_;  // by file
};

}  // namespace

ArchivePlan PlanArchive(const ConnectionOptions& connection, const std::filesystem::path& folder,
                        RecordKind kind) {
  Archive archive(folder, kind);
  const std::int32_t status =
      DownloadAll(connection, kind, [&](const std::string& document) { archive.Take(document); });
  ArchivePlan plan = archive.Finish();
  if (status != 0 && status != kNotSupported) {
    throw Error(fmt::format("the handheld broke off with its {}: {}", WordsOf(kind).plural,
                            StatusText(status)));
  }
  if (status == kNotSupported) {
    plan.notices.push_back(
        fmt::format("{}: the handheld does not send any, as one without a "
                    "telephone",
                    WordsOf(kind).argument));
  }
  return plan;
}

void Execute(const ArchiveAddition& addition, const std::filesystem::path& folder) {
  const std::filesystem::path path = folder / addition.file;
  files::MakePrivateDirectories(path.parent_path());
  files::AtomicFile file(path);
  file.Write(addition.bytes);
  file.Commit();
}

}  // namespace desktop
