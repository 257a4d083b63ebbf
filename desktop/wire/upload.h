// A streamed upload: chunks of records one way, one answer a record the other.
#pragma once

#include <cstddef>
#include <cstdint>
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

  // Throws Interrupted when there is an interruption.
  void ThrowIfInterrupted() const { connection_.ThrowIfInterrupted(); }

  // Sends the records in one document, without waiting for their answers. Each must be an element
  // that the agent takes in, or the answers do not pair. An answer may be sent as early as its
  // record, so they are to be taken before thousands are on the way.
  // Throws Error when the connection fails: nothing is known of records without an answer. Never
  // Interrupted: what was begun is brought to its end.
  void Send(std::span<const std::string> records);

  // The answer of the first record that has not had one, in the order in which they were sent.
  // Throws as above.
  RecordAnswer Receive();
  // Whether there is one to be had without waiting.
  bool HasAnswer();

  // Tells the agent that there are no more chunks.
  void Finish();

 private:
  Connection connection_;
};

// One document with these record elements under its root.
std::string DocumentOf(std::span<const std::string> records);

}  // namespace desktop
