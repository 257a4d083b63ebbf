#include "desktop/wire/upload.h"

#include <fmt/format.h>

#include "common/text/little_endian.h"
#include "desktop/wire/error.h"
#include "desktop/wire/request.h"

namespace desktop {
namespace {

constexpr std::size_t kAnswer = 8;

}  // namespace

std::string DocumentOf(std::span<const std::string> records) {
  std::string document = R"(<?xml version="1.0" encoding="UTF-8"?><root>)";
  for (const std::string& record : records) document += record;
  return document + "</root>";
}

Upload::Upload(const ConnectionOptions& options) : connection_(options) {
  SendStreamRequest(connection_, kUpload, {});
  AwaitStream(connection_, kUpload);
}

void Upload::Send(std::span<const std::string> records) {
  const std::string document = DocumentOf(records);
  if (document.size() > kMostBytes) {
    throw Error(fmt::format("a chunk of {} bytes is too large: lower --chunk", document.size()));
  }
  std::string chunk;
  text::PutWord(chunk, static_cast<std::uint32_t>(document.size()));
  chunk += document;
  connection_.HoldInterruption(true);
  connection_.Send(chunk);
}

RecordAnswer Upload::Receive() {
  const std::string bytes = connection_.Receive(kAnswer);
  return {text::WordAt(bytes, 0), static_cast<std::int32_t>(text::WordAt(bytes, 4))};
}

bool Upload::HasAnswer() {
  return connection_.HasArrived(kAnswer);
}

void Upload::Finish() {
  std::string end;
  text::PutWord(end, 0);
  connection_.Send(end);
}

}  // namespace desktop
