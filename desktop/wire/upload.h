// A streamed upload: chunks of records one way, one answer a record the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "desktop/wire/connection.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

struct RecordAnswer {
  Oid oid = 0;              // of the item as it stands now; 0 when adding or changing it failed
  std::int32_t result = 0;  // negative when it failed
};

class Upload {
 public:
  // Connects and begins the request. Throws Error.
  explicit Upload(const ConnectionOptions& options);

  // Sends the records in one document and hands out an answer for each, in their order. Each must
  // be an element that the agent takes in, or the answers do not pair.
  // Throws Error when the connection fails: the answers handed out until then hold, and nothing
  // is known of the other records. Throws Interrupted before anything is sent, never after.
  void Send(std::span<const std::string> records,
            const std::function<void(const RecordAnswer&)>& onAnswer);

  // Tells the agent that there are no more chunks.
  void Finish();

 private:
  Connection connection_;
};

// One document with these record elements under its root.
std::string DocumentOf(std::span<const std::string> records);

}  // namespace desktop
