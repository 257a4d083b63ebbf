// Any bytes on a connection: the agent answers or closes it, nothing of the request stays behind,
// and the store stays sound.
//
// The first byte chooses a request by its place in the tables, and the others are its input; for a
// streamed one a length byte parts the input from what follows on the stream. With 0 the rest is
// the connection as it stands.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/core/listener.h"
#include "agent/core/request_dispatcher.h"
#include "agent/request_handler.h"
#include "common/text/unicode.h"
#include "fuzz/require.h"
#include "handheld/base/com_object.h"
#include "handheld/store/store_check.h"
#include "platform/sockets.h"
#include "tests/support/desktop_end.h"
#include "tests/support/test_handheld.h"
#include "tests/support/wire/wire_bytes.h"

namespace {

using corvane::testing::Chunk;
using corvane::testing::Invoke;
using corvane::testing::Record;
using corvane::testing::TestHandheld;
using corvane::testing::Word;
using fuzz::Require;

constexpr int kInputsOfAHandheld = 200;

std::string Serve(std::string connection) {
  corvane::testing::DesktopEnd desktop({std::move(connection)},
                                       corvane::testing::AfterSending::kClose);
  Require(corvane::handleRequest(reinterpret_cast<void*>(desktop.socket())) == 0,
          "a request thread ends with 0");
  // After a buffered request the platform would wait for the desktop to close its end.
  static_cast<void>(ce::closesocket(desktop.socket()));
  return desktop.Received();
}

std::string InvokeOf(const corvane::RequestEntry& entry, std::string_view input, bool streamed) {
  return Record(Invoke{.function = text::ToUtf8Lossy(entry.name),
                       .input = std::string(input),
                       .streamFlag = streamed ? 1u : 0u}
                    .Body());
}

std::string ConnectionOf(std::uint8_t choice, std::string_view bytes) {
  const auto streamed = corvane::StreamedRequests();
  const auto buffered = corvane::BufferedRequests();
  std::size_t place = choice % (1 + streamed.size() + buffered.size());
  if (place == 0) return std::string(bytes);
  if (--place >= streamed.size()) return InvokeOf(buffered[place - streamed.size()], bytes, false);
  if (bytes.empty()) return InvokeOf(streamed[place], {}, true);
  const auto length = static_cast<std::uint8_t>(bytes.front());
  bytes.remove_prefix(1);
  return InvokeOf(streamed[place], bytes.substr(0, length), true) +
         std::string(bytes.substr(std::min<std::size_t>(length, bytes.size())));
}

std::unique_ptr<TestHandheld> FreshHandheld() {
  auto handheld = std::make_unique<TestHandheld>();
  Serve(InvokeOf(corvane::StreamedRequests()[2], {}, true) +
        Chunk("<A><CONTACT><FIRST_NAME>Anna</FIRST_NAME></CONTACT>"
              "<APPOINTMENT><SUBJECT>Lunch</SUBJECT></APPOINTMENT>"
              "<TASK><SUBJECT>Bread</SUBJECT></TASK></A>") +
        Word(0));
  return handheld;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::unique_ptr<TestHandheld> handheld = FreshHandheld();
  static int inputs = 0;
  if (size == 0) return 0;
  Serve(ConnectionOf(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1}));
  Require(ce::host::LiveComObjects() == 0, "no object outlives its request");
  Require(corvane::ActiveRequestCount == 1, "no request counts on");
  corvane::QuitRequested = 0;
  if (++inputs % kInputsOfAHandheld == 0) {
    for (const std::string& problem : ce::host::CheckStore(**handheld)) {
      Require(false, problem.c_str());
    }
    handheld.reset();
    handheld = FreshHandheld();
  }
  return 0;
}
