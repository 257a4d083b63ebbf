#include "desktop/commands/commands_keys.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "desktop/wire/error.h"
#include "desktop/wire/request.h"
#include "desktop/wire/status_text.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

std::vector<std::string> FetchKeys(const ConnectionOptions& connection, RecordKind kind) {
  const Reply reply = Invoke(connection, kGetKeys, KindInput(kind));
  if (reply.status != 0) {
    throw Error(fmt::format("the handheld does not tell its keys: {}", StatusText(reply.status)));
  }
  // So it answers what it does not know.
  if (reply.output.empty()) {
    throw Error(fmt::format("the agent does not know the request {}", kGetKeys));
  }
  std::vector<std::string> keys;
  try {
    for (const Record& record : ParseRecords(reply.output)) keys.push_back(record.element.name);
  } catch (const Error& problem) {
    throw Error(fmt::format("the answer to {} makes no sense: {}", kGetKeys, problem.what()));
  }
  return keys;
}

}  // namespace

int PrintKeys(const ConnectionOptions& connection, RecordKind kind, bool json,
              const Console& console) {
  return RunGuarded(console, [&] {
    const std::vector<std::string> keys = FetchKeys(connection, kind);
    if (json) {
      console.out << nlohmann::json(keys).dump() << '\n';
    } else {
      for (const std::string& key : keys) console.out << key << '\n';
    }
    FlushOutput(console);
    return kDone;
  });
}

}  // namespace desktop
