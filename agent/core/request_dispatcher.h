// One connection's request: its intake, and the choice of the handler that answers it.
#pragma once

#include <array>

#include "platform/sockets.h"
#include "platform/types.h"

namespace corvane {

inline constexpr ce::DWORD kMaxBody = 1024;
inline constexpr ce::DWORD kMaxNameLength = 32;  // UTF-16 characters
inline constexpr ce::DWORD kMaxInput = 1024;
inline constexpr ce::DWORD kInvokeRequest = 69;
inline constexpr ce::DWORD kQuitRequest = 0xDEADBEEF;
inline constexpr ce::HRESULT kMalformedBody = 11;
inline constexpr ce::HRESULT kUnknownStreamedName = 127;

// A received body, zero behind what was received. Holds every offset that three lengths within
// their limits can name, and a terminator after that.
inline constexpr ce::DWORD kBodyMemory = 28 + 2 * 2 * kMaxNameLength + kMaxInput + 4 + 4;
using RequestBody = std::array<ce::BYTE, kBodyMemory>;

// What goes before the output of a buffered request.
struct ReplyHeader {
  ce::DWORD totalLength;
  ce::DWORD reserved;
  ce::HRESULT status;
  ce::HRESULT statusAgain;
  ce::DWORD outputCount;
};
static_assert(sizeof(ReplyHeader) == 20);

// Thread routine; `socket` is the SOCKET itself. Serves one request and answers 0. The socket is
// left open, for the platform to close after its peer, except after a streamed request.
ce::DWORD handleRequest(void* socket);

// Serves the invoke request in `body`. A malformed body answers kMalformedBody and sends nothing.
ce::HRESULT RequestDispatcher(ce::SOCKET socket, const RequestBody& body);

}  // namespace corvane
