#include "handheld/tool/page_command.h"

#include <fmt/core.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/page/page_file.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "handheld/base/settings.h"
#include "handheld/tool/card_commands.h"
#include "handheld/tool/handheld_copy.h"
#include "handheld/tool/handheld_facts.h"
#include "handheld/tool/note_texts.h"
#include "handheld/tool/output.h"
#include "handheld/tool/records.h"
#include "handheld/tool/result.h"
#include "platform/disk_space.h"
#include "platform/windows.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

using page::Contents;

void AddVolume(const std::string& name, const char16_t* path, Contents& contents) {
  ce::ULONGLONG free = 0;
  ce::ULONGLONG total = 0;
  if (ce::GetDiskFreeSpaceExW(path, &free, &total, nullptr))
    contents.volumes.push_back({name, total, free});
}

void AddVolumes(ce::host::Handheld& handheld, Contents& contents) {
  AddVolume("Handheld", nullptr, contents);
  for (const Card& card : ListCards(handheld)) {
    const std::u16string path = u"\\" + text::FromUtf8Lossy(card.name);
    if (card.present) AddVolume(card.name, path.c_str(), contents);
  }
}

template <typename Record>
void AddRecords(Session& session, std::vector<Record>& records) {
  ForEachRecord<Record>(session,
                        [&](std::int64_t, const Record& record) { records.push_back(record); });
}

// All kinds as they are at one moment: each is read by a connection of its own, so that they are
// read from a copy.
void AddItems(Session& session, Contents& contents) {
  const WorkDirectory work(fs::temp_directory_path());
  if (!CopyStore(session, work.path() / session.handheld().storePath().filename())) return;
  constexpr char kRegistry[] = "registry.reg";
  fs::copy_file(session.handheld().directory() / kRegistry, work.path() / kRegistry);
  fs::create_directory(work.path() / "files");
  {
    Session copy(work.path(), Use::kLook);
    AddRecords(copy, contents.people);
    AddRecords(copy, contents.appointments);
    AddRecords(copy, contents.tasks);
    AddRecords(copy, contents.messages);
    AddRecords(copy, contents.calls);
  }
  ce::host::Handheld::MakeCurrent(&session.handheld());
}

std::string NameOfDirectory(const fs::path& directory) {
  const fs::path whole = fs::absolute(directory).lexically_normal();
  return (whole.has_filename() ? whole : whole.parent_path()).filename().string();
}

}  // namespace

Outcome MakePage(Session& session, const std::optional<fs::path>& file, const Report& report) {
  ce::host::Handheld& handheld = session.handheld();
  const calendar::Zone zone = session.Zone();
  Contents contents{
      .name = NameOfDirectory(handheld.directory()),
      .owner = text::ToUtf8Lossy(handheld.Text(ce::host::setting::kOwner, u"")),
      .country = CountryOf(handheld),
      .zone = zone,
      .now = LocalNow(zone),
  };
  AddItems(session, contents);
  ForEachNote(
      handheld.filesRoot(),
      [&](const std::string& path, const std::string& text) {
        contents.notes.push_back({path, text});
      },
      [&](const std::string& problem) { contents.remarks.push_back(problem); });
  AddVolumes(handheld, contents);
  Output output(file, report);
  page::WritePage(contents, [&](std::string_view piece) { output << piece; });
  output.Finish();
  for (const std::string& remark : contents.remarks)
    Tell(report.err, "corvane-device: {}\n", remark);
  if (file)
    TellResult(report, {{"file", file->string()}}, "{}: a page, to be opened in any browser\n",
               file->string());
  return contents.remarks.empty() ? Outcome::kDone : Outcome::kPartlyDone;
}

}  // namespace tool
