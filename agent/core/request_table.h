// The names that the agent answers to. Defined by the program that links the dispatcher.
#pragma once

#include <span>
#include <string_view>

#include "agent/request_handler.h"

namespace corvane {

struct RequestEntry {
  std::u16string_view name;
  RequestHandler handler;
};

// Searched in order; names match whole and with their case.
std::span<const RequestEntry> StreamedRequests();
std::span<const RequestEntry> BufferedRequests();

}  // namespace corvane
