#include "agent/core/request_dispatcher.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "agent/core/corvane_stream.h"
#include "agent/core/listener.h"
#include "agent/log/log.h"
#include "agent/request_handler.h"
#include "platform/memory.h"
#include "platform/status.h"
#include "platform/threads.h"

namespace corvane {
namespace {

constexpr std::size_t kDllNameLengthAt = 12;
constexpr std::size_t kDllNameAt = 16;

static_assert(std::endian::native == std::endian::little, "the wire's integers are copied");

// Counts the request for as long as it is served.
class ActiveRequest {
 public:
  ActiveRequest() { ce::InterlockedIncrement(&ActiveRequestCount); }
  ActiveRequest(const ActiveRequest&) = delete;
  ActiveRequest& operator=(const ActiveRequest&) = delete;
  ~ActiveRequest() { ce::InterlockedDecrement(&ActiveRequestCount); }
};

ce::DWORD WordAt(const RequestBody& body, std::size_t offset) {
  return InputWord(body.data() + offset);
}

// What an invoke body asks for.
struct Invocation {
  // Zero behind the N bytes, so that a text in them ends within.
  alignas(8) std::array<ce::BYTE, kMaxInput + 8> input{};
  std::array<char16_t, kBodyMemory / sizeof(char16_t)> text;  // the body, seen as text
  ce::DWORD inputCount = 0;
  const char16_t* dllName = nullptr;
  const char16_t* functionName = nullptr;
  bool isStreamed = false;
};

ce::HRESULT Refuse(const char16_t* why) {
  LOG(why);
  return kMalformedBody;
}

ce::HRESULT Parse(const RequestBody& body, Invocation& invocation) {
  const ce::DWORD dllNameLength = WordAt(body, kDllNameLengthAt);
  if (dllNameLength > kMaxNameLength) return Refuse(u"dllNameLength is too long");
  const std::size_t functionNameAt = kDllNameAt + 2 * dllNameLength + 8;
  const ce::DWORD functionNameLength = WordAt(body, functionNameAt - 4);
  if (functionNameLength > kMaxNameLength) return Refuse(u"functionNameLength is too long");
  const std::size_t inputAt = functionNameAt + 2 * functionNameLength + 4;
  invocation.inputCount = WordAt(body, inputAt - 4);
  if (invocation.inputCount > kMaxInput) return Refuse(u"inputCount is too big");

  std::memcpy(invocation.input.data(), body.data() + inputAt, invocation.inputCount);
  invocation.isStreamed = WordAt(body, inputAt + invocation.inputCount) != 0;
  // The names end at their zero, wherever in the body that is: their lengths do not count.
  std::memcpy(invocation.text.data(), body.data(), body.size());
  invocation.dllName = invocation.text.data() + kDllNameAt / sizeof(char16_t);
  invocation.functionName = invocation.text.data() + functionNameAt / sizeof(char16_t);
  return ce::S_OK;
}

RequestHandler FindHandler(std::span<const RequestEntry> table, std::u16string_view name) {
  const auto entry = std::ranges::find(table, name, &RequestEntry::name);
  return entry == table.end() ? nullptr : entry->handler;
}

ce::HRESULT AnswerStreamed(ce::SOCKET socket, const Invocation& invocation, ce::DWORD& outputCount,
                           ce::BYTE*& output) {
  CorvaneStream stream;
  stream.Attach(socket);
  const RequestHandler handler = FindHandler(StreamedRequests(), invocation.functionName);
  const ce::HRESULT word = handler ? ce::S_OK : kUnknownStreamedName;
  ce::HRESULT status = stream.Write(&word, sizeof(word), nullptr);
  if (handler && ce::Succeeded(status)) {
    status =
        handler(invocation.inputCount, invocation.input.data(), &outputCount, &output, &stream);
  }
  stream.Release();
  return status;
}

// The status, or the last error when the bytes cannot be sent.
ce::HRESULT Send(ce::SOCKET socket, const void* bytes, ce::DWORD count, ce::HRESULT status,
                 ce::INT flags = 0) {
  const ce::INT sent = ce::send(socket, bytes, static_cast<ce::INT>(count), flags);
  return sent == ce::SOCKET_ERROR ? ce::LastErrorStatus() : status;
}

ce::HRESULT AnswerBuffered(ce::SOCKET socket, const Invocation& invocation, ce::DWORD& outputCount,
                           ce::BYTE*& output) {
  ce::HRESULT status = ce::S_OK;
  if (const RequestHandler handler = FindHandler(BufferedRequests(), invocation.functionName)) {
    status =
        handler(invocation.inputCount, invocation.input.data(), &outputCount, &output, nullptr);
  }
  const ce::DWORD count = ce::Succeeded(status) ? outputCount : 0;
  constexpr ce::DWORD kRestOfHeader = sizeof(ReplyHeader) - sizeof(ReplyHeader::totalLength);
  const ReplyHeader header{count + kRestOfHeader, 0, status, status, count};
  status = Send(socket, &header, sizeof(header), status, count > 0 ? ce::MSG_PARTIAL : 0);
  if (ce::Succeeded(status) && outputCount > 0) {
    status = Send(socket, output, outputCount, status);
  }
  LOG(u"hr after send = %ld", status);
  return status;
}

void Serve(ce::SOCKET socket) {
  ce::DWORD length = 0;
  if (ce::recv(socket, &length, sizeof(length), 0) != ce::INT{sizeof(length)}) return;
  if (length > kMaxBody) return;
  // One piece, as the desktop sends it: a body in several is dropped.
  RequestBody body{};
  const auto wanted = static_cast<ce::INT>(length);
  if (ce::recv(socket, body.data(), wanted, 0) != wanted) return;
  switch (WordAt(body, 0)) {
    case kInvokeRequest:
      static_cast<void>(RequestDispatcher(socket, body));
      break;
    case kQuitRequest:
      LOG(u"Got Quit Request");
      QuitRequested.store(1, std::memory_order_relaxed);
      break;
    default:
      LOG(u"Got Unknown Request");
  }
}

}  // namespace

ce::DWORD handleRequest(void* socket) {
  LOG(u"handleRequest");
  const ActiveRequest active;
  Serve(reinterpret_cast<ce::SOCKET>(socket));
  return 0;
}

ce::HRESULT RequestDispatcher(ce::SOCKET socket, const RequestBody& body) {
  Invocation invocation;
  if (const ce::HRESULT status = Parse(body, invocation); status != ce::S_OK) return status;
  LOG(u"inputCount = %d", invocation.inputCount);
  LOG(u"dllName = %s", invocation.dllName);
  LOG(u"functionName = %s", invocation.functionName);

  ce::DWORD outputCount = 0;
  ce::BYTE* output = nullptr;
  const ce::HRESULT status = invocation.isStreamed
                                 ? AnswerStreamed(socket, invocation, outputCount, output)
                                 : AnswerBuffered(socket, invocation, outputCount, output);
  ce::LocalFree(output);
  return status;
}

}  // namespace corvane
