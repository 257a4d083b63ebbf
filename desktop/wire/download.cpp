#include "desktop/wire/download.h"

#include <fmt/format.h>

#include "common/text/little_endian.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

std::int32_t Download(const ConnectionOptions& options, std::string_view function,
                      const std::string& input, const DocumentHandler& onDocument) {
  Connection connection(options);
  BeginStream(connection, function, input);
  while (const std::uint32_t count = connection.ReceiveWord()) {
    if (count > kMostBytes) {
      throw Error(
          fmt::format("the answer to {} makes no sense: a document of {} bytes", function, count));
    }
    onDocument(connection.Receive(count));
  }
  return static_cast<std::int32_t>(connection.ReceiveWord());
}

}  // namespace

std::int32_t DownloadAll(const ConnectionOptions& options, RecordKind kind,
                         const DocumentHandler& onDocument) {
  return Download(options, kDownloadAll, KindInput(kind), onDocument);
}

std::int32_t DownloadSpecific(const ConnectionOptions& options, RecordKind kind,
                              std::span<const Oid> oids, const DocumentHandler& onDocument) {
  std::string input = KindInput(kind);
  for (const Oid oid : oids) text::PutWord(input, oid);
  return Download(options, kDownloadSpecific, input, onDocument);
}

std::size_t OidsPerRequest() {
  return InputRoom(kDownloadSpecific) / 4 - 1;
}

}  // namespace desktop
