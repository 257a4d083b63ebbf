#include "desktop/commands_delete.h"

#include <fmt/format.h>
#include <poll.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "desktop/error.h"
#include "desktop/mapping.h"
#include "desktop/push_run.h"
#include "desktop/request.h"
#include "desktop/status_text.h"
#include "desktop/words.h"

namespace desktop {
namespace {

void AwaitInput(const Console& console, int interruptFd) {
  if (console.inFd < 0) return;
  pollfd watched[2] = {{console.inFd, POLLIN, 0}, {interruptFd, POLLIN, 0}};
  while (poll(watched, 2, -1) < 0 && errno == EINTR) {
  }
  if (watched[1].revents != 0) throw Interrupted();
}

bool Confirm(const ConnectionOptions& connection, std::string_view what, const Console& console) {
  console.err << fmt::format("Delete all {} on the handheld at {}? [y/N] ", what,
                             ToString(connection.target))
              << std::flush;
  AwaitInput(console, connection.interruptFd);
  std::string answer;
  std::getline(console.in, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
}

int DeleteAll(const ConnectionOptions& connection, const DeleteOptions& options,
              const Console& console) {
  const KindWords& words = WordsOf(options.kind);
  if (!options.yes && !console.inIsTerminal) {
    console.err << fmt::format("corvane-desktop: deleting all {} needs --yes\n", words.plural);
    return kUsage;
  }
  Mapping mapping(options.mapping ? *options.mapping : DefaultMappingPath(connection.target));
  if (!options.yes && !Confirm(connection, words.plural, console)) {
    console.err << "nothing deleted\n";
    return kFailed;
  }
  std::string input;
  PutWord(input, static_cast<std::uint32_t>(options.kind));
  const Reply reply = Invoke(connection, kDeleteAll, input);
  if (reply.status != 0) {
    throw Error(
        fmt::format("not all {} could be deleted: {}", words.plural, StatusText(reply.status)));
  }
  mapping.RemoveKind(words.name);
  mapping.Save();
  console.out << fmt::format("all {} deleted\n", words.plural);
  FlushOutput(console);
  return kDone;
}

int DeleteSome(const ConnectionOptions& connection, const DeleteOptions& options,
               const Console& console) {
  std::vector<PushRecord> records;
  for (const Oid oid : options.oids) records.push_back(DeletionOf(options.kind, oid));
  return RunPush(connection, {}, options.mapping, records, {"Deleting"}, console);
}

}  // namespace

int Delete(const ConnectionOptions& connection, const DeleteOptions& options,
           const Console& console) {
  return RunGuarded(console, [&] {
    return options.oids.empty() ? DeleteAll(connection, options, console)
                                : DeleteSome(connection, options, console);
  });
}

}  // namespace desktop
