#include "desktop/wire/request.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text/little_endian.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::uint32_t kInvokeKind = 69;
constexpr std::uint32_t kQuitKind = 0xDEADBEEF;
constexpr std::string_view kLibrary = "corvane";
constexpr std::size_t kMostBody = 1024;
constexpr std::size_t kMostInput = 1024;
constexpr std::size_t kReplyHeader = 20;
constexpr std::uint32_t kUnknownRequest = 127;

std::string WithLength(const std::string& body) {
  std::string record;
  text::PutWord(record, static_cast<std::uint32_t>(body.size()));
  return record + body;
}

// Length in characters and UTF-16 text; the terminator counts, the agent compares up to it.
void PutName(std::string& body, std::string_view name) {
  text::PutWord(body, static_cast<std::uint32_t>(name.size() + 1));
  for (const char c : name) text::PutHalfWord(body, static_cast<unsigned char>(c));
  text::PutHalfWord(body, 0);
}

[[noreturn]] void ThrowNonsense(std::string_view function, const std::string& what) {
  throw Error(fmt::format("the answer to {} makes no sense: {}", function, what));
}

}  // namespace

std::string KindInput(RecordKind kind) {
  std::string input;
  text::PutWord(input, static_cast<std::uint32_t>(kind));
  return input;
}

std::size_t InputRoom(std::string_view function) {
  const std::size_t frame = 32 + 2 * (kLibrary.size() + 1) + 2 * (function.size() + 1);
  return std::min(kMostInput, kMostBody - frame);
}

std::string InvokeRecord(std::string_view function, std::string_view input, AnswerMode mode) {
  if (input.size() > InputRoom(function)) {
    throw Error(
        fmt::format("{} bytes of input do not fit into a request for {}", input.size(), function));
  }
  std::string body;
  text::PutWord(body, kInvokeKind);
  body.append(8, '\0');
  PutName(body, kLibrary);
  body.append(4, '\0');
  PutName(body, function);
  text::PutWord(body, static_cast<std::uint32_t>(input.size()));
  body += input;
  text::PutWord(body, static_cast<std::uint32_t>(mode));
  return WithLength(body);
}

std::string QuitRecord() {
  std::string body;
  text::PutWord(body, kQuitKind);
  body.append(8, '\0');
  return WithLength(body);
}

Reply Invoke(const ConnectionOptions& options, std::string_view function, std::string_view input) {
  Connection connection(options);
  connection.Send(InvokeRecord(function, input, AnswerMode::kBuffered));

  const std::string header = connection.Receive(kReplyHeader);
  const std::uint32_t total = text::WordAt(header, 0);
  const std::uint32_t count = text::WordAt(header, 16);
  if (total < 16 || total - 16 > kMostBytes) {
    ThrowNonsense(function, fmt::format("a reply of {} bytes", total));
  }
  if (total - 16 != count) {
    ThrowNonsense(function,
                  fmt::format("a reply of {} bytes with {} bytes of output", total, count));
  }
  if (text::WordAt(header, 8) != text::WordAt(header, 12))
    ThrowNonsense(function, "it has two statuses");

  Reply reply;
  reply.status = static_cast<std::int32_t>(text::WordAt(header, 8));
  reply.output = connection.Receive(count);
  return reply;
}

void SendStreamRequest(Connection& connection, std::string_view function, std::string_view input) {
  connection.Send(InvokeRecord(function, input, AnswerMode::kStreamed));
}

void AwaitStream(Connection& connection, std::string_view function) {
  const std::uint32_t status = connection.ReceiveWord();
  if (status == kUnknownRequest) {
    throw Error(fmt::format("the agent does not know the request {}", function));
  }
  if (status != 0) ThrowNonsense(function, fmt::format("it begins with 0x{:08X}", status));
}

}  // namespace desktop
