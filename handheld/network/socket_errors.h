// Socket errors of the host system as the device's codes.
#pragma once

#include "platform/sockets.h"

namespace ce::host {

// Codes that the agent has no need to know by name.
inline constexpr DWORD kWsaAccess = 10013;
inline constexpr DWORD kWsaFault = 10014;
inline constexpr DWORD kWsaInvalid = 10022;
inline constexpr DWORD kWsaProtocolNotSupported = 10043;
inline constexpr DWORD kWsaTypeNotSupported = 10044;
inline constexpr DWORD kWsaNotSupported = 10045;
inline constexpr DWORD kWsaFamilyNotSupported = 10047;
inline constexpr DWORD kWsaNetworkDown = 10050;
inline constexpr DWORD kWsaNetworkUnreachable = 10051;
inline constexpr DWORD kWsaConnectionAborted = 10053;
inline constexpr DWORD kWsaNoBuffers = 10055;
inline constexpr DWORD kWsaNotConnected = 10057;
inline constexpr DWORD kWsaHostUnreachable = 10065;
inline constexpr DWORD kWsaVersionNotSupported = 10092;
inline constexpr DWORD kWsaHostNotFound = 11001;

// kWsaInvalid for an errno without a counterpart.
DWORD SocketErrorFromErrno(int error);

// Sets the last error and gives SOCKET_ERROR.
INT FailSocketCall(DWORD error);

// Keeps a caller that does not look at failures from trying again without end at full speed.
void PauseAfterFailure();

}  // namespace ce::host
