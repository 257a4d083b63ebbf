#include "desktop/commands/commands_delete.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <string_view>

#include "desktop/commands/commands_push.h"
#include "desktop/commands/result.h"
#include "desktop/records/phone_records.h"
#include "desktop/transfer/mapping.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"

namespace desktop {
namespace {

// Whether there is leave to delete all, or somebody to be asked for it.
bool CanBeAllowed(bool yes, std::string_view what, const Console& console) {
  if (yes || console.inIsTerminal) return true;
  console.err << fmt::format("corvane-desktop: deleting all {} needs --yes\n", what);
  return false;
}

bool IsAllowed(const ConnectionOptions& connection, bool yes, std::string_view what,
               const Console& console) {
  if (yes) return true;
  console.err << fmt::format("Delete all {} on the handheld at {}? [y/N] ", what,
                             ToString(connection.target))
              << std::flush;
  const std::string answer = ReadAnswer(console, connection.interruptFd);
  if (answer == "y" || answer == "Y" || answer == "yes") return true;
  console.err << "nothing deleted\n";
  return false;
}

int DeleteAll(const ConnectionOptions& connection, const DeleteOptions& options,
              const Console& console) {
  const KindWords& words = WordsOf(options.kind);
  if (!CanBeAllowed(options.yes, words.plural, console)) return kUsage;
  std::optional<Mapping> mapping;
  if (words.isItem) {
    mapping.emplace(MappingPath(options.mapping, connection.target));
  }
  if (!IsAllowed(connection, options.yes, words.plural, console)) return kFailed;
  const std::int32_t status = Invoke(connection, kDeleteAll, KindInput(options.kind)).status;
  if (status == kNotSupported && options.kind == RecordKind::kMessages) {
    throw Error(fmt::format("{}: {}", kNoMessageStore, StatusText(status)));
  }
  if (status != 0) {
    throw Error(fmt::format("not all {} could be deleted: {}", words.plural, StatusText(status)));
  }
  if (mapping) {
    mapping->RemoveKind(words.name);
    mapping->Save();
  }
  TellResult(console, {{"kind", words.name}, {"deleted", "all"}},
             fmt::format("all {} deleted{}", words.plural,
                         words.isItem ? "" : ", but for drafts and deleted items"));
  return kDone;
}

int DeleteSome(const ConnectionOptions& connection, const DeleteOptions& options,
               const Console& console) {
  std::vector<Oid> oids = options.oids;
  if (!options.uids.empty()) {
    const Mapping known(MappingPath(options.mapping, connection.target));
    const std::vector<Oid> more = OidsOf(known, WordsOf(options.kind).name, options.uids);
    oids.insert(oids.end(), more.begin(), more.end());
  }
  std::vector<PushRecord> records;
  records.reserve(oids.size());
  for (const Oid oid : oids) records.push_back(DeletionOf(options.kind, oid));
  return RunPush(connection, {}, options.mapping, records, {.label = "Deleting", .each = true},
                 console);
}

}  // namespace

int Delete(const ConnectionOptions& connection, const DeleteOptions& options,
           const Console& console) {
  return RunGuarded(console, [&] {
    return options.oids.empty() && options.uids.empty() ? DeleteAll(connection, options, console)
                                                        : DeleteSome(connection, options, console);
  });
}

}  // namespace desktop
