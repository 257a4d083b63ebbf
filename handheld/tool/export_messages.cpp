#include "handheld/tool/export_messages.h"

#include <fmt/core.h>

#include <string>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/json/message_json.h"
#include "handheld/tool/message_walk.h"
#include "handheld/tool/output.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using formats::Call;
using formats::TextMessage;

template <typename Record>
struct BackupWriterOf;
template <>
struct BackupWriterOf<TextMessage> {
  using Type = formats::MessageBackupWriter;
};
template <>
struct BackupWriterOf<Call> {
  using Type = formats::CallBackupWriter;
};

std::string ToJson(const TextMessage& message) {
  return formats::MessageToJson(message);
}
std::string ToJson(const Call& call) {
  return formats::CallToJson(call);
}

template <typename Record>
void WriteBackup(Session& session, std::size_t count, Output& output) {
  OutputStream stream(output);
  typename BackupWriterOf<Record>::Type writer(stream, count);
  ForEachRecord<Record>(session, [&](std::int64_t, const Record& record) { writer.Write(record); });
  writer.Finish();
}

template <typename Record>
void WriteJsonLines(Session& session, Output& output) {
  ForEachRecord<Record>(
      session, [&](std::int64_t, const Record& record) { output.Write(ToJson(record) + "\n"); });
}

template <typename Record>
Outcome Export(Session& session, const std::optional<fs::path>& file, MessageFormat format,
               const Report& report) {
  const std::size_t count = CountRecords<Record>(session);
  Output output(file, report);
  if (format == MessageFormat::kBackup)
    WriteBackup<Record>(session, count, output);
  else
    WriteJsonLines<Record>(session, output);
  output.Finish();
  if (file) fmt::print(report.out, "{}: {}\n", file->string(), Counted(count, kRecordName<Record>));
  return Outcome::kDone;
}

}  // namespace

Outcome ExportMessages(Session& session, const std::optional<fs::path>& file, MessageFormat format,
                       const Report& report) {
  return Export<TextMessage>(session, file, format, report);
}

Outcome ExportCalls(Session& session, const std::optional<fs::path>& file, MessageFormat format,
                    const Report& report) {
  return Export<Call>(session, file, format, report);
}

}  // namespace tool
