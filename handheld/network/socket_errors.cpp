#include "handheld/network/socket_errors.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/status.h"

namespace ce::host {
namespace {

struct Counterpart {
  int error;
  DWORD code;
};
constexpr Counterpart kCounterparts[] = {
    {EACCES, kWsaAccess},
    {EPERM, kWsaAccess},
    {EFAULT, kWsaFault},
    {EINVAL, kWsaInvalid},
    {EBADF, WSAENOTSOCK},
    {ENOTSOCK, WSAENOTSOCK},
    {EMFILE, WSAEMFILE},
    {ENFILE, WSAEMFILE},
    {EPROTONOSUPPORT, kWsaProtocolNotSupported},
    {ESOCKTNOSUPPORT, kWsaTypeNotSupported},
    {EOPNOTSUPP, kWsaNotSupported},
    {EAFNOSUPPORT, kWsaFamilyNotSupported},
    {EADDRINUSE, WSAEADDRINUSE},
    {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
    {ENETDOWN, kWsaNetworkDown},
    {ENETUNREACH, kWsaNetworkUnreachable},
    {ECONNABORTED, kWsaConnectionAborted},
    {ECONNRESET, WSAECONNRESET},
    {EPIPE, WSAECONNRESET},
    {ENOBUFS, kWsaNoBuffers},
    {ENOMEM, kWsaNoBuffers},
    {ENOTCONN, kWsaNotConnected},
    {EAGAIN, WSAETIMEDOUT},
    {ETIMEDOUT, WSAETIMEDOUT},
    {EHOSTUNREACH, kWsaHostUnreachable},
};

constexpr std::chrono::milliseconds kPause{50};

}  // namespace

DWORD SocketErrorFromErrno(int error) {
  for (const Counterpart& counterpart : kCounterparts) {
    if (counterpart.error == error) return counterpart.code;
  }
  return kWsaInvalid;
}

INT FailSocketCall(DWORD error) {
  SetLastError(error);
  return SOCKET_ERROR;
}

void PauseAfterFailure() {
  std::this_thread::sleep_for(kPause);
}

}  // namespace ce::host
