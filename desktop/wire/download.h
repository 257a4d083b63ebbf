// Streamed downloads: documents until a zero count, then the final status.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "desktop/wire/connection.h"
#include "desktop/wire/request.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// Called with each complete document, in order. What it throws ends the download.
using DocumentHandler = std::function<void(const std::string& document)>;

// All give the trailer's status. Throw Error when the download does not come to its trailer; the
// documents handed out until then are complete.
std::int32_t DownloadAll(const ConnectionOptions& options, RecordKind kind,
                         const DocumentHandler& onDocument);
// In requests of OidsPerRequest() identifiers, up to the first whose status is not 0.
std::int32_t DownloadSpecific(const ConnectionOptions& options, RecordKind kind,
                              std::span<const Oid> oids, const DocumentHandler& onDocument);

std::size_t OidsPerRequest();

}  // namespace desktop
