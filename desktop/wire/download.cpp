#include "desktop/wire/download.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "common/text/little_endian.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

// One request, sent at once and read by Run.
class Download {
 public:
  Download(const ConnectionOptions& options, std::string_view function, const std::string& input)
      : connection_(options), function_(function), most_(options.mostDownloaded) {
    SendStreamRequest(connection_, function, input);
  }

  std::int32_t Run(const DocumentHandler& onDocument) {
    AwaitStream(connection_, function_);
    while (const std::uint32_t count = connection_.ReceiveWord()) {
      if (count > kMostBytes) {
        throw Error(fmt::format("the answer to {} makes no sense: a document of {} bytes",
                                function_, count));
      }
      if (connection_.bytesReceived() + count > most_) {
        throw Error(fmt::format("more than {} MiB came in one answer, which no handheld holds",
                                most_ >> 20));
      }
      onDocument(connection_.Receive(count));
    }
    return static_cast<std::int32_t>(connection_.ReceiveWord());
  }

 private:
  Connection connection_;
  std::string_view function_;
  std::uint64_t most_;
};

// The requests for any number of identifiers, one after the other. The handheld gets the next one
// while the answer to one is read, and does not wait for its reader in between.
class SpecificDownloads {
 public:
  SpecificDownloads(const ConnectionOptions& options, RecordKind kind, std::span<const Oid> oids)
      : options_(options), kind_(kind), left_(oids) {}

  std::int32_t Run(const DocumentHandler& onDocument) {
    std::int32_t status = 0;
    while (status == 0 && (next_ || !left_.empty())) {
      if (!next_) Begin();
      const std::unique_ptr<Download> current = std::move(next_);
      BeginEarly();
      status = current->Run(onDocument);
    }
    return status;
  }

 private:
  void Begin() {
    const auto batch = left_.first(std::min(left_.size(), OidsPerRequest()));
    std::string input = KindInput(kind_);
    for (const Oid oid : batch) text::PutWord(input, oid);
    next_ = std::make_unique<Download>(options_, kDownloadSpecific, input);
    left_ = left_.subspan(batch.size());
  }

  void BeginEarly() {
    if (left_.empty()) return;
    try {
      Begin();
    } catch (const Interrupted&) {
      throw;
    } catch (const Error&) {
      // The answer under way is worth having; then it is tried again.
    }
  }

  const ConnectionOptions& options_;
  const RecordKind kind_;
  std::span<const Oid> left_;
  std::unique_ptr<Download> next_;
};

}  // namespace

std::int32_t DownloadAll(const ConnectionOptions& options, RecordKind kind,
                         const DocumentHandler& onDocument) {
  return Download(options, kDownloadAll, KindInput(kind)).Run(onDocument);
}

std::int32_t DownloadSpecific(const ConnectionOptions& options, RecordKind kind,
                              std::span<const Oid> oids, const DocumentHandler& onDocument) {
  return SpecificDownloads(options, kind, oids).Run(onDocument);
}

std::size_t OidsPerRequest() {
  return InputRoom(kDownloadSpecific) / 4 - 1;
}

}  // namespace desktop
