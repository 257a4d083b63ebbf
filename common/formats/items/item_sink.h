// Where the readers of messages and calls hand over what they have read.
#pragma once

#include <cstddef>
#include <functional>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"

namespace formats {

// `line` is that of the file where the item begins, from 1. Either may be left empty. An exception
// ends the reading and comes out of it.
struct ItemSink {
  std::function<void(const TextMessage& message, std::size_t line)> message;
  std::function<void(const Call& call, std::size_t line)> call;
};

}  // namespace formats
